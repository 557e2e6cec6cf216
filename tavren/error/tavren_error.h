/// @file
/// The exceptions with which the library reports failures.

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
/// Catch the library's exceptions, and distinguish failures by code.
///
/// @snippet examples/operations/texts.cpp errors
/// @{

/// An exception of the library that is also a standard exception of type @p Base.
///
/// `what()` is the message given at construction, unchanged. The objects do not change after
/// construction and may be copied and destroyed on any thread.
///
/// @tparam Base the standard exception to derive from, `std::logic_error` or `std::runtime_error`.
template <typename Base>
class Tavren_Error;

/// The root of the hierarchy: catch it to get the code of any error of the library.
///
/// It contains only the code. It is not a `std::exception`: get the message from the standard base
/// of the thrown object. All other classes derive from it virtually, so an error has one code
/// however it is caught.
template <>
class TAVREN_CAPTURE_EXPORT Tavren_Error<std::exception> {
public:
  virtual ~Tavren_Error();

  /// Gets the code of the failure.
  /// @return one of the enumerators of `TEC::Tavren_Error_Code`. Does not throw. Any thread.
  TEC::Tavren_Error_Code code() const noexcept { return code_; }

protected:
  /// Stores the code. Called by the most derived class, because this is a virtual base.
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
  /// Creates the error from its code and the arguments of @p Base.
  /// @param code the code of the failure.
  /// @tparam Message the type of the argument of @p Base, `std::string` or `const char *`.
  /// @param message the arguments of @p Base: the message as a string or a literal.
  /// @throws std::bad_alloc if the message cannot be copied. Any thread.
  template <typename... Message>
  explicit Tavren_Error(TEC::Tavren_Error_Code code, Message &&...message)
      : Tavren_Error<std::exception>(code), Base(std::forward<Message>(message)...) {}
};

/// An error caused by GStreamer or by the arguments.
///
/// @tparam Base the standard exception to derive from.
template <typename Base>
class Backend_Error;

/// The root of the backend errors: catch it to distinguish them from the library's logic errors.
template <>
class TAVREN_CAPTURE_EXPORT Backend_Error<std::exception>
    : public virtual Tavren_Error<std::exception> {
public:
  ~Backend_Error() override;

protected:
  /// Does not store the code: only the most derived class initialises the virtual base.
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
  /// Creates the error from its code and the arguments of @p Base.
  /// @param code the code of the failure.
  /// @tparam Message the type of the argument of @p Base, `std::string` or `const char *`.
  /// @param message the arguments of @p Base, by value: the message as a string or a literal.
  /// @throws std::bad_alloc if the message cannot be copied. Any thread.
  template <typename... Message>
  explicit Backend_Error(TEC::Tavren_Error_Code code, Message... message)
      : Tavren_Error<std::exception>(code), Tavren_Error<Base>(code, std::move(message)...),
        Backend_Error<std::exception>(code) {}
};

/// @}

// Instantiated once, in the library: the program and the library must share one typeinfo for each
// class, otherwise a catch clause in the program would not match exceptions thrown by the library.
extern template class Tavren_Error<std::logic_error>;
extern template class Tavren_Error<std::runtime_error>;
extern template class Backend_Error<std::runtime_error>;
extern template Backend_Error<std::runtime_error>::Backend_Error(TEC::Tavren_Error_Code,
                                                                 std::string);

}  // namespace kel::tavren

#endif
