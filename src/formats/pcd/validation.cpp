// SPDX-License-Identifier: MIT
#include "formats/pcd/validation.h"

#include <algorithm>

#include "statuses.h"
#include "text.h"

namespace {

bool HasCoordinates(std::string_view fields, std::string_view names) {
  zSize found = 0;
  for (std::string_view name; TakePcdWord(fields, name);) {
    if (name.size() == 1 && names.find(name) != names.npos) ++found;
  }
  return found >= 3;
}

// What a line is of which other kinds of PCD files are known.
std::string KindOf(std::string_view line) {
  constexpr std::string_view kVersion = "VERSION ";
  if (line.starts_with(kVersion) && line != "VERSION .7" && line != "VERSION 0.7") {
    return Orv::Format("PCD version %s", line.substr(kVersion.size()));
  }
  if (line.starts_with("DATA binary_compressed")) return "the compressed form of PCD";
  return {};
}

// The parser has stopped behind the line that is wrong, with `left` bytes of the text behind it.
Complaint ComplainOfHeader(std::string_view file, std::size_t left) {
  const std::string_view read = file.substr(0, file.size() - left);
  const std::string_view withoutItsEnd = read.substr(0, read.empty() ? 0 : read.size() - 1);
  const std::size_t start = withoutItsEnd.rfind('\n') + 1;  // npos + 1 is 0
  const std::string fields = PcdValueOf(read, "FIELDS ");
  if (!fields.empty() && HasCoordinates(fields, "XYZ")) {
    return MakeComplaint(read.find("FIELDS "), kMalformed,
                         "coordinates named X, Y and Z in capitals are not read: %s", fields);
  }
  if (!fields.empty() && !HasCoordinates(fields, "xyz")) {
    return MakeComplaint(read.find("FIELDS "), kMalformed,
                         "x, y and z are not among the fields: %s", fields);
  }
  constexpr std::size_t kShown = 60;
  std::string_view line = file.substr(start, file.find('\n', start) - start);
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (const std::string kind = KindOf(line); !kind.empty()) {
    return MakeComplaint(start, kMalformed, "this is %s, which is not read: \"%s\"", kind,
                         line.substr(0, kShown));
  }
  return MakeComplaint(start, kMalformed,
                       "this is not the line that a PCD 0.7 header has here: \"%s\"",
                       line.substr(0, kShown));
}

}  // namespace

Complaints ValidatePcd(const zSource& file, PcdFile& pcd) {
  constexpr z64u kFirst = 4096;
  constexpr z64u kLongest = z64u{16} << 20;
  std::string text;
  std::string_view left;
  std::optional<PcdCloud> cloud;
  // Nothing tells how long a header is; only one that goes on where the text ends may be whole.
  do {
    const z64u start = text.size();
    const z64u size = std::min(file.Size(), std::max(kFirst, 2 * start));
    text.resize(static_cast<zSize>(size));
    file.Read(start, text.data() + start, static_cast<zSize>(size - start));
    left = text;
    cloud = ParsePcdHeader(left);
  } while (!cloud && text.size() < std::min(file.Size(), kLongest) && left.find('\n') == left.npos);
  if (!cloud) return {ComplainOfHeader(text, left.size())};
  pcd.cloud = *cloud;
  pcd.dataStart = text.size() - left.size();
  pcd.dataSize = file.Size() - pcd.dataStart;
  pcd.header = text.substr(0, static_cast<zSize>(pcd.dataStart));
  if (!cloud->binary) {
    return {{pcd.dataStart, kNotImplemented,
             "the points are in text form (DATA ascii), which is not read"}};
  }
  const z64u fitting = pcd.dataSize / cloud->stride;
  if (cloud->PointCount() <= fitting) return {};
  return {MakeComplaint(file.Size(), kMalformed, "the header tells of %llu points, %llu are there",
                        cloud->PointCount(), fitting)};
}

std::string PcdValueOf(std::string_view header, std::string_view keyword) {
  for (std::size_t start = 0; start < header.size();) {
    const std::size_t end = std::min(header.find('\n', start), header.size());
    const std::string_view line = header.substr(start, end - start);
    if (line.starts_with(keyword)) return ToUtf8(line.substr(keyword.size()));
    start = end + 1;
  }
  return {};
}
