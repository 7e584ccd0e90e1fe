// SPDX-License-Identifier: MIT
#include "surfacefileconverter/filenames.h"

#include <algorithm>

#include "sdk/object.h"
#include "statuses.h"

namespace {

struct SplitPath {
  std::string stem;
  std::string extension;  // with its dot

  SplitPath(const std::string& path, const char* function) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
      constexpr const char* kUnit = "surfacefileconverter";
      Orv::Operation{kUnit, function}.Fail(kBadInput,
                                           "Failed to parse the extension of the input filename");
    }
    stem = path.substr(0, dot);
    extension = path.substr(dot);
  }
};

// A negative number has its zeros in front of the sign.
std::string FourDigits(const std::string& number) {
  return std::string(4 - std::min<std::size_t>(4, number.size()), '0') + number;
}

std::string IndexName(const SplitPath& base, const std::string& sourceName,
                      const std::string& number, const std::string& tag) {
  return base.stem + "-" + sourceName + "-" + FourDigits(number) + (tag.empty() ? "" : "_" + tag) +
         base.extension;
}

}  // namespace

std::string GetIndexFileName(const std::string& basePath, const std::string& sourceName, z32s index,
                             const std::string& tag) {
  return IndexName({basePath, "GetIndexFileName"}, sourceName, std::to_string(index), tag);
}

std::vector<std::string> GetIncrementalIndexFileNames(const std::string& basePath, z64u count,
                                                      const std::string& sourceName,
                                                      const std::string& tag) {
  if (count == 0) return {basePath};
  const SplitPath base(basePath, "GetIncrementalIndexFileNames");
  std::vector<std::string> names;
  for (z64u i = 0; i < count; ++i) {
    names.push_back(IndexName(base, sourceName, std::to_string(i), tag));
  }
  return names;
}

std::vector<std::string> GetAppendedFileNames(const std::string& basePath,
                                              const std::vector<std::string>& appendices) {
  if (appendices.empty()) return {};
  const SplitPath base(basePath, "GetAppendedFileNames");
  std::vector<std::string> names;
  names.reserve(appendices.size());
  for (const std::string& appendix : appendices) {
    names.push_back(base.stem + "_" + appendix + base.extension);
  }
  return names;
}
