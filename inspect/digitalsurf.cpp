// SPDX-License-Identifier: MIT
// What Digital Surf files tell.
#include <algorithm>

#include "inspect/findings.h"
#include "inspect/text.h"
#include "loadfilestream/digitalsurf_reader.h"

namespace {

// Offsets of header fields that problems are found in.
constexpr z64u kBitsOffset = 98;
constexpr z64u kPointsOffset = 108;
constexpr z64u kLinesOffset = 112;
constexpr z64u kCommentSizeOffset = 334;

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

// Millimetres in a unit of length; 0 for another unit.
z64f MillimetresIn(const std::string& unit) {
  constexpr std::pair<std::string_view, z64f> kUnits[] = {
      {"m", 1e3},   {"cm", 1e1},  {"dm", 1e2},  {"um", 1e-3}, {"µm", 1e-3},
      {"μm", 1e-3}, {"nm", 1e-6}, {"pm", 1e-9}, {"in", 25.4}, {"inch", 25.4}};
  const auto* known = std::ranges::find(kUnits, unit, &std::pair<std::string_view, z64f>::first);
  return known == std::end(kUnits) ? 0 : known->second;
}

void NoteUnits(const DigitalSurfFacts& facts, bool profile, Findings& findings) {
  constexpr const char* kAxes[] = {"x", "y", "z"};
  for (zSize axis = 0; axis < 3; ++axis) {
    const std::string& unit = facts.stepUnits[axis];
    if (unit == "mm" || (profile && axis == 1)) continue;
    const z64f factor = MillimetresIn(unit);
    findings.Note("%s is told in \"%s\" and taken as if it were in mm%s", kAxes[axis], unit,
                  factor == 0 ? "" : ": real lengths are " + RealText(factor) + " times as long");
  }
}

void NoteIgnored(const DigitalSurfFacts& facts, const SurHeader& header, bool profile,
                 Findings& findings) {
  NoteUnits(facts, profile, findings);
  if (facts.objectCount > 1) {
    findings.Note("the file holds %d objects: only the first one is converted", facts.objectCount);
  }
  if (facts.objectType != (profile ? 1 : 2)) {
    findings.Note("the object is of type %d and taken as a %s", facts.objectType,
                  profile ? "profile" : "surface");
  }
  const z64s points = static_cast<z64s>(header.pointsPerLine) * header.lineCount;
  if (header.totalPoints != points) {
    findings.Note("the header tells of %d points in all, and of %lld in its lines",
                  header.totalPoints, points);
  }
  if (!facts.comment.empty()) findings.Note("a conversion drops the comment");
  if (!facts.acquired.empty()) findings.Note("a conversion drops the date of acquisition");
  if (facts.privateBytes > 0) {
    findings.Note("a conversion drops the private zone of %llu bytes", facts.privateBytes);
  }
  if (facts.bytesAfterSamples > 0) {
    findings.Note("%llu bytes after the samples are ignored", facts.bytesAfterSamples);
  }
}

// Why the header of a file cannot be read.
void TellHeaderProblem(const zBytes& bytes, Findings& findings) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.starts_with("DSCOMPRESSED")) {
    findings.Problem(0, "the file is in the compressed form, which is not read");
  } else if (!text.starts_with(std::string_view("DIGITAL SURF").substr(0, text.size()))) {
    findings.Problem(0, "the file does not begin as a Digital Surf file does");
  } else if (bytes.size() < kSurHeaderSize) {
    findings.Problem(bytes.size(), "the file ends in its header of %zu bytes", kSurHeaderSize);
  } else {
    findings.Problem(kCommentSizeOffset, "comment and private zone do not lie in the file");
  }
}

// Whether the samples can be there.
bool CheckSize(const zBytes& bytes, const SurHeader& header, z64u samplesAt, bool profile,
               Findings& findings) {
  if (header.bitsPerPoint != 16 && header.bitsPerPoint != 32) {
    findings.Problem(kBitsOffset, "samples of %d bits are not read", header.bitsPerPoint);
    return false;
  }
  if (header.pointsPerLine < 0) {
    findings.Problem(kPointsOffset, "a line has %d points", header.pointsPerLine);
    return false;
  }
  if (header.lineCount < 0 || (profile && header.lineCount != 1)) {
    findings.Problem(kLinesOffset, "there are %d lines%s", header.lineCount,
                     profile ? ", a profile has one" : "");
    return false;
  }
  const z64u count = static_cast<z64u>(header.pointsPerLine) * static_cast<z64u>(header.lineCount);
  const z64u bytesPerPoint = static_cast<z64u>(header.bitsPerPoint) / 8;
  const z64u left = bytes.size() - samplesAt;
  if (count > left / bytesPerPoint) {
    findings.Problem(bytes.size(), "%d x %d samples of %d bits take %llu bytes, %llu are left",
                     header.pointsPerLine, header.lineCount, header.bitsPerPoint,
                     count * bytesPerPoint, left);
    return false;
  }
  findings.facts.digitalSurf->bytesAfterSamples = left - count * bytesPerPoint;
  return true;
}

}  // namespace

void DescribeDigitalSurf(const zBytes& bytes, Findings& findings) {
  const bool profile = findings.facts.kind == FileKind::pro;
  zAlloc alloc = &zAllocator::Default();
  DigitalSurfReader reader;
  if (reader.Open(bytes, alloc) != zOK) return TellHeaderProblem(bytes, findings);
  const SurHeader& header = reader.Header();
  findings.facts.digitalSurf = FactsOf(header);
  DigitalSurfFacts& facts = *findings.facts.digitalSurf;
  // Opening has moved past both zones, so they lie in the file.
  const auto comment = static_cast<zSize>(std::max<z16s>(header.commentSize, 0));
  const auto commentText =
      std::span(bytes).subspan(kSurHeaderSize, std::min(comment, bytes.size() - kSurHeaderSize));
  facts.comment = ToUtf8({reinterpret_cast<const char*>(commentText.data()), commentText.size()});
  if (!CheckSize(bytes, header, reader.Position(), profile, findings)) return;
  NoteIgnored(facts, header, profile, findings);

  Scan scan;
  zStatus status = zOK;
  if (profile) {
    ProfileBuffer record;
    status = LoadProFileBuffer(bytes, record, alloc);
    if (status == zOK) scan = ToScan(record);
  } else {
    SurfaceBuffer record;
    status = LoadSurFileBuffer(bytes, record, alloc);
    if (status == zOK) scan = ToScan(record);
  }
  if (status != zOK) return findings.Problem({}, "the samples cannot be read (status %d)", status);
  findings.Take(std::move(scan));
}
