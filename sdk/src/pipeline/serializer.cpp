// SPDX-License-Identifier: MIT
#include <algorithm>
#include <new>
#include <stdexcept>

#include "core/library.h"
#include "message/message.h"
#include "pipeline/replay_reader.h"
#include "pipeline/replay_writer.h"
#include "pipeline/summary_check.h"
#include "sdk/pipeline.h"

using sdk::replay::FrameContent;
using sdk::replay::ReplayReader;

zStatus PloviaLib_Construct(PloviaLib* library) noexcept { return sdk::StartLibrary(library); }

namespace Plovia {

namespace {

[[noreturn]] void ThrowNoMemory(const char* function) {
  throw Orv::Exception(__LINE__, "pipeline", zERROR_MEMORY, function,
                       "There is not enough memory for the recording stream");
}

// Runs an operation on a stream: where a stream makes the standard library give up, that is told
// as an Orv::Exception too.
template <class Operation>
auto Guarded(const char* function, const Operation& operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    ThrowNoMemory(function);
  } catch (const std::length_error&) {
    ThrowNoMemory(function);
  }
}

[[noreturn]] void ThrowState(const char* function, const char* reason) {
  throw Orv::Exception(__LINE__, "pipeline", zERROR_PARAMETER, function, reason);
}

}  // namespace

namespace {

void CheckPayloads(ReplayReader& reader, sdk::replay::DamageLog& log) {
  for (zSize i = 0; i < reader.Index().messages.size(); ++i) {
    sdk::replay::RunStep(&log, [&] { static_cast<void>(reader.ReadMessage(i)); });
  }
}

}  // namespace

std::vector<ReplayProblem> CheckReplay(std::span<const z8u> replay) {
  return Guarded("Plovia::CheckReplay", [&] {
    sdk::replay::DamageLog log(kMostReplayProblems);
    try {
      ReplayReader reader(replay, nullptr, &log);
      CheckPayloads(reader, log);
      sdk::replay::CheckSummary(replay, log);
    } catch (const sdk::replay::Damage&) {
      // There is no room for more.
    }
    // Damage that several steps meet counts once.
    std::vector<ReplayProblem> problems = log.TakeProblems();
    const auto offset = [](const ReplayProblem& problem) {
      return std::pair(problem.offset, problem.inChunk);
    };
    std::ranges::stable_sort(problems, {}, offset);
    problems.erase(std::unique(problems.begin(), problems.end()), problems.end());
    return problems;
  });
}

class ReplaySerializer::Reader : public ReplayReader {
 public:
  using ReplayReader::ReplayReader;
};

struct ReplaySerializer::Content {
  std::vector<ReplayScannerInfo> scanners;
  std::vector<FrameContent> frames;
};

ReplaySerializer::ReplaySerializer() : content_(std::make_unique<Content>()) {}
ReplaySerializer::~ReplaySerializer() = default;
ReplaySerializer::ReplaySerializer(ReplaySerializer&&) noexcept = default;
ReplaySerializer& ReplaySerializer::operator=(ReplaySerializer&&) noexcept = default;

ReplaySerializer::Reader& ReplaySerializer::Loaded(const char* function) const {
  if (reader_ == nullptr) ThrowState(function, "No recording stream has been loaded");
  return *reader_;
}

void ReplaySerializer::LoadBuffer(std::span<const z8u> replay, std::shared_ptr<const void> owner) {
  reader_ = Guarded("Plovia::ReplaySerializer::LoadBuffer",
                    [&] { return std::make_unique<Reader>(replay, std::move(owner)); });
}

ReplayInfo ReplaySerializer::GetReplayInfo() const {
  return ReplayInfo(Loaded("Plovia::ReplaySerializer::GetReplayInfo").Index().classic);
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
  Reader& reader = Loaded(kFunction);
  return Guarded(kFunction,
                 [&] { return reader.Index().classic ? reader.Frame(which) : reader.NextFrame(); });
}

void ReplaySerializer::WriteScannerInfo(const std::vector<ReplayScannerInfo>& scanners) {
  content_->scanners = scanners;
}

void ReplaySerializer::WriteIndexInfo(z32u index) { content_->frames.push_back({index, {}}); }

void ReplaySerializer::WriteData(Orv::Object<void*> message) {
  constexpr const char* kFunction = "Plovia::ReplaySerializer::WriteData";
  if (MxMsg_Kind(message.Get()) == MxKind::none) ThrowState(kFunction, "There is no message");
  if (content_->frames.empty()) ThrowState(kFunction, "A message needs a frame to belong to");
  content_->frames.back().messages.push_back(std::move(message));
}

zBytes ReplaySerializer::GetReplayFile(bool classic) const {
  return Guarded("Plovia::ReplaySerializer::GetReplayFile",
                 [&] { return GetReplayStream(classic).ToBytes(); });
}

ReplayStream ReplaySerializer::GetReplayStream(bool classic) const {
  return Guarded("Plovia::ReplaySerializer::GetReplayFile", [&] {
    return sdk::replay::WriteReplay(content_->scanners, content_->frames, classic);
  });
}

}  // namespace Plovia
