// SPDX-License-Identifier: MIT
#include <new>
#include <stdexcept>

#include "message/message.h"
#include "pipeline/replay_reader.h"
#include "pipeline/replay_writer.h"
#include "sdk/pipeline.h"

using sdk::replay::ReplayReader;

zStatus PloviaLib_Construct(PloviaLib* library) noexcept { return sdk::StartLibrary(library); }

namespace Plovia {

namespace {

constexpr const char* kUnit = "pipeline";

// Runs an operation on a stream: where a stream makes the standard library give up, that is told
// as an Orv::Exception too.
template <class Step>
auto Guarded(const Orv::Operation& operation, const Step& step) {
  constexpr const char* kNoMemory = "There is not enough memory for the recording stream";
  try {
    return step();
  } catch (const std::bad_alloc&) {
    operation.Fail(zERROR_MEMORY, kNoMemory);
  } catch (const std::length_error&) {
    operation.Fail(zERROR_MEMORY, kNoMemory);
  }
}

}  // namespace

ReplaySerializer::ReplaySerializer() = default;
ReplaySerializer::~ReplaySerializer() = default;
ReplaySerializer::ReplaySerializer(ReplaySerializer&&) noexcept = default;
ReplaySerializer& ReplaySerializer::operator=(ReplaySerializer&&) noexcept = default;

ReplayReader& ReplaySerializer::Loaded(const char* function) const {
  if (reader_ == nullptr) {
    Orv::Operation{kUnit, function}.Fail(zERROR_PARAMETER, "No recording stream has been loaded");
  }
  return *reader_;
}

void ReplaySerializer::LoadBuffer(std::span<const z8u> replay, std::shared_ptr<const void> owner) {
  reader_ = Guarded({kUnit, "Plovia::ReplaySerializer::LoadBuffer"},
                    [&] { return std::make_unique<ReplayReader>(replay, std::move(owner)); });
}

void ReplaySerializer::LoadDamaged(std::span<const z8u> replay,
                                   std::vector<ReplayProblem>& problems) {
  reader_ = Guarded({kUnit, "Plovia::ReplaySerializer::LoadDamaged"},
                    [&] { return std::make_unique<ReplayReader>(replay, problems); });
}

ReplayInfo ReplaySerializer::GetReplayInfo() const {
  return {Loaded("Plovia::ReplaySerializer::GetReplayInfo").Index().classic};
}

std::vector<ReplayScannerInfo> ReplaySerializer::ReadScannerInfo() const {
  return Loaded("Plovia::ReplaySerializer::ReadScannerInfo").Index().scanners;
}

z64u ReplaySerializer::SegmentCount() const {
  const auto& index = Loaded("Plovia::ReplaySerializer::SegmentCount").Index();
  return index.classic ? 0 : index.segments.size();
}

void ReplaySerializer::LoadDataIndexFiles() {
  Loaded("Plovia::ReplaySerializer::LoadDataIndexFiles").NextSegment();
}

std::vector<z32u> ReplaySerializer::ReadIndexInfo() const {
  return Loaded("Plovia::ReplaySerializer::ReadIndexInfo").FrameIndexes();
}

ReplayFrame ReplaySerializer::ReadData(z64u which) {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::ReadData";
  ReplayReader& reader = Loaded(kFunction);
  return Guarded({kUnit, kFunction},
                 [&] { return reader.Index().classic ? reader.Frame(which) : reader.NextFrame(); });
}

void ReplaySerializer::WriteScannerInfo(const std::vector<ReplayScannerInfo>& scanners) {
  scanners_ = scanners;
}

void ReplaySerializer::WriteIndexInfo(z32u index) { frames_.push_back({index, {}}); }

void ReplaySerializer::WriteData(Orv::Object<void*> message) {
  constexpr Orv::Operation kOperation{kUnit, "Plovia::ReplaySerializer::WriteData"};
  if (MxMsg_Kind(message.Get()) == MxKind::none) {
    kOperation.Fail(zERROR_PARAMETER, "There is no message");
  }
  if (frames_.empty()) {
    kOperation.Fail(zERROR_PARAMETER, "A message needs a frame to belong to");
  }
  frames_.back().messages.push_back(std::move(message));
}

zBytes ReplaySerializer::GetReplayFile(bool classic) const {
  return Guarded({kUnit, "Plovia::ReplaySerializer::GetReplayFile"},
                 [&] { return GetReplayStream(classic).ToBytes(); });
}

ReplayStream ReplaySerializer::GetReplayStream(bool classic) const {
  return Guarded({kUnit, "Plovia::ReplaySerializer::GetReplayFile"},
                 [&] { return sdk::replay::WriteReplay(scanners_, frames_, classic); });
}

}  // namespace Plovia
