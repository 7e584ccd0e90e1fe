// SPDX-License-Identifier: MIT
// Recording archives (.ovrec): tar archives with a configuration and a replay stream; and single
// scans as files. Every failure is an Orv::Exception named after the operation, with the status of
// the step that failed.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

#include "sdk/pipeline.h"
#include "surfacefileconverter/filetypes.h"

// Writes a recording: copies of three configuration files (their paths on disk are given) and the
// replay stream. After a failure the file stays as far as it was written.
void WriteReplayData(const Plovia::ReplayStream& replay, const std::string& configPath,
                     const std::string& jobsConfigPath, const std::string& jobPath,
                     const std::string& outputPath, zAlloc alloc);

// The replay stream of a recording, where it lies in the recording. Of several the last one counts;
// none, or an empty one, is an error.
std::span<const z8u> GetReplayData(const zBytes& recording, zAlloc alloc);

// The content of any file member, empty when there is none. Of several the last one counts.
void GetResourceData(const zBytes& recording, const std::string& memberName, zBytes& content,
                     zAlloc alloc);

// Takes the element "orv:scanner" of a scanner's configuration out of a job, which is a tar archive
// too. Tells whether it is there and not empty; without the configuration `scanner` stays as it is.
// Errors of the JSON library pass through; ParseBounded says how large a configuration may be.
bool GetScannerConfig(const zBytes& job, const std::string& scannerId, nlohmann::json& scanner,
                      zAlloc alloc);

// Writes one message to a file of that kind.
void WriteMsg(const Orv::Object<void*>& message, const std::string& path, FileType fileType,
              zAlloc alloc);
