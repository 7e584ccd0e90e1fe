// SPDX-License-Identifier: MIT
#pragma once

#include "outputfile/writefile.h"

// Writes a recording archive: copies of three configuration files (their paths on disk are given)
// and the replay stream, which `fill` writes. What is wrong with the stream itself is told first.
// Throws Orv::Exception with the status of the step that failed; nothing is left then.
void WriteReplayData(const FillStream& fill, const std::string& configPath,
                     const std::string& jobsConfigPath, const std::string& jobPath,
                     const std::string& outputPath, zAlloc alloc);
