// SPDX-License-Identifier: MIT
// Scan files, and directories of them, as recordings.
#pragma once

#include "formats/directory/reader.h"
#include "formats/filetypes.h"
#include "getfilestream/getfilestream.h"
#include "notices.h"
#include "sdk/pipeline.h"

// A file of one scan, not yet decoded.
struct ScanFile {
  FileType fileType = SRF;  // SRF, SUR, PRO or PCD
  zSourcePtr bytes;
};

// The one scanner of a recording that is built here, and its sources; a scan file's has this name.
inline constexpr const char* kScanSourceName = "Surface.Top";
ReplaySourceInfo MakeSource(const std::string& name, DataSourceType dataType);
Plovia::ReplayScannerInfo MakeScanner(std::vector<ReplaySourceInfo> sources);

// Write the recording of one scan, and of all frames of a directory, to a stream. Throw
// Orv::Exception.
void WriteRecording(const ScanFile& file, const PcdOptions& options, zAlloc alloc,
                    const Listener& listener, zStream stream);
void WriteRecording(const SurfaceDirectory& directory, zAlloc alloc, zStream stream);

// Write a recording of one scan, or of all frames of a directory, as .rep, or as an archive with
// the platform's configuration from a folder. Of the options, only a .pcd file has any. Throw
// Orv::Exception.
void ExportScan(const ScanFile& file, const PcdOptions& options, const std::string& exportName,
                FileType exportType, const std::string& configFolder, zAlloc alloc,
                const Listener& listener);
void ExportDirectory(const SurfaceDirectory& directory, const std::string& exportName,
                     FileType exportType, const std::string& configFolder, zAlloc alloc);
