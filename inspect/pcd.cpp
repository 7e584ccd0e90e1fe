// SPDX-License-Identifier: MIT
// What point clouds tell.
#include <algorithm>
#include <cmath>

#include "inspect/findings.h"
#include "inspect/text.h"
#include "loadfilestream/pcdheader.h"

namespace {

// What stands behind a keyword in a header that was parsed.
std::string ValueOf(std::string_view header, std::string_view keyword) {
  for (std::size_t start = 0; start < header.size();) {
    const std::size_t end = std::min(header.find('\n', start), header.size());
    const std::string_view line = header.substr(start, end - start);
    if (line.starts_with(keyword)) return ToUtf8(line.substr(keyword.size()));
    start = end + 1;
  }
  return {};
}

// The side of the square grid that a cloud of one row or column is put into.
z64u GridSide(const PcdCloud& cloud) {
  return static_cast<z64u>(std::ceil(std::sqrt(static_cast<z64f>(cloud.PointCount()))));
}

// Takes the text up to the next blank off the front.
std::string_view TakeWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(std::min(word.size() + 1, text.size()));
  return word;
}

void NoteIgnored(const CloudFacts& facts, const PcdCloud& cloud, z64u bytesLeft,
                 Findings& findings) {
  std::string ignored;
  std::string_view fields = facts.fields;
  while (!fields.empty()) {
    const std::string_view name = TakeWord(fields);
    constexpr std::string_view kUsed[] = {"x", "y", "z", "intensity", "rgb", "rgba"};
    if (std::ranges::find(kUsed, name) == std::end(kUsed)) ignored.append(" ").append(name);
  }
  if (!ignored.empty()) findings.Note("a conversion drops the fields%s", ignored);
  if (facts.viewpoint != "0 0 0 1 0 0 0") {
    findings.Note("a conversion drops the viewpoint %s", facts.viewpoint);
  }
  if ((cloud.width == 1) != (cloud.height == 1)) {
    const z64u side = GridSide(cloud);
    findings.Note("a conversion puts the points into a grid of %llu x %llu, in their order", side,
                  side);
  }
  if (cloud.intensity && cloud.color) {
    findings.Note("a conversion mixes intensities and colours");
  }
  if (bytesLeft > 0) findings.Note("%llu bytes after the points are ignored", bytesLeft);
}

bool HasCoordinates(std::string_view fields) {
  zSize found = 0;
  while (!fields.empty()) {
    const std::string_view name = TakeWord(fields);
    if (name == "x" || name == "y" || name == "z") ++found;
  }
  return found >= 3;
}

// The parser has stopped behind the line that is wrong, with `left` bytes of the file behind it.
void TellHeaderProblem(std::string_view file, std::size_t left, Findings& findings) {
  const std::string_view read = file.substr(0, file.size() - left);
  const std::string_view withoutItsEnd = read.substr(0, read.empty() ? 0 : read.size() - 1);
  const std::size_t start = withoutItsEnd.rfind('\n') + 1;  // npos + 1 is 0
  const std::string fields = ValueOf(read, "FIELDS ");
  if (!fields.empty() && !HasCoordinates(fields)) {
    return findings.Problem(read.find("FIELDS "), "x, y and z are not among the fields: %s",
                            fields);
  }
  constexpr std::size_t kShown = 60;
  const std::string_view line = file.substr(start, file.find('\n', start) - start);
  findings.Problem(start, "this is not the line that a PCD 0.7 header has here: \"%s\"",
                   line.substr(0, kShown));
}

}  // namespace

void DescribePcd(const zBytes& bytes, Findings& findings) {
  const std::string_view file(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::string_view rest = file;
  const std::optional<PcdCloud> cloud = ParsePcdHeader(rest);
  if (!cloud) return TellHeaderProblem(file, rest.size(), findings);
  const std::string_view header = file.substr(0, file.size() - rest.size());
  findings.facts.cloud = {ValueOf(header, "FIELDS "), ValueOf(header, "VIEWPOINT "), cloud->binary};
  if (!cloud->binary) {
    return findings.Problem(header.size(), "the points are in text form, which is not read");
  }
  const z64u fitting = rest.size() / cloud->stride;
  if (cloud->PointCount() > fitting) {
    return findings.Problem(bytes.size(), "the header tells of %llu points, %llu are there",
                            cloud->PointCount(), fitting);
  }
  NoteIgnored(*findings.facts.cloud, *cloud, rest.size() - cloud->PointCount() * cloud->stride,
              findings);
  SurfaceBuffer record;
  record.width = cloud->width;  // as they stand in the file
  record.length = cloud->height;
  const zStatus status =
      LoadPcdFileBuffer(bytes, record, false, nullptr, nullptr, &zAllocator::Default());
  if (status != zOK) return findings.Problem({}, "the points cannot be read (status %d)", status);
  findings.Take(ToScan(record));
}
