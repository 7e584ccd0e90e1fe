// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/validation.h"

#include <algorithm>

#include "statuses.h"

Complaint ComplainOfHeader(const zSource& file) {
  std::string text(static_cast<zSize>(std::min<z64u>(file.Size(), kSurSignature.size())), '\0');
  file.Read(0, text.data(), text.size());
  const zStatus mismatch = text.size() < kSurSignature.size() ? zERROR_STREAM : kRefused;
  if (text.starts_with("DSCOMPRESSED")) {
    return {0, mismatch, "the file is in the compressed form, which is not read"};
  }
  if (!text.starts_with(kSurSignature.substr(0, text.size()))) {
    return {0, mismatch, "the file does not begin as a Digital Surf file does"};
  }
  if (file.Size() < kSurHeaderSize) {
    return MakeComplaint(file.Size(), zERROR_STREAM, "the file ends in its header of %zu bytes",
                         kSurHeaderSize);
  }
  return {SurFieldOffset(&SurHeader::commentSize), zERROR_STREAM,
          "comment and private zone do not lie in the file"};
}

Complaints ValidateSamples(const SurHeader& header, bool profile, z64u left, z64u fileSize) {
  Complaints complaints;
  const auto complain = [&](auto... complaint) {
    complaints.push_back(MakeComplaint(complaint...));
  };
  if (profile ? header.lineCount != 1 : header.lineCount < 0) {
    complain(SurFieldOffset(&SurHeader::lineCount), profile ? kBadInput : zERROR_PARAMETER,
             "there are %d lines%s", header.lineCount, profile ? ", a profile has one" : "");
  }
  if (header.pointsPerLine < 0) {
    complain(SurFieldOffset(&SurHeader::pointsPerLine), zERROR_PARAMETER, "a line has %d points",
             header.pointsPerLine);
  }
  if (header.bitsPerPoint != 16 && header.bitsPerPoint != 32) {
    complain(SurFieldOffset(&SurHeader::bitsPerPoint), kRefused, "samples of %d bits are not read",
             header.bitsPerPoint);
  }
  if (!complaints.empty()) return complaints;

  const z64u count = static_cast<z64u>(header.pointsPerLine) * static_cast<z64u>(header.lineCount);
  const z64u bytesPerPoint = static_cast<z64u>(header.bitsPerPoint) / 8;
  if (count > left / bytesPerPoint) {
    complain(fileSize, zERROR_STREAM, "%d x %d samples of %d bits take %llu bytes, %llu are left",
             header.pointsPerLine, header.lineCount, header.bitsPerPoint, count * bytesPerPoint,
             left);
  }
  return complaints;
}
