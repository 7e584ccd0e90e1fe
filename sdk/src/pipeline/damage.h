// SPDX-License-Identifier: MIT
// Where in a recording stream something is, and the error for what is wrong there.
#pragma once

#include <optional>
#include <string_view>

#include "sdk/object.h"

namespace sdk::replay {

// A byte of the stream, or of the uncompressed records of a chunk that was compressed.
struct Place {
  z64u offset = 0;
  std::optional<z64u> chunkOffset = {};  // of the compressed chunk in the stream

  Place operator+(z64u bytes) const { return {offset + bytes, chunkOffset}; }
};

// Throws an Orv::Exception that says what is wrong and at which byte offset.
[[noreturn]] void ThrowDamage(const Place& place, std::string_view what);

template <class... Values>
[[noreturn]] void ThrowDamage(const Place& place, std::string_view format,
                              const Values&... values) {
  ThrowDamage(place, std::string_view(Orv::Format(format, values...)));
}

}  // namespace sdk::replay
