// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "sdk/pipeline.h"

// Writes a recording archive: copies of three configuration files (their paths on disk are given)
// and the replay stream. Throws Orv::Exception with the status of the step that failed; the file
// then stays as far as it was written.
void WriteReplayData(const Plovia::ReplayStream& replay, const std::string& configPath,
                     const std::string& jobsConfigPath, const std::string& jobPath,
                     const std::string& outputPath, zAlloc alloc);
