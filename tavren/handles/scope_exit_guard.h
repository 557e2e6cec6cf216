/// @file
/// The guard that releases, at the end of a scope, resources that have no handle.

#ifndef TAVREN_HANDLES_SCOPE_EXIT_GUARD_H
#define TAVREN_HANDLES_SCOPE_EXIT_GUARD_H

#include <type_traits>

#include <boost/scope_exit.hpp>

namespace kel::tavren {

/// Runs a clean-up action when its scope exits, by a return or by an exception.
///
/// A guard that was never armed does nothing. An exception that leaves the action terminates the
/// program. Declare the guard, then `arm` it. Never copy an armed guard: the action would run
/// twice. One thread at a time.
/// @ingroup handles
using Scope_Exit_Guard = boost::scope_exit::aux::guard<void>;

/// Sets the action of a guard.
///
/// The guard stores an action of up to three pointers in place, without allocating. A larger action
/// would require an allocation; if it failed, it would throw before the guard is armed and leak the
/// resource. Larger actions therefore do not compile. Capture few variables, by reference.
///
/// @tparam Action the type of a lambda or of another callable without arguments.
/// @param guard the guard, in the scope at whose end the action runs.
/// @param action the action, which takes no arguments and must not throw. Does not throw.
/// Any thread, as long as no other thread uses the guard.
/// @ingroup handles
template <typename Action>
void arm(Scope_Exit_Guard &guard, Action action) noexcept {
  static_assert(sizeof(Action) <= 3 * sizeof(void *) && alignof(Action) <= alignof(void *),
                "capture at most three pointers or references, else arming the guard allocates");
  static_assert(std::is_nothrow_copy_constructible_v<Action>,
                "the action is copied into the guard and must not throw there");
  guard = action;
}

}  // namespace kel::tavren

#endif
