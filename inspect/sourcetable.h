// SPDX-License-Identifier: MIT
// The scans of a recording or directory in a few lines: a table with one for each source.
#pragma once

#include <string>
#include <vector>

#include "inspect/facts.h"

// "90.9 %", or "none" of nothing.
std::string ShareText(zSize part, zSize whole);

// A head, then a line for each source, in the order of their first scans; fit for a terminal.
std::vector<std::string> SourceTable(const std::vector<PlacedScan>& scans);

// The cautions of the scans, each text once with the number of scans that have it; of one key, not
// more texts than people read.
std::vector<std::string> SummedCautions(const std::vector<PlacedScan>& scans);
