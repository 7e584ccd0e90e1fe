// SPDX-License-Identifier: MIT
#include "console.h"

#include <cstdio>

void consoleWrite(std::string_view text) {
  // An operator who cannot see the output still gets the exit code.
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

void consoleLine(std::string_view prefix, std::string_view message) {
  consoleWrite(prefix);
  consoleWrite(message);
  consoleWrite(".\n");
}
