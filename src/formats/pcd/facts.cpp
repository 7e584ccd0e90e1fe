// SPDX-License-Identifier: MIT
#include "formats/pcd/facts.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <stdexcept>

#include "formats/pcd/quantize.h"
#include "formats/pcd/validation.h"
#include "numbers.h"
#include "statuses.h"
#include "text.h"

namespace {

bool IsUsed(std::string_view field) {
  constexpr std::string_view kUsed[] = {"x", "y", "z", "intensity", "rgb", "rgba"};
  return std::ranges::find(kUsed, field) != std::end(kUsed);
}

// No shift and no turn, however it is spelt.
bool IsDefaultViewpoint(std::string_view viewpoint) {
  std::vector<z64f> numbers;
  for (std::string_view word; TakePcdWord(viewpoint, word);) {
    if (word.empty()) continue;
    try {
      numbers.push_back(parseReal(std::string(word)));
    } catch (const std::logic_error&) {  // no number, or one out of range
      return false;
    }
  }
  return numbers == std::vector<z64f>{0, 0, 0, 1, 0, 0, 0};
}

// All that is used is read as four bytes, whatever the header says that they are.
void WarnOfTypes(std::string_view header, std::string_view fields,
                 ScanFileDescription& description) {
  const std::string sizesLine = PcdValueOf(header, "SIZE ");
  const std::string typesLine = PcdValueOf(header, "TYPE ");
  std::string_view sizes = sizesLine;
  std::string_view types = typesLine;
  std::set<std::string_view> told;
  for (std::string_view name, size, type; TakePcdWord(fields, name);) {
    if (!TakePcdWord(sizes, size) || !TakePcdWord(types, type)) return;
    const bool color = name.starts_with("rgb");
    if (!IsUsed(name) || (size == "4" && (color || type == "F"))) continue;
    if (!told.insert(name).second) continue;
    description.Warn(name.size() == 1 ? kCoordinateType : "field-type",
                     "%s is of TYPE %s, SIZE %s: a conversion takes the four bytes where it begins "
                     "for %s",
                     name, type, size, color ? "a colour" : "a 32-bit float");
  }
}

void WarnOfIntensities(const zSource& file, const PcdFile& pcd, ScanFileDescription& description) {
  const PcdCloud& cloud = pcd.cloud;
  const auto points = static_cast<zSize>(cloud.PointCount());
  PcdRecords records(file, pcd.dataStart, cloud);
  z64u cut = 0;
  z64s lowest = 0;
  z64s highest = 0;
  for (zSize i = 0; i < points; ++i) {
    static_cast<void>(records.Load(i, 1));
    const z64s intensity = WholeIntensity(records.AtHand() + *cloud.intensity);
    if (intensity != static_cast<z8u>(intensity)) ++cut;
    lowest = std::min(lowest, intensity);
    highest = std::max(highest, intensity);
  }
  if (cut == 0) return;
  description.Warn("intensity-cut",
                   "%llu of %llu intensities are not within 0 to 1 but reach from %s to %s: a "
                   "conversion multiplies them by 255 and keeps the low byte, which tells nothing",
                   cut, cloud.PointCount(), RealText(static_cast<z64f>(lowest) / 255),
                   RealText(static_cast<z64f>(highest) / 255));
}

// Raw values are told from between the extremes of an axis, as 32-bit floats.
void WarnOfRanges(const Scan& scan, ScanFileDescription& description) {
  if (scan.scale.x < 0) {  // the lowest is above the highest: nothing is between them
    description.Warn("points-not-finite", "no point has three finite coordinates");
    return;
  }
  const std::pair<const char*, Axis> axes[] = {{"x", scan.X()}, {"y", scan.Y()}, {"z", scan.Z()}};
  for (const auto& [name, axis] : axes) {
    if (std::isfinite(axis.scale) && std::isfinite(axis.offset)) continue;
    description.Warn(
        kRangeTooWide,
        "the range of %s does not fit into 32-bit floats: a conversion loses all of it", name);
  }
}

void NoteIgnored(const CloudFacts& facts, const PcdCloud& cloud, z64u bytesLeft,
                 ScanFileDescription& description) {
  std::string ignored;
  std::string_view fields = facts.fields;
  for (std::string_view name; TakePcdWord(fields, name);) {
    if (!IsUsed(name)) ignored.append(" ").append(name);
  }
  if (!ignored.empty())
    description.Warn("fields-dropped", "a conversion drops the fields%s", ignored);
  if (!IsDefaultViewpoint(facts.viewpoint)) {
    description.Note("a conversion drops the viewpoint %s", facts.viewpoint);
  }
  if (cloud.IsLine()) {
    const z32u side = cloud.SquareSide();
    description.Warn(
        "line-to-square",
        "a conversion puts the line of points into a square of %u x %u, in their order", side,
        side);
  }
  if (cloud.intensity && cloud.color) {
    description.Warn("intensities-mixed", "a conversion mixes intensities and colours");
  } else if (cloud.color) {
    description.Warn("colour-to-grey", "a conversion turns each colour into one byte of grey");
  }
  if (bytesLeft > 0) description.Note("%llu bytes after the points are ignored", bytesLeft);
}

}  // namespace

std::optional<CloudFacts> DescribePcd(const zSource& file, ScanFileDescription& description) {
  PcdFile pcd;
  description.complaints = ValidatePcd(file, pcd);
  if (pcd.header.empty()) return std::nullopt;
  const PcdCloud& cloud = pcd.cloud;
  const CloudFacts facts{PcdValueOf(pcd.header, "FIELDS "), PcdValueOf(pcd.header, "VIEWPOINT "),
                         cloud.binary};
  if (!description.complaints.empty()) return facts;
  NoteIgnored(facts, cloud, pcd.dataSize - cloud.PointCount() * cloud.stride, description);
  WarnOfTypes(pcd.header, facts.fields, description);
  if (cloud.intensity) WarnOfIntensities(file, pcd, description);

  PcdOptions asInTheFile;
  asInTheFile.width = cloud.width;
  asInTheFile.height = cloud.height;
  Scan scan;
  const zStatus status = LoadPcdFileBuffer(file, scan, asInTheFile, &zAllocator::Default());
  if (status == zOK) {
    WarnOfRanges(scan, description);
    description.scan = std::move(scan);
  } else {
    description.complaints.push_back(
        MakeComplaint({}, status, "the points cannot be read (status %d)", status));
  }
  return facts;
}
