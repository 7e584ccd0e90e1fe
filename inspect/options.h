// SPDX-License-Identifier: MIT
// Command line of trelvane-inspect.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "inspect/measure/colourrange.h"
#include "inspect/selection.h"

struct InspectOptions {
  std::vector<std::string> files;  // and directories; at least one
  bool json = false;
  Depth depth = Depth::reading;
  std::string png;                        // file to write; empty: none
  std::string html;                       // likewise
  Selection selection;                    // to tell of, or to draw: of a picture the first one
  bool each = false;                      // tell of each scan, however many there are
  z64u points = 1'000'000;                // in a page, in all
  ColourChoice range;                     // of pictures and pages
  Levelling levelling = Levelling::none;  // likewise
  bool figures = false;                   // of each scan, in the report or document
};

// How a command line ended that asks for no inspection: help, version, or wrong usage.
struct ParsedOptions {
  InspectOptions options;
  std::optional<int> exitCode;  // nothing: go on
};

// Prints help, version and what is wrong with a command line.
ParsedOptions ParseInspectOptions(int argc, char** argv);
