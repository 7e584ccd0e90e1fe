// SPDX-License-Identifier: MIT
// Standard output of the tool.
#pragma once

#include <string_view>

#include "sdk/object.h"

// Writes to standard output, as it stands.
void consoleWrite(std::string_view text);

// printf-style output with the rules of Orv::FormatText; a composed text may be the format itself.
template <class... Values>
void consolePrint(std::string_view format, const Values&... values) {
  consoleWrite(Orv::Format(format, values...));
}

// One status line: a prefix such as "[INFO] ", the message (a format), and a full stop. The whole
// line is written, or nothing when there is no memory for the message.
template <class... Values>
void consoleStatus(std::string_view prefix, std::string_view format, const Values&... values) {
  const std::string message = Orv::Format(format, values...);
  consoleWrite(prefix);
  consoleWrite(message);
  consoleWrite(".\n");
}
