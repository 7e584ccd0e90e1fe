// SPDX-License-Identifier: MIT
#include "surfacefileconverter/recording.h"

#include <string>

#include "surfacefileconverter/failure.h"

namespace {

constexpr const char* kFunction = "GetCloudsInfoFromRecordingData";

using SourceSelection = std::vector<bool>;

[[noreturn]] void Fail(int line, const char* message) {
  throw Orv::Exception(line, kSourceFile, kBadInput, kFunction, message);
}

bool IsExportable(const ReplaySourceInfo& source) {
  const bool knownType =
      source.dataType >= UNIFORM_PROFILE && source.dataType <= SURFACE_POINT_CLOUD;
  return knownType && source.name.find("multi-exp") == std::string::npos;
}

void ReadClassicFrames(Plovia::ReplaySerializer& serializer, zSize frameCount,
                       std::vector<Plovia::ReplayFrame>& frames) {
  for (zSize i = 0; i < frameCount; ++i) frames.push_back(serializer.ReadData(i));
}

void ReadSegments(Plovia::ReplaySerializer& serializer, z64u segmentCount,
                  const SourceSelection& selection, std::vector<Plovia::ReplayFrame>& frames) {
  for (z64u segment = 0; segment < segmentCount; ++segment) {
    serializer.LoadDataIndexFiles();
    const zSize frameCount = serializer.ReadIndexInfo().size();
    for (zSize i = 0; i < frameCount; ++i) {
      const Plovia::ReplayFrame frame = serializer.ReadData(selection.size());
      if (frame.size() != selection.size()) {
        Fail(__LINE__, "The message count in the frame is not equal to the source count");
      }
      Plovia::ReplayFrame& kept = frames.emplace_back();
      for (zSize j = 0; j < frame.size(); ++j) {
        if (selection[j]) kept.push_back(frame[j]);
      }
    }
  }
  if (frames.empty()) Fail(__LINE__, "The imported recording data is empty");
}

}  // namespace

void GetCloudsInfoFromRecordingData(Plovia::ReplaySerializer& serializer,
                                    std::vector<ReplaySourceInfo>& sources,
                                    DataSourceType& dataType, z8u& arrayed,
                                    std::vector<Plovia::ReplayFrame>& frames) {
  frames.clear();
  const std::vector<Plovia::ReplayScannerInfo> scanners = serializer.ReadScannerInfo();
  if (scanners.size() != 1) {
    Fail(__LINE__, "The scanners' number is not equal to 1 in the inputted recording data");
  }
  SourceSelection selection;
  bool anySource = false;
  for (const ReplaySourceInfo& source : scanners.front().sources) {
    selection.push_back(IsExportable(source));
    if (!selection.back()) continue;
    anySource = true;
    dataType = static_cast<DataSourceType>(source.dataType);
    arrayed = source.arrayed;
    sources.push_back(source);
  }
  if (!anySource) Fail(__LINE__, "Unsupported data format");

  if (serializer.GetReplayInfo().IsClassic()) {
    const zSize frameCount = serializer.ReadIndexInfo().size();
    if (frameCount == 0) Fail(__LINE__, "There is no frame data in the recording data");
    ReadClassicFrames(serializer, frameCount, frames);
  } else {
    const z64u segmentCount = serializer.SegmentCount();
    if (segmentCount == 0) Fail(__LINE__, "The current version doesn't support segments");
    ReadSegments(serializer, segmentCount, selection, frames);
  }
}
