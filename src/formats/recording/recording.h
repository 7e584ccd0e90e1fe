// SPDX-License-Identifier: MIT
// A recording of the scanner platform, with the frames and sources that can be exported.
#pragma once

#include <memory>
#include <optional>

#include "formats/archive/reader.h"
#include "formats/filetypes.h"
#include "sdk/pipeline.h"

struct Recording {
  FileType fileType = REP;          // REC, REP or OVREC
  Plovia::ReplaySerializer replay;  // loaded
  ArchiveMember job;                // of an archive, where it lies there
  std::vector<ReplaySourceInfo> sources;
  std::vector<std::string> tags;  // one for each source, fit for file names
  DataSourceType dataType = UNKNOWN_DATA_SOURCE;
  z8u arrayed = 0;
  std::vector<Plovia::ReplayFrame> frames;  // at least one
  std::vector<zSize> places;                // of the messages in a frame that count, in order

  bool HasMessage(zSize frame, zSize source) const { return NumberOf(frame, source).has_value(); }
  // How many messages of a frame count.
  zSize MessageCount(zSize frame) const;
  // The message of a source, read when it is asked for. A frame may be shorter than others: what is
  // missing is an empty handle.
  Orv::Object<void*> Message(zSize frame, zSize source) const;
  // The same as a stream of heights, which the recording must outlive; nothing for a message that
  // is none (see Plovia::ReplaySerializer).
  std::optional<Plovia::SurfaceStream> Surface(zSize frame, zSize source) const;
  // Items of an array message; 0 for another one, and where it is missing.
  zSize ItemCount(zSize frame, zSize source) const;

 private:
  std::optional<z64u> NumberOf(zSize frame, zSize source) const;
};

// Checks a whole recording, or only walks over the heads of its records, and keeps where things
// are. Throws Orv::Exception for damage, and for what cannot be exported.
enum class Check { whole, none };
Recording OpenRecording(FileType fileType, zSourcePtr file, Check check = Check::whole);

// Whether the messages of a source can be exported: of a known type, and not one of the exposures
// that another source is made of.
bool IsExportable(const ReplaySourceInfo& source);

// Names of sources as parts of file names: without what no file name may hold.
std::vector<std::string> SanitizeScannerNames(const std::vector<ReplaySourceInfo>& sources);

// Goes through every frame of the loaded recording. Sources that cannot be exported are dropped:
// `sources` gains the kept ones, and the last of them tells `dataType` and `arrayed`. In the
// classic layout the frames keep the messages of dropped sources. Throws Orv::Exception when the
// recording has not exactly one scanner, no exportable source, or no frame.
void GetCloudsInfoFromRecordingData(Recording& recording);
