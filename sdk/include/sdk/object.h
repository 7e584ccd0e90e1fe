// SPDX-License-Identifier: MIT
// Object library: the error type and the owning handle.
#pragma once

#include <concepts>
#include <exception>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "sdk/core.h"

namespace Orv {

// One argument of a printf-style format.
using FormatArgument =
    std::variant<long long, unsigned long long, double, std::string_view, const void*>;

// printf-style formatting that never reads an argument that is not there: "%%" prints "%"; a
// conversion without an argument of its kind, or one that is malformed, prints as it stands.
// Independent of the locale; the result has any length.
std::string FormatText(std::string_view format, std::initializer_list<FormatArgument> arguments);

// The argument kinds that FormatText knows, from any number, text or pointer.
template <class Value>
FormatArgument ToFormatArgument(const Value& value) {
  if constexpr (std::is_floating_point_v<Value>) {
    return static_cast<double>(value);
  } else if constexpr (std::is_enum_v<Value>) {
    return ToFormatArgument(static_cast<std::underlying_type_t<Value>>(value));
  } else if constexpr (std::is_integral_v<Value> && std::is_signed_v<Value>) {
    return static_cast<long long>(value);
  } else if constexpr (std::is_integral_v<Value>) {
    return static_cast<unsigned long long>(value);
  } else if constexpr (std::is_convertible_v<Value, std::string_view>) {
    return std::string_view(value);
  } else {
    return static_cast<const void*>(value);
  }
}

template <class... Values>
std::string Format(std::string_view format, const Values&... values) {
  return FormatText(format, {ToFormatArgument(values)...});
}

// The one error type of the tool and its libraries.
class Exception : public std::exception {
 public:
  // `line` and `file` name the place in the sources, `function` the operation that failed. The
  // message is `format` with its values; a composed text may be passed as the format itself.
  template <class... Values>
  Exception(int line, const char* file, zStatus status, const char* function,
            std::string_view format, const Values&... values)
      : details_(std::make_shared<const Details>(
            Details{line, file, status, function, Format(format, values...)})) {}

  // The message alone.
  const char* what() const noexcept override { return details_->message.c_str(); }
  // One line for a log: UTC time, status, function, source file and line, message. Control
  // characters of the message are escaped. `options` is 0.
  std::string to_string(z64u options) const;

  zStatus Status() const noexcept { return details_->status; }
  const std::string& Function() const noexcept { return details_->function; }
  const std::string& File() const noexcept { return details_->file; }
  int Line() const noexcept { return details_->line; }

 private:
  struct Details {
    int line;
    std::string file;
    zStatus status;
    std::string function;
    std::string message;
  };

  std::shared_ptr<const Details> details_;  // shared, so that copying an exception cannot throw
};

// The message of an error: a format, and the line of the sources that it is reported from, which is
// that of the call unless another one is named.
struct ErrorText {
  template <class Text>
  requires std::convertible_to<const Text&, std::string_view> ErrorText(
      const Text& text, int sourceLine = __builtin_LINE())
      : format(text), line(sourceLine) {}

  std::string_view format;
  int line;
};

// An operation as its errors name it: the unit of the sources that it belongs to, and its name. The
// one way to fail.
struct Operation {
  const char* file;
  const char* function;

  template <class... Values>
  Exception Error(zStatus status, const ErrorText& text, const Values&... values) const {
    return {text.line, file, status, function, text.format, values...};
  }
  template <class... Values>
  [[noreturn]] void Fail(zStatus status, const ErrorText& text, const Values&... values) const {
    throw Error(status, text, values...);
  }
  // Fails unless the status is 1.
  template <class... Values>
  void Require(zStatus status, const ErrorText& text, const Values&... values) const {
    if (status != zOK) Fail(status, text, values...);
  }
};

template <class Handle>
class Object;

// Owning handle of an SDK object; empty when it holds null. Copying shares the object.
template <>
class Object<void*> {
 public:
  Object() noexcept = default;
  // Takes over the caller's reference.
  explicit Object(void* handle) noexcept : handle_(handle) {}
  // Adds a reference to an object that somebody else owns.
  static Object Share(void* borrowed) noexcept;

  Object(const Object& other) noexcept : Object(Share(other.handle_)) {}
  Object(Object&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Object& operator=(const Object& other) {
    Object copy(other);
    return *this = std::move(copy);
  }
  Object& operator=(Object&& other);
  ~Object();

  // Releases the old object and takes over the caller's reference to the new one. Throws
  // Orv::Exception with the release status when it is not 1; the new object is held then too.
  void Reset(void* handle = nullptr);

  // Gives the object back now and tells the release status; 1 for an empty handle.
  zStatus Release() noexcept;

  void* Get() const noexcept { return handle_; }
  explicit operator bool() const noexcept { return handle_ != nullptr; }
  // Releases the old object and gives the place for a construct operation to fill.
  void** Out() {
    Reset();
    return &handle_;
  }

 private:
  void* handle_ = nullptr;
};

}  // namespace Orv
