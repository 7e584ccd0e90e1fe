// SPDX-License-Identifier: MIT
// Where the describers of the file kinds put what they find, and the describers.
#pragma once

#include <functional>

#include "inspect/facts.h"
#include "inspect/progress.h"

// Somebody who looks at scans.
struct ScanVisitor {
  // Whether a frame's scans of a source are wanted; the others need not be read for it. Null when
  // none is.
  std::function<bool(zSize frame, const std::string& source)> wants;
  // Takes a scan that is wanted, while it is in memory. Null when nobody does.
  std::function<void(zSize frame, z32u index, const TaggedScan& scan)> take;
  bool figures = false;  // whether the figures of those that are wanted are told

  bool Wants(zSize frame, const std::string& source) const { return wants && wants(frame, source); }
};

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
  // What was measured of a scan.
  void Add(PlacedScan scan) { facts.scans.push_back(std::move(scan)); }
  // Shows a scan, of which all else is known, to the visitor.
  void Show(PlacedScan& place, Scan scan) const {
    if (visit.figures) place.facts.figures = MeasureFigures(scan);
    if (!visit.take) return;
    scan.cautions = place.facts.cautions;
    visit.take(place.frame, place.index, {place.source, place.item, std::move(scan)});
  }
  // The only scan of a file.
  void Take(Scan scan) {
    facts.frames = 1;
    Add({0, 0, {}, {}, MeasureScan(scan)});
    if (visit.Wants(0, {})) Show(facts.scans.back(), std::move(scan));
  }

  FileFacts& facts;
  const ScanVisitor& visit;
  Progress& progress;
};

// Each fills in the facts of a file of its kind; what is wrong with the file becomes a problem, not
// an exception.
void DescribeScanFile(const zSource& file, Findings& findings);  // .sur, .pro, .srf or .pcd
// A replay stream that begins at `start` of its file.
void DescribeRecording(zSourcePtr replay, z64u start, Depth depth, Findings& findings);
void DescribeArchive(const zSourcePtr& file, Depth depth, Findings& findings);
void DescribeDirectory(const std::string& path, Depth depth, Findings& findings);
