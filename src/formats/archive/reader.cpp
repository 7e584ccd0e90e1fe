// SPDX-License-Identifier: MIT
#include "formats/archive/reader.h"

#include <algorithm>

#include "formats/archive/document.h"
#include "formats/archive/layout.h"
#include "sdk/archive.h"
#include "statuses.h"

namespace {

constexpr const char* kUnit = "surfacefileconverter";
constexpr Orv::Operation kGetReplayData{kUnit, "GetReplayData"};
constexpr Orv::Operation kGetResourceData{kUnit, "GetResourceData"};
constexpr Orv::Operation kGetScannerConfig{kUnit, "GetScannerConfig"};

// What is longer names no member of ours.
constexpr zSize kLongestName = 511;

}  // namespace

ArchiveWalk::ArchiveWalk(zSourcePtr archive, const Orv::Operation& operation)
    : archive_(std::move(archive)) {
  operation.Require(zTar_Open(tar_.Out(), archive_, &zAllocator::Default()),
                    "Failed to construct zTar");
}

std::optional<ArchiveMember> ArchiveWalk::Next() {
  for (;;) {
    zTarMember found;
    end_ = zTar_Next(tar_.Get(), &found);
    if (end_ != zOK) return std::nullopt;
    if (found.type != zTAR_FILE || found.name.size() > kLongestName) continue;
    ArchiveMember member{std::move(found.name), found.offset, found.size, zOK, nullptr};
    if (found.offset > archive_->Size() || found.size > archive_->Size() - found.offset) {
      member.status = zERROR_STREAM;
    } else {
      member.content = std::make_shared<zSourceWindow>(archive_, found.offset, found.size);
    }
    return member;
  }
}

std::vector<ArchiveMember> FindMembers(zSourcePtr archive, std::span<const std::string> names,
                                       const Orv::Operation& operation) {
  std::vector<ArchiveMember> found;
  for (const std::string& name : names) found.push_back({name, 0, 0, zOK, nullptr});
  if (archive == nullptr || archive->Size() == 0) return found;
  ArchiveWalk walk(std::move(archive), operation);
  while (const std::optional<ArchiveMember> member = walk.Next()) {
    const auto wanted = std::ranges::find(found, member->name, &ArchiveMember::name);
    if (wanted != found.end() && wanted->status == zOK) *wanted = *member;
  }
  return found;
}

RecordingArchive OpenRecordingArchive(zSourcePtr archive) {
  const std::string names[] = {kReplayMember, kJobMember};
  std::vector<ArchiveMember> members = FindMembers(std::move(archive), names, kGetReplayData);
  const ArchiveMember& replay = members.front();
  kGetReplayData.Require(replay.status, "Failed to read the replay buffer");
  if (replay.IsEmpty()) kGetReplayData.Fail(kBadInput, "The replay buffer is empty");
  return {replay.content, std::move(members.back())};
}

zSourcePtr GetResourceData(const ArchiveMember& member) {
  kGetResourceData.Require(member.status, "Failed to read the resource buffer (%s)", member.name);
  return member.content;
}

nlohmann::json GetScannerConfig(zSourcePtr job, std::span<const char* const> scannerIds) {
  std::vector<std::string> names;
  for (const char* id : scannerIds) {
    names.push_back(std::string(kScannerFolder) + id + kScannerConfig);
  }
  for (const ArchiveMember& member : FindMembers(std::move(job), names, kGetResourceData)) {
    const zSourcePtr content = GetResourceData(member);
    if (member.IsEmpty()) continue;
    nlohmann::json document = ParseBounded(*content, kGetScannerConfig);
    nlohmann::json& scanner = document["orv:scanner"];
    if (!scanner.empty()) return std::move(scanner);
  }
  return nullptr;
}
