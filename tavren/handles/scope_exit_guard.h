/// @file
/// The guard that gives back, when a scope is left, what no handle can hold.

#ifndef TAVREN_HANDLES_SCOPE_EXIT_GUARD_H
#define TAVREN_HANDLES_SCOPE_EXIT_GUARD_H

#include <type_traits>

#include <boost/scope_exit.hpp>

namespace kel::tavren {

/// Runs one clean-up action when its scope is left, by a return or by a throw.
///
/// A guard that was never armed does nothing. An exception that leaves the action ends the program.
/// Declare it, then `arm` it; never copy an armed one, or the action runs twice. One thread at a
/// time.
/// @ingroup handles
using Scope_Exit_Guard = boost::scope_exit::aux::guard<void>;

/// Gives a guard its action.
///
/// The guard keeps the action in place, without allocating, while it is no larger than three
/// pointers. A larger one would allocate, and a failed allocation would throw before the guard is
/// armed and so lose what it was to release: it is refused when compiling. Capture few variables,
/// by reference.
///
/// @tparam Action the type of a lambda, or of what else is called with nothing.
/// @param guard the guard, in the scope whose end is to run the action.
/// @param action what to run; takes nothing, and must not throw. Does not throw. Any thread, while
/// no other uses the guard.
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
