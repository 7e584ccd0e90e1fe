// SPDX-License-Identifier: MIT
// Command line of trelvane-batch.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/nametemplate.h"
#include "formats/filetypes.h"
#include "formats/pcd/reader.h"

// One of several parts of the inputs.
struct Shard {
  z32u number = 1;  // from 1
  z32u count = 1;

  // "I/N". Throws std::invalid_argument.
  static Shard Parse(const std::string& text);
};

// What all conversions share.
struct ConversionOptions {
  FileType to = REP;
  std::string extension;                // of the outputs, with its dot
  std::string configFolder = "config";  // of archives that are written
  bool allFrames = false;
  z32u frame = 0;  // otherwise
  PcdOptions pcd;
};

struct BatchOptions {
  ConversionOptions conversion;
  std::vector<std::string> inputs;  // files and folders
  bool foldersAreRecordings = false;
  std::string outputFolder;
  NameTemplate name{"{folder}/{stem}"};
  Shard shard;
  z32u jobs = 1;
  std::string report;  // file; empty: none
  bool resume = false;
  bool failFast = false;
  bool dryRun = false;
};

// How a command line ended that asks for no conversion: help, version, or wrong usage.
struct ParsedBatchOptions {
  BatchOptions options;
  std::optional<int> exitCode;  // nothing: go on
};

// Reads the lists of inputs, too. Prints help, version and what is wrong with a command line.
ParsedBatchOptions ParseBatchOptions(int argc, char** argv);
