// SPDX-License-Identifier: MIT
// Where the describers of the file kinds put what they find, and the describers.
#pragma once

#include <functional>
#include <span>

#include "inspect/facts.h"
#include "inspect/progress.h"

// Takes each scan while it is in memory.
using ScanVisitor = std::function<void(zSize frame, z32u index, const TaggedScan& scan)>;

class Findings {
 public:
  Findings(FileFacts& fileFacts, const ScanVisitor& scanVisitor, Progress& fileProgress)
      : facts(fileFacts), visit(scanVisitor), progress(fileProgress) {}

  template <class... Values>
  void Note(std::string_view format, const Values&... values) {
    facts.notes.push_back(Orv::Format(format, values...));
  }
  template <class... Values>
  void Warn(std::string_view key, std::string_view format, const Values&... values) {
    facts.cautions.push_back({key, Orv::Format(format, values...)});
  }
  template <class... Values>
  void Problem(std::optional<z64u> offset, std::string_view format, const Values&... values) {
    facts.problems.push_back({offset, Orv::Format(format, values...)});
  }
  // A conversion does not take the whole, for this reason, if any.
  void Refuse(const std::optional<std::string>& why) {
    if (why) Problem({}, "a conversion refuses it: %s", *why);
  }
  // Measures a scan and shows it to the visitor, with its cautions.
  void Take(zSize frame, z32u index, TaggedScan scan) {
    facts.scans.push_back({frame, index, scan.source, scan.item, MeasureScan(scan.scan)});
    if (!visit) return;
    scan.scan.cautions = facts.scans.back().facts.cautions;
    visit(frame, index, scan);
  }
  // The only scan of a file.
  void Take(Scan scan) {
    facts.frames = 1;
    Take(0, 0, {{}, {}, std::move(scan)});
  }

  FileFacts& facts;
  const ScanVisitor& visit;  // may be null
  Progress& progress;
};

// Each fills in the facts of a file of its kind; what is wrong with the file becomes a problem, not
// an exception.
void DescribeScanFile(const zBytes& bytes, Findings& findings);  // .sur, .pro, .srf or .pcd
// A replay stream that begins at `start` of its file. `check` asks for everything that can be
// verified, beyond what reading it verifies.
void DescribeRecording(std::span<const z8u> replay, z64u start, bool check, Findings& findings);
void DescribeArchive(const zBytes& bytes, bool check, Findings& findings);
void DescribeDirectory(const std::string& path, bool check, Findings& findings);
