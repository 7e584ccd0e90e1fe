// SPDX-License-Identifier: MIT
#include "console.h"

#include <cstdio>

void consoleWrite(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }
