// SPDX-License-Identifier: MIT
// Scan files as other kinds of scan files.
#pragma once

#include "surfacefileconverter/recordingexport.h"

// Whether a kind of scan file becomes another kind through a recording: surfaces of heights do.
bool BecomesScan(FileType from, FileType to);

// Writes what comes of a scan file through a recording of it, in one step. Throws Orv::Exception.
void ExportScanAsScan(const ScanFile& file, const std::string& exportName, FileType exportType,
                      zAlloc alloc);
