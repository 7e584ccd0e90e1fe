// SPDX-License-Identifier: MIT
#include <new>
#include <stdexcept>

#include "message/message.h"
#include "pipeline/replay_reader.h"
#include "pipeline/replay_summary.h"
#include "pipeline/replay_writer.h"
#include "sdk/pipeline.h"

using sdk::replay::ReplayReader;
using sdk::replay::ReplayWriter;

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

ReplayWriter& ReplaySerializer::Begun(const char* function) const {
  if (writer_ == nullptr) {
    Orv::Operation{kUnit, function}.Fail(zERROR_PARAMETER, "No recording stream has been begun");
  }
  return *writer_;
}

void ReplaySerializer::LoadBuffer(zSourcePtr replay) {
  reader_ = Guarded({kUnit, "Plovia::ReplaySerializer::LoadBuffer"},
                    [&] { return std::make_unique<ReplayReader>(std::move(replay)); });
}

void ReplaySerializer::LoadDamaged(zSourcePtr replay, std::vector<ReplayProblem>& problems,
                                   const MessageVisitor& visit) {
  reader_ = Guarded({kUnit, "Plovia::ReplaySerializer::LoadDamaged"}, [&] {
    return std::make_unique<ReplayReader>(std::move(replay), problems, visit);
  });
}

ReplaySummary ReplaySerializer::LoadFirstFrame(zSourcePtr replay) {
  return Guarded({kUnit, "Plovia::ReplaySerializer::LoadFirstFrame"}, [&] {
    const ReplaySummary summary = sdk::replay::ReadSummary(*replay);
    reader_ = std::make_unique<ReplayReader>(std::move(replay), sdk::replay::Extent::firstFrame);
    return summary;
  });
}

void ReplaySerializer::LoadHeads(zSourcePtr replay) {
  reader_ = Guarded({kUnit, "Plovia::ReplaySerializer::LoadHeads"}, [&] {
    return std::make_unique<ReplayReader>(std::move(replay), sdk::replay::Extent::heads);
  });
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

Orv::Object<void*> ReplaySerializer::ReadMessage(z64u number) const {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::ReadMessage";
  ReplayReader& reader = Loaded(kFunction);
  return Guarded({kUnit, kFunction}, [&] { return reader.ReadMessage(number); });
}

std::optional<SurfaceStream> ReplaySerializer::OpenSurface(z64u number) const {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::OpenSurface";
  ReplayReader& reader = Loaded(kFunction);
  return Guarded({kUnit, kFunction}, [&] { return reader.OpenSurface(number); });
}

zSize ReplaySerializer::ItemCount(z64u number) const {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::ItemCount";
  ReplayReader& reader = Loaded(kFunction);
  return Guarded({kUnit, kFunction}, [&] { return reader.ItemCount(number); });
}

void ReplaySerializer::BeginReplay(zStream stream, bool classic) {
  writer_ = std::make_unique<ReplayWriter>(stream, classic);
}

void ReplaySerializer::WriteScannerInfo(const std::vector<ReplayScannerInfo>& scanners) {
  Begun("Plovia::ReplaySerializer::WriteScannerInfo").PutScanners(scanners);
}

void ReplaySerializer::WriteIndexInfo(z32u index) {
  Begun("Plovia::ReplaySerializer::WriteIndexInfo").BeginFrame(index);
}

void ReplaySerializer::WriteData(const Orv::Object<void*>& message) {
  constexpr Orv::Operation kOperation{kUnit, "Plovia::ReplaySerializer::WriteData"};
  const auto* written = sdk::As<sdk::Message>(message.Get());
  if (written == nullptr) kOperation.Fail(zERROR_PARAMETER, "There is no message");
  Guarded(kOperation, [&] { Begun(kOperation.function).PutMessage(*written); });
}

void ReplaySerializer::WriteData(const SurfaceStream& surface) {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::WriteData";
  Guarded({kUnit, kFunction}, [&] { Begun(kFunction).PutSurface(surface); });
}

void ReplaySerializer::EndReplay() {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::EndReplay";
  Guarded({kUnit, kFunction}, [&] { Begun(kFunction).Finish(); });
  writer_.reset();
}

}  // namespace Plovia
