// SPDX-License-Identifier: MIT
// Frames of a recording as files.
#pragma once

#include "notices.h"
#include "surfacefileconverter/exportnames.h"

// Which frames are exported.
struct FrameChoice {
  bool all = false;
  z32u frame = 0;  // otherwise
};

// Where they go. Files are named after the export name.
struct FrameExport {
  std::string exportName;
  std::string inputName;  // of the recording, which no output may replace
  FileType exportType;    // SRF, SUR, PRO, PCD or CSV
  zAlloc alloc;
  const Listener& listener;
  std::vector<std::string>& exportedNames;  // gains each file that was written
  bool trial = false;                       // scan files are made, but not written
  FileNaming naming{};
};

// The places of the sources that ExportFrames writes.
std::vector<zSize> WrittenSources(const std::vector<ReplaySourceInfo>& sources);

// Write scan files or, with the settings of the archive's job, CSV: of a recording of profiles then
// all frames in one file for each source. Throw Orv::Exception, and for CSV errors of the JSON
// library. ExportCsv tells the number of sensors that the job knows.
void ExportFrames(const Recording& recording, const FrameChoice& choice, const FrameExport& target);
z32s ExportCsv(const Recording& recording, const FrameChoice& choice, const FrameExport& target);

// Writes one message to a file of that kind. Throws Orv::Exception.
void WriteMsg(const Orv::Object<void*>& message, const std::string& path, FileType fileType,
              zAlloc alloc);
