// SPDX-License-Identifier: MIT
#include "formats/recording/recording.h"

#include <algorithm>

#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "GetCloudsInfoFromRecordingData"};

using SourceSelection = std::vector<bool>;

void ReadSegments(Plovia::ReplaySerializer& serializer, z64u segmentCount,
                  const SourceSelection& selection, std::vector<Plovia::ReplayFrame>& frames) {
  for (z64u segment = 0; segment < segmentCount; ++segment) {
    serializer.LoadDataIndexFiles();
    const zSize frameCount = serializer.ReadIndexInfo().size();
    for (zSize i = 0; i < frameCount; ++i) {
      const Plovia::ReplayFrame frame = serializer.ReadData(selection.size());
      if (frame.size() != selection.size()) {
        kOperation.Fail(kBadInput,
                        "The message count in the frame is not equal to the source count");
      }
      Plovia::ReplayFrame& kept = frames.emplace_back();
      for (zSize j = 0; j < frame.size(); ++j) {
        if (selection[j]) kept.push_back(frame[j]);
      }
    }
  }
  if (frames.empty()) kOperation.Fail(kBadInput, "The imported recording data is empty");
}

}  // namespace

std::vector<std::string> SanitizeScannerNames(const std::vector<ReplaySourceInfo>& sources) {
  constexpr std::string_view kNotInFileNames = "*/:<>?\\|";
  std::vector<std::string> tags;
  for (const ReplaySourceInfo& source : sources) {
    std::string& tag = tags.emplace_back(source.displayName);
    std::erase_if(tag, [&](char c) { return kNotInFileNames.find(c) != std::string_view::npos; });
  }
  return tags;
}

bool IsExportable(const ReplaySourceInfo& source) {
  const bool knownType =
      source.dataType >= UNIFORM_PROFILE && source.dataType <= SURFACE_POINT_CLOUD;
  return knownType && source.name.find("multi-exp") == std::string::npos;
}

void GetCloudsInfoFromRecordingData(Plovia::ReplaySerializer& serializer,
                                    std::vector<ReplaySourceInfo>& sources,
                                    DataSourceType& dataType, z8u& arrayed,
                                    std::vector<Plovia::ReplayFrame>& frames) {
  frames.clear();
  const std::vector<Plovia::ReplayScannerInfo> scanners = serializer.ReadScannerInfo();
  if (scanners.size() != 1) {
    kOperation.Fail(kBadInput,
                    "The scanners' number is not equal to 1 in the inputted recording data");
  }
  SourceSelection selection;
  for (const ReplaySourceInfo& source : scanners.front().sources) {
    selection.push_back(IsExportable(source));
    if (!selection.back()) continue;
    dataType = static_cast<DataSourceType>(source.dataType);
    arrayed = source.arrayed;
    sources.push_back(source);
  }
  if (std::ranges::count(selection, true) == 0)
    kOperation.Fail(kBadInput, "Unsupported data format");

  if (serializer.GetReplayInfo().IsClassic()) {
    const zSize frameCount = serializer.ReadIndexInfo().size();
    if (frameCount == 0) kOperation.Fail(kBadInput, "There is no frame data in the recording data");
    for (zSize i = 0; i < frameCount; ++i) frames.push_back(serializer.ReadData(i));
  } else {
    const z64u segmentCount = serializer.SegmentCount();
    if (segmentCount == 0)
      kOperation.Fail(kBadInput, "The current version doesn't support segments");
    ReadSegments(serializer, segmentCount, selection, frames);
  }
}

Recording ReadRecording(FileType fileType, std::shared_ptr<const zBytes> file) {
  Recording recording;
  recording.fileType = fileType;
  recording.file = std::move(file);
  std::span<const z8u> replay = *recording.file;
  if (fileType == OVREC) {
    RecordingArchive archive = OpenRecordingArchive(replay);
    replay = archive.replay;
    recording.job = std::move(archive.job);
  }
  Plovia::ReplaySerializer serializer;
  serializer.LoadBuffer(replay, recording.file);
  GetCloudsInfoFromRecordingData(serializer, recording.sources, recording.dataType,
                                 recording.arrayed, recording.frames);
  recording.tags = SanitizeScannerNames(recording.sources);
  return recording;
}
