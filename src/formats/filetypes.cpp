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

std::map<DataSourceType, std::string> dataSourceTypeNames = {
    {UNIFORM_PROFILE, "UNIFORM_PROFILE"},
    {PROFILE_POINT_CLOUD, "PROFILE_POINT_CLOUD"},
    {UNIFORM_SURFACE, "UNIFORM_SURFACE"},
    {SURFACE_POINT_CLOUD, "SURFACE_POINT_CLOUD"},
};
