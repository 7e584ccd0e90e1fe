// SPDX-License-Identifier: MIT
// The facts of a file as text for people and as JSON for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

#include "inspect/facts.h"
#include "inspect/measure/figures.h"

// Which scans a report tells of one by one.
enum class ScanDetails : z8u {
  ofFew,   // all up to four; of more, a table has a line for each source
  chosen,  // all that are left of those of the file
  all,     // with the names of all files of a directory
};

// Several lines, with an empty one at the end.
void WriteReport(const FileFacts& facts, ScanDetails details, std::ostream& out);
// "<path>: whole", or one line for each problem.
void WriteVerdict(const FileFacts& facts, std::ostream& out);

// One line with one document; docs/inspect.md tells the keys. Numbers that are no number, or
// infinite, are null.
void WriteJson(const FileFacts& facts, std::ostream& out);
// With the keys of docs/inspect.md.
nlohmann::ordered_json FiguresToJson(const Figures& figures);
// The document without its scans, and each scan of it.
nlohmann::ordered_json FileToJson(const FileFacts& facts);
nlohmann::ordered_json ScanToJson(const PlacedScan& scan);
