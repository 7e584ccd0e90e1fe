// SPDX-License-Identifier: MIT
// The command line: its options, and the run of one conversion.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "surfacefileconverter/surfacefileconverter.h"

// Option as typed ("-i" or "--input") to its value.
using ParsedArgs = std::unordered_map<std::string, std::string>;

// Cuts a line into options and values. An option counts where it first occurs in the line, and only
// if it stands there as a word between blanks; its value runs to the next option and loses blanks
// and double quotes at both ends. Values may hold blanks; a word that is no option belongs to the
// value before it.
ParsedArgs parseCommandLine(const std::string& line, const std::vector<std::string>& knownOptions);

// A point "(x, y, z)". The brackets are hardly checked: the first and the last character go,
// whatever they are. Throws Orv::Exception, or what parseReal throws.
zPoint3d64f parsePoint(const std::string& text);

// Writes the instructions for use to standard output.
void printUsage();

class CommandArgsOperator {
 public:
  CommandArgsOperator();

  const std::vector<std::string>& getKnownOptions() const { return knownOptions; }

  // Imports, configures, exports and reports. Throws Orv::Exception, or the standard exceptions of
  // the number conversions.
  void process(const ParsedArgs& args);

 private:
  void importInput(const std::string& input);
  void reportRecording();
  void configure(const ParsedArgs& args);
  void reportFrames(const std::string& output);
  void reportExports() const;

  SurfaceFileConverter converter;
  std::vector<std::string> knownOptions;
};
