// SPDX-License-Identifier: MIT
#include "formats/recording/recording.h"

#include <algorithm>
#include <numeric>

#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "GetCloudsInfoFromRecordingData"};

void ReadSegments(Recording& recording, zSize sourceCount) {
  Plovia::ReplaySerializer& replay = recording.replay;
  for (z64u segment = 0; segment < replay.SegmentCount(); ++segment) {
    replay.LoadDataIndexFiles();
    const zSize frameCount = replay.ReadIndexInfo().size();
    for (zSize i = 0; i < frameCount; ++i) {
      const Plovia::ReplayFrame frame = replay.ReadData(sourceCount);
      if (frame.messageCount != sourceCount) {
        kOperation.Fail(kBadInput,
                        "The message count in the frame is not equal to the source count");
      }
      recording.frames.push_back(frame);
    }
  }
  if (recording.frames.empty()) {
    kOperation.Fail(kBadInput, "The imported recording data is empty");
  }
}

// All messages, in the order in which they stand in the frame.
void ReadFrames(Recording& recording) {
  const zSize frameCount = recording.replay.ReadIndexInfo().size();
  if (frameCount == 0) kOperation.Fail(kBadInput, "There is no frame data in the recording data");
  zSize most = 0;
  for (zSize i = 0; i < frameCount; ++i) {
    recording.frames.push_back(recording.replay.ReadData(i));
    most = std::max(most, recording.frames.back().messageCount);
  }
  recording.places.resize(most);
  std::iota(recording.places.begin(), recording.places.end(), zSize{0});
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

void GetCloudsInfoFromRecordingData(Recording& recording) {
  const std::vector<Plovia::ReplayScannerInfo> scanners = recording.replay.ReadScannerInfo();
  if (scanners.size() != 1) {
    kOperation.Fail(kBadInput,
                    "The scanners' number is not equal to 1 in the inputted recording data");
  }
  const std::vector<ReplaySourceInfo>& all = scanners.front().sources;
  for (zSize place = 0; place < all.size(); ++place) {
    const ReplaySourceInfo& source = all[place];
    if (!IsExportable(source)) continue;
    recording.dataType = static_cast<DataSourceType>(source.dataType);
    recording.arrayed = source.arrayed;
    recording.sources.push_back(source);
    recording.places.push_back(place);
  }
  if (recording.sources.empty()) kOperation.Fail(kBadInput, "Unsupported data format");

  if (recording.replay.GetReplayInfo().IsClassic()) {
    ReadFrames(recording);
  } else {
    if (recording.replay.SegmentCount() == 0)
      kOperation.Fail(kBadInput, "The current version doesn't support segments");
    ReadSegments(recording, all.size());
  }
}

zSize Recording::MessageCount(zSize frame) const {
  return static_cast<zSize>(std::ranges::count_if(
      places, [&](zSize place) { return place < frames[frame].messageCount; }));
}

std::optional<z64u> Recording::NumberOf(zSize frame, zSize source) const {
  if (source >= places.size() || places[source] >= frames[frame].messageCount) return std::nullopt;
  return frames[frame].firstMessage + places[source];
}

Orv::Object<void*> Recording::Message(zSize frame, zSize source) const {
  const std::optional<z64u> number = NumberOf(frame, source);
  return number ? replay.ReadMessage(*number) : Orv::Object<void*>();
}

std::optional<Plovia::SurfaceStream> Recording::Surface(zSize frame, zSize source) const {
  const std::optional<z64u> number = NumberOf(frame, source);
  return number ? replay.OpenSurface(*number) : std::nullopt;
}

zSize Recording::ItemCount(zSize frame, zSize source) const {
  const std::optional<z64u> number = NumberOf(frame, source);
  return number ? replay.ItemCount(*number) : 0;
}

Recording OpenRecording(FileType fileType, zSourcePtr file, Check check) {
  Recording recording;
  recording.fileType = fileType;
  zSourcePtr replay = std::move(file);
  if (fileType == OVREC) {
    RecordingArchive archive = OpenRecordingArchive(std::move(replay));
    replay = std::move(archive.replay);
    recording.job = std::move(archive.job);
  }
  if (check == Check::whole) {
    recording.replay.LoadBuffer(std::move(replay));
  } else {
    recording.replay.LoadHeads(std::move(replay));
  }
  GetCloudsInfoFromRecordingData(recording);
  recording.tags = SanitizeScannerNames(recording.sources);
  return recording;
}
