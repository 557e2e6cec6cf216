/// @file
/// The exceptions by which the library reports every failure.

#ifndef TAVREN_ERROR_TAVREN_ERROR_H
#define TAVREN_ERROR_TAVREN_ERROR_H

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include <tavren/error/tavren_error_code.h>
#include <tavren/export.h>

/// The library's namespace.
namespace kel::tavren {

/// @defgroup errors Errors
/// Catch what the library throws, and tell one failure from another by its code.
/// @{

/// An error of the library that is also a standard exception of type @p Base.
///
/// `what()` is the message given at construction, unchanged. Error objects do not change after
/// construction and may be copied and destroyed on any thread.
///
/// @tparam Base the standard exception to derive from, `std::logic_error` or `std::runtime_error`.
template <typename Base>
class Tavren_Error;

/// The root of the family: catch it to reach the code of any error of the library.
///
/// It holds the code and nothing else. It is not a `std::exception`: the message is reached through
/// the standard base of the object that was thrown. All other classes derive from it virtually, so
/// an error has one code however it is caught.
template <>
class TAVREN_CAPTURE_EXPORT Tavren_Error<std::exception> {
public:
  virtual ~Tavren_Error();

  /// The code of the failure.
  /// @return one of the enumerators of `TEC::Tavren_Error_Code`. Does not throw. Any thread.
  TEC::Tavren_Error_Code code() const noexcept { return code_; }

protected:
  /// Stores the code; called by the most derived class, whose virtual base this is.
  /// @param code the code of the failure. Does not throw. Any thread.
  explicit Tavren_Error(TEC::Tavren_Error_Code code) noexcept : code_(code) {}

  /// Copies the code. Does not throw. Any thread.
  Tavren_Error(const Tavren_Error &) = default;
  /// Copies the code.
  /// @return this error. Does not throw. One thread at a time.
  Tavren_Error &operator=(const Tavren_Error &) = default;

private:
  TEC::Tavren_Error_Code code_;
};

template <typename Base>
class TAVREN_CAPTURE_EXPORT Tavren_Error : public Base,
                                           public virtual Tavren_Error<std::exception> {
public:
  /// Makes the error from its code and from what @p Base is made of.
  /// @param code the code of the failure.
  /// @tparam Message what @p Base is made of, `std::string` or `const char *`.
  /// @param message the arguments of @p Base: the message as a string or a literal.
  /// @throws std::bad_alloc when the message cannot be copied. Any thread.
  template <typename... Message>
  explicit Tavren_Error(TEC::Tavren_Error_Code code, Message &&...message)
      : Tavren_Error<std::exception>(code), Base(std::forward<Message>(message)...) {}
};

/// An error that the framework behind the library caused or that the arguments caused.
///
/// @tparam Base the standard exception to derive from.
template <typename Base>
class Backend_Error;

/// The root of the backend errors: catch it to tell them from the library's logic errors.
template <>
class TAVREN_CAPTURE_EXPORT Backend_Error<std::exception>
    : public virtual Tavren_Error<std::exception> {
public:
  ~Backend_Error() override;

protected:
  /// Leaves the code to the most derived class, which alone makes the virtual base.
  /// @param code the code of the failure. Does not throw. Any thread.
  explicit Backend_Error(TEC::Tavren_Error_Code code) noexcept
      : Tavren_Error<std::exception>(code) {}

  /// Copies the code. Does not throw. Any thread.
  Backend_Error(const Backend_Error &) = default;
  /// Copies the code.
  /// @return this error. Does not throw. One thread at a time.
  Backend_Error &operator=(const Backend_Error &) = default;
};

template <typename Base>
class TAVREN_CAPTURE_EXPORT Backend_Error : public Tavren_Error<Base>,
                                            public Backend_Error<std::exception> {
public:
  /// Makes the error from its code and from what @p Base is made of.
  /// @param code the code of the failure.
  /// @tparam Message what @p Base is made of, `std::string` or `const char *`.
  /// @param message the arguments of @p Base, by value: the message as a string or a literal.
  /// @throws std::bad_alloc when the message cannot be copied. Any thread.
  template <typename... Message>
  explicit Backend_Error(TEC::Tavren_Error_Code code, Message... message)
      : Tavren_Error<std::exception>(code), Tavren_Error<Base>(code, std::move(message)...),
        Backend_Error<std::exception>(code) {}
};

/// @}

// Made once, in the library: the program and the library must agree on one typeinfo of each class,
// or a catch in the program would not see what the library throws.
extern template class Tavren_Error<std::logic_error>;
extern template class Tavren_Error<std::runtime_error>;
extern template class Backend_Error<std::runtime_error>;
extern template Backend_Error<std::runtime_error>::Backend_Error(TEC::Tavren_Error_Code,
                                                                 std::string);

}  // namespace kel::tavren

#endif
