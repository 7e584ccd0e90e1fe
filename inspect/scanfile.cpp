// SPDX-License-Identifier: MIT
// What files of single scans tell.
#include "formats/srf/srf.h"
#include "inspect/findings.h"

void DescribeScanFile(const zSource& file, Findings& findings) {
  FileFacts& facts = findings.facts;
  ScanFileDescription description;
  switch (facts.kind) {
    case FileKind::pro:
      facts.digitalSurf = DescribeDigitalSurf(file, true, description);
      break;
    case FileKind::srf:
      DescribeSrf(file, description);
      break;
    case FileKind::pcd:
      facts.cloud = DescribePcd(file, description);
      break;
    default:
      facts.digitalSurf = DescribeDigitalSurf(file, false, description);
  }
  for (std::string& note : description.notes) facts.notes.push_back(std::move(note));
  for (Complaint& complaint : description.complaints) {
    facts.problems.push_back({complaint.offset, std::move(complaint.text)});
  }
  if (description.scan) description.scan->cautions = std::move(description.cautions);
  if (description.scan) findings.Take(std::move(*description.scan));
}
