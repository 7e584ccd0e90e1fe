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

// One status line: a prefix such as "[INFO] ", the message as it stands, and a full stop.
void consoleLine(std::string_view prefix, std::string_view message);

// The same for a message that is a format. The whole line is written, or nothing when there is no
// memory for the message.
template <class... Values>
void consoleStatus(std::string_view prefix, std::string_view format, const Values&... values) {
  consoleLine(prefix, Orv::Format(format, values...));
}
