// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/facts.h"

#include <algorithm>

#include "formats/digitalsurf/reader.h"
#include "formats/digitalsurf/validation.h"
#include "scan/heightrange.h"
#include "text.h"

namespace {

template <zSize Size>
std::string TextOf(const SurText<Size>& field) {
  return ToUtf8({field.data(), field.size()});
}

std::string DateOf(const SurHeader& header) {
  if (header.year == 0 && header.month == 0 && header.day == 0) return {};
  return Orv::Format("%04d-%02d-%02d %02d:%02d:%02d", header.year, header.month, header.day,
                     header.hours, header.minutes, header.seconds);
}

DigitalSurfFacts FactsOf(const SurHeader& header) {
  DigitalSurfFacts facts;
  facts.objectName = TextOf(header.objectName);
  facts.operatorName = TextOf(header.operatorName);
  facts.acquired = DateOf(header);
  facts.objectType = header.objectType;
  facts.objectCount = header.objectCount;
  facts.bitsPerPoint = header.bitsPerPoint;
  facts.specialPoints = header.specialPoints == 1;
  facts.axes = {TextOf(header.xAxisName), TextOf(header.yAxisName), TextOf(header.zAxisName)};
  facts.stepUnits = {TextOf(header.xSpacingUnit), TextOf(header.ySpacingUnit),
                     TextOf(header.zSpacingUnit)};
  facts.lengthUnits = {TextOf(header.xLengthUnit), TextOf(header.yLengthUnit),
                       TextOf(header.zLengthUnit)};
  facts.privateBytes = static_cast<z64u>(std::max<z16s>(header.privateSize, 0));
  return facts;
}

AxisUnit UnitOf(const std::string& name) {
  constexpr std::pair<std::string_view, z64f> kUnits[] = {
      {"m", 1e3},   {"cm", 1e1},  {"dm", 1e2},  {"mm", 1},    {"um", 1e-3},  {"µm", 1e-3},
      {"μm", 1e-3}, {"nm", 1e-6}, {"pm", 1e-9}, {"in", 25.4}, {"inch", 25.4}};
  const auto* known = std::ranges::find(kUnits, name, &std::pair<std::string_view, z64f>::first);
  const z64f mm = known == std::end(kUnits) ? 0 : known->second;
  return {mm == 1e-3 ? "µm" : name.empty() ? "no unit" : name, mm};
}

void WarnOfUnits(const DigitalSurfFacts& facts, bool profile, ScanFileDescription& description) {
  constexpr const char* kAxes[] = {"x", "y", "z"};
  for (zSize axis = 0; axis < 3; ++axis) {
    const std::string& unit = facts.stepUnits[axis];
    if (unit == "mm" || (profile && axis == 1)) continue;
    const z64f factor = UnitOf(unit).mm;
    description.Warn(
        "unit", "%s is told in \"%s\" and taken as if it were in mm%s", kAxes[axis], unit,
        factor == 0 ? "" : ": real lengths are " + RealText(factor) + " times as long");
  }
}

void NoteIgnored(const DigitalSurfFacts& facts, const SurHeader& header, bool profile,
                 ScanFileDescription& description) {
  WarnOfUnits(facts, profile, description);
  if (facts.objectCount > 1) {
    description.Note("the file holds %d objects: only the first one is converted",
                     facts.objectCount);
  }
  if (facts.objectType != (profile ? kProfileObject : kSurfaceObject)) {
    description.Note("the object is of type %d and taken as a %s", facts.objectType,
                     profile ? "profile" : "surface");
  }
  const z64s points = static_cast<z64s>(header.pointsPerLine) * header.lineCount;
  if (header.totalPoints != points) {
    description.Note("the header tells of %d points in all, and of %lld in its lines",
                     header.totalPoints, points);
  }
  if (!facts.comment.empty()) description.Note("a conversion drops the comment");
  if (!facts.acquired.empty()) description.Note("a conversion drops the date of acquisition");
  if (facts.privateBytes > 0) {
    description.Note("a conversion drops the private zone of %llu bytes", facts.privateBytes);
  }
  if (facts.bytesAfterSamples > 0) {
    description.Note("%llu bytes after the samples are ignored", facts.bytesAfterSamples);
  }
}

// Only 32-bit heights can be too large for 16 bits.
void WarnOfWrapping(const zSource& source, bool profile, const DigitalSurfFacts& facts,
                    const Scan& scan, ScanFileDescription& description) {
  UnfoldedHeights told;
  if (facts.bitsPerPoint != 32 || FindUnfoldedHeights(source, profile, told) != zOK ||
      told.lost == 0) {
    return;
  }
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(scan.points.Get()));
  const auto [lowest, highest] =
      std::minmax({Real(range.lowest, scan.Z()), Real(range.highest, scan.Z())});
  const std::string& unit = facts.stepUnits[2];
  description.Warn(
      "heights-wrap",
      "%zu of %zu heights do not fit into 16 bits and wrap around or are lost: the file "
      "tells of %s to %s %s, a conversion makes %s to %s %s of it",
      told.lost, told.points, RealText(told.lowest), RealText(told.highest), unit, RealText(lowest),
      RealText(highest), unit);
}

std::string CommentOf(const zSource& source, const SurHeader& header) {
  const auto told = static_cast<z64u>(std::max<z16s>(header.commentSize, 0));
  std::string text(static_cast<zSize>(std::min(told, source.Size() - kSurHeaderSize)), '\0');
  source.Read(kSurHeaderSize, text.data(), text.size());
  return ToUtf8(text);
}

z64u SampleBytes(const SurHeader& header) {
  return static_cast<z64u>(header.pointsPerLine) * static_cast<z64u>(header.lineCount) *
         (static_cast<z64u>(header.bitsPerPoint) / 8);
}

}  // namespace

std::optional<DigitalSurfFacts> DescribeDigitalSurf(const zSource& source, bool profile,
                                                    ScanFileDescription& description) {
  zAlloc alloc = &zAllocator::Default();
  FileReader file(source);
  SurHeader header;
  if (OpenDigitalSurf(file, header) != zOK) {
    description.complaints.push_back(ComplainOfHeader(source));
    return std::nullopt;
  }
  DigitalSurfFacts facts = FactsOf(header);
  facts.comment = CommentOf(source, header);
  description.complaints = ValidateSamples(header, profile, file.Left(), source.Size());
  if (!description.complaints.empty()) return facts;
  facts.bytesAfterSamples = file.Left() - SampleBytes(header);
  NoteIgnored(facts, header, profile, description);

  Scan scan;
  const zStatus status =
      profile ? LoadProFileBuffer(source, scan, alloc) : LoadSurFileBuffer(source, scan, alloc);
  if (status == zOK) {
    std::ranges::transform(facts.stepUnits, scan.units.begin(), UnitOf);
    if (profile) scan.units[1] = {};  // it has no y
    WarnOfWrapping(source, profile, facts, scan, description);
    description.scan = std::move(scan);
  } else {
    description.complaints.push_back(
        MakeComplaint({}, status, "the samples cannot be read (status %d)", status));
  }
  return facts;
}
