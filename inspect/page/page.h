// SPDX-License-Identifier: MIT
// One HTML page to explore the scans of a file with. It stands alone: it opens from disk and asks
// no network for anything.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "inspect/measure/colourrange.h"
#include "inspect/scanfacts.h"
#include "inspect/selection.h"

// What a file holds in all, or what is wanted of it.
struct PageExtent {
  zSize frames = 1;
  zSize scans = 1;  // of all frames; each item of an array counts
  z64u points = 0;  // of all scans
  zSize firstFrame = 0;
};

// How a page looks at first, and what of the file was asked for.
struct PageOptions {
  z64u budget = 1'000'000;  // points in all
  ColourChoice range;
  Levelling levelling = Levelling::none;
  Selection selection;
};

// Holds no more points than its budget, however many are added. As long as a file has no more, all
// of them are kept; otherwise each scan is reduced to its share, and frames are left out evenly
// where the shares would be too small to look at. The page tells about both.
class Page {
 public:
  // `name` heads the page. `facts` are shown as they stand: objects as sections, arrays of objects
  // as tables. Texts may hold anything.
  Page(std::string name, nlohmann::ordered_json facts, const PageExtent& extent,
       const PageOptions& options);

  // `frame` is counted from 0, `frameIndex` its entry in the recording's index. Frames come in
  // ascending order.
  void Add(zSize frame, z32u frameIndex, const TaggedScan& scan);

  void Write(std::ostream& out) const;

 private:
  nlohmann::ordered_json document_;
  std::vector<std::string> arrays_;  // base64, as the scans in the document number them
  PageOptions options_;
  z64u left_;  // points that may still be added
  zSize firstFrame_;
  zSize every_ = 1;
  z64u pointsPerScan_;
  zSize leftOut_ = 0;  // scans for which nothing was left
};
