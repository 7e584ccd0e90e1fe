// SPDX-License-Identifier: MIT
// From exceptions to what callers of the library are told.
#pragma once

#include <stdexcept>
#include <string>

#include "trelvane.h"

// A failure that is the library's own to tell.
class Failure : public std::runtime_error {
 public:
  Failure(trelvane_status status, const std::string& text)
      : std::runtime_error(text), status_(status) {}
  trelvane_status Status() const noexcept { return status_; }

 private:
  trelvane_status status_;
};

// Fails with TRELVANE_ERROR_ARGUMENT.
[[noreturn]] void Refuse(const std::string& text);

// What a pointer leads to, unless it is NULL.
template <class Value>
Value& Given(Value* pointer, const char* name) {
  if (pointer == nullptr) Refuse(std::string(name) + " is NULL");
  return *pointer;
}

// A path or name that is not empty.
std::string TextGiven(const char* text, const char* name);

void TellSuccess(trelvane_error* error) noexcept;
// In a handler: tells the exception at hand.
trelvane_status TellFailure(trelvane_error* error) noexcept;

// Runs what a call of the library does.
template <class Call>
trelvane_status Run(trelvane_error* error, const Call& call) {
  try {
    call();
  } catch (...) {
    return TellFailure(error);
  }
  TellSuccess(error);
  return TRELVANE_OK;
}

// The same for a call that hands out a new object, which is NULL after a failure.
template <class Object, class Make>
trelvane_status RunToMake(Object** object, const char* name, trelvane_error* error,
                          const Make& make) {
  if (object != nullptr) *object = nullptr;
  return Run(error, [&] {
    Object*& place = Given(object, name);
    place = make().release();
  });
}
