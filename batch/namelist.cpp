// SPDX-License-Identifier: MIT
#include "batch/namelist.h"

std::vector<std::string> ParseNameList(std::string_view list, NameEnd end) {
  const bool lines = end == NameEnd::line && list.find('\0') == std::string_view::npos;
  std::vector<std::string> names;
  while (!list.empty()) {
    const std::size_t length = list.find(lines ? '\n' : '\0');
    std::string_view name = list.substr(0, length);
    list.remove_prefix(length == std::string_view::npos ? list.size() : length + 1);
    if (lines && name.ends_with('\r')) name.remove_suffix(1);
    if (!name.empty()) names.emplace_back(name);
  }
  return names;
}
