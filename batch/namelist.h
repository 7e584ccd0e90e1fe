// SPDX-License-Identifier: MIT
// Lists of names, as other programs write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class NameEnd {
  line,  // and nul, where the list holds one
  nul
};

// The names in a list, in its order; empty ones are left out. A line may end with a carriage return
// before its end.
std::vector<std::string> ParseNameList(std::string_view list, NameEnd end);
