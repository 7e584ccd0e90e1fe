// SPDX-License-Identifier: MIT
#include "inspection/drawing.h"

#include <algorithm>
#include <filesystem>

#include "inspection/inspect.h"
#include "inspection/picture.h"
#include "surfacefileconverter/wholefile.h"

namespace {

bool IsWanted(const InspectOptions& options, zSize frame, const std::string& source) {
  return (!options.frame || *options.frame == frame) &&
         (options.source.empty() || options.source == source);
}

std::string FileName(const std::string& path) {
  const auto name = std::filesystem::path(path).filename().string();
  return name.empty() ? path : name;
}

std::string TitleOf(const std::string& path, zSize frame, const TaggedScan& scan) {
  std::string title = FileName(path);
  if (scan.source.empty()) return title;
  title += Orv::Format(", frame %zu, %s", frame, scan.source);
  if (scan.item) title += Orv::Format(" [%zu]", *scan.item);
  return title;
}

// Draws the first scan that is wanted.
FileFacts DrawScan(const std::string& path, const InspectOptions& options, Progress& progress) {
  zBytes picture;
  FileFacts facts = InspectFile(
      path, options.check,
      [&](zSize frame, z32u, const TaggedScan& scan) {
        if (!picture.empty() || !IsWanted(options, frame, scan.source)) return;
        picture = DrawPicture(scan.scan, TitleOf(path, frame, scan));
      },
      progress);
  if (!picture.empty()) WriteBuffer(picture, options.png);
  return facts;
}

}  // namespace

FileFacts DrawFile(const std::string& path, const InspectOptions& options, Progress& progress) {
  FileFacts facts = DrawScan(path, options, progress);
  const bool any = std::ranges::any_of(facts.scans, [&](const PlacedScan& scan) {
    return IsWanted(options, scan.frame, scan.source);
  });
  if (!any && facts.problems.empty()) {
    throw Orv::Exception(__LINE__, "inspection", kBadInput, "DrawFile",
                         "There is no such scan in " + path);
  }
  return facts;
}
