// SPDX-License-Identifier: MIT
#include <string_view>

#include "trelvane.h"

namespace {

// Two digits for each part behind the first.
constexpr std::uint32_t NumberOf(std::string_view version) {
  std::uint32_t number = 0;
  std::uint32_t part = 0;
  for (const char c : version) {
    if (c == '.') {
      number = 100 * number + part;
      part = 0;
    } else {
      part = 10 * part + static_cast<std::uint32_t>(c - '0');
    }
  }
  return 100 * number + part;
}

}  // namespace

// The header is that of the project's version.
static_assert(std::string_view(TRELVANE_VERSION) == TRELVANE_PROJECT_VERSION);
static_assert(NumberOf(TRELVANE_VERSION) == TRELVANE_VERSION_NUMBER);

const char* trelvane_version() { return TRELVANE_VERSION; }

std::uint32_t trelvane_version_number() { return TRELVANE_VERSION_NUMBER; }
