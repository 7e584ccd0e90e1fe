// SPDX-License-Identifier: MIT
#include "formats/filetypes.h"

namespace {

struct Extension {
  std::string_view text;
  FileType type;
  bool imported, exported;
};

constexpr Extension kExtensions[] = {
    {".rec", REC, true, false}, {".rep", REP, true, true},  {".srf", SRF, true, true},
    {".sur", SUR, true, true},  {".SUR", SUR, true, true},  {".pro", PRO, true, true},
    {".PRO", PRO, true, true},  {".pcd", PCD, true, true},  {".ovrec", OVREC, true, true},
    {".csv", CSV, false, true}, {".CSV", CSV, false, true},
};

std::optional<FileType> Find(std::string_view text, bool Extension::*accepted) {
  for (const Extension& extension : kExtensions) {
    if (extension.*accepted && extension.text == text) return extension.type;
  }
  return std::nullopt;
}

}  // namespace

std::optional<FileType> ImportType(std::string_view extension) {
  return Find(extension, &Extension::imported);
}

std::optional<FileType> ExportType(std::string_view extension) {
  return Find(extension, &Extension::exported);
}

std::string_view DataSourceTypeName(z16u dataType) {
  switch (dataType) {
    case UNIFORM_PROFILE:
      return "UNIFORM_PROFILE";
    case PROFILE_POINT_CLOUD:
      return "PROFILE_POINT_CLOUD";
    case UNIFORM_SURFACE:
      return "UNIFORM_SURFACE";
    case SURFACE_POINT_CLOUD:
      return "SURFACE_POINT_CLOUD";
    default:
      return {};
  }
}
