// SPDX-License-Identifier: MIT
// Command line of trelvane-inspect.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "inspect/facts.h"

struct InspectOptions {
  std::vector<std::string> files;  // and directories; at least one
  bool json = false;
  Depth depth = Depth::reading;
  std::string png;            // file to write; empty: none
  std::string html;           // likewise
  std::optional<z32u> frame;  // to draw, from 0; otherwise the first one, or all in a page
  std::string source;         // to draw; empty: the first one, or all in a page
  z64u points = 1'000'000;    // in a page, in all
};

// How a command line ended that asks for no inspection: help, version, or wrong usage.
struct ParsedOptions {
  InspectOptions options;
  std::optional<int> exitCode;  // nothing: go on
};

// Prints help, version and what is wrong with a command line.
ParsedOptions ParseInspectOptions(int argc, char** argv);
