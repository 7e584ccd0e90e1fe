// SPDX-License-Identifier: MIT
#include "failure.h"

#include <cstring>
#include <new>

#include "filesource.h"
#include "outputfile/outputfile.h"
#include "text.h"

namespace {

// As much of a text as there is room for, without half a character at its end.
void CopyText(std::string_view text, char* room, std::size_t size) {
  std::size_t length = std::min(text.size(), size - 1);
  const auto continues = [](char byte) { return (static_cast<unsigned char>(byte) >> 6) == 2; };
  if (length < text.size()) {
    while (length > 0 && continues(text[length])) --length;
  }
  std::memcpy(room, text.data(), length);
  room[length] = '\0';
}

trelvane_status Tell(trelvane_error* error, trelvane_status status, zStatus code,
                     const char* text) noexcept {
  if (error == nullptr) return status;
  error->status = status;
  error->code = code;
  try {
    CopyText(ToUtf8(text), error->text, sizeof error->text);
  } catch (const std::exception&) {
    CopyText("There is not enough memory", error->text, sizeof error->text);
  }
  return status;
}

}  // namespace

void Refuse(const std::string& text) { throw Failure(TRELVANE_ERROR_ARGUMENT, text); }

std::string TextGiven(const char* text, const char* name) {
  std::string given = &Given(text, name);
  if (given.empty()) Refuse(std::string(name) + " is empty");
  return given;
}

void TellSuccess(trelvane_error* error) noexcept {
  if (error != nullptr) *error = {};
}

trelvane_status TellFailure(trelvane_error* error) noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return Tell(error, failure.Status(), 0, failure.what());
  } catch (const FileNotRead& failure) {
    return Tell(error, TRELVANE_ERROR_READ, failure.Status(), failure.what());
  } catch (const FileNotWritten& failure) {
    return Tell(error, TRELVANE_ERROR_WRITE, failure.Status(), failure.what());
  } catch (const Orv::Exception& failure) {
    const bool memory = failure.Status() == zERROR_MEMORY;
    return Tell(error, memory ? TRELVANE_ERROR_MEMORY : TRELVANE_ERROR_CONTENT, failure.Status(),
                failure.what());
  } catch (const std::bad_alloc&) {
    return Tell(error, TRELVANE_ERROR_MEMORY, zERROR_MEMORY, "There is not enough memory");
  } catch (const std::length_error&) {
    return Tell(error, TRELVANE_ERROR_MEMORY, zERROR_MEMORY, "There is not enough memory");
  } catch (const std::exception& failure) {  // of numbers and of JSON documents
    return Tell(error, TRELVANE_ERROR_CONTENT, 0, failure.what());
  } catch (...) {
    return Tell(error, TRELVANE_ERROR_INTERNAL, 0, "A callback has thrown");
  }
}
