// SPDX-License-Identifier: MIT
#include "formats/pcd/facts.h"

#include <algorithm>

#include "formats/pcd/reader.h"
#include "formats/pcd/validation.h"
#include "statuses.h"

namespace {

void NoteIgnored(const CloudFacts& facts, const PcdCloud& cloud, z64u bytesLeft,
                 ScanFileDescription& description) {
  std::string ignored;
  std::string_view fields = facts.fields;
  for (std::string_view name; TakePcdWord(fields, name);) {
    constexpr std::string_view kUsed[] = {"x", "y", "z", "intensity", "rgb", "rgba"};
    if (std::ranges::find(kUsed, name) == std::end(kUsed)) ignored.append(" ").append(name);
  }
  if (!ignored.empty()) description.Note("a conversion drops the fields%s", ignored);
  if (facts.viewpoint != "0 0 0 1 0 0 0") {
    description.Note("a conversion drops the viewpoint %s", facts.viewpoint);
  }
  if (cloud.IsLine()) {
    const z32u side = cloud.SquareSide();
    description.Note("a conversion puts the points into a grid of %u x %u, in their order", side,
                     side);
  }
  if (cloud.intensity && cloud.color) {
    description.Note("a conversion mixes intensities and colours");
  }
  if (bytesLeft > 0) description.Note("%llu bytes after the points are ignored", bytesLeft);
}

}  // namespace

std::optional<CloudFacts> DescribePcd(const zBytes& bytes, ScanFileDescription& description) {
  PcdFile pcd;
  description.complaints =
      ValidatePcd({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, pcd);
  if (pcd.header.empty()) return std::nullopt;
  const PcdCloud& cloud = pcd.cloud;
  const CloudFacts facts{PcdValueOf(pcd.header, "FIELDS "), PcdValueOf(pcd.header, "VIEWPOINT "),
                         cloud.binary};
  if (!description.complaints.empty()) return facts;
  NoteIgnored(facts, cloud, pcd.data.size() - cloud.PointCount() * cloud.stride, description);

  PcdOptions asInTheFile;
  asInTheFile.width = cloud.width;
  asInTheFile.height = cloud.height;
  Scan scan;
  const zStatus status = LoadPcdFileBuffer(bytes, scan, asInTheFile, &zAllocator::Default());
  if (status == zOK) {
    description.scan = std::move(scan);
  } else {
    description.complaints.push_back(
        MakeComplaint({}, status, "the points cannot be read (status %d)", status));
  }
  return facts;
}
