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

constexpr zSize kNameCapacity = 512;

}  // namespace

ArchiveWalk::ArchiveWalk(std::span<const z8u> archive, const Orv::Operation& operation) {
  zAlloc alloc = &zAllocator::Default();
  operation.Require(zMemory_Construct(stream_.Out(), alloc), "Failed to construct zMemory");
  operation.Require(
      zMemory_Attach(stream_.Get(), archive.data(), 0, archive.size(), archive.size()),
      "Failed to attach a buffer to a stream");
  operation.Require(zTar_Construct(tar_.Out(), stream_.Get(), zTAR_READ, alloc),
                    "Failed to construct zTar");
}

std::optional<ArchiveMember> ArchiveWalk::Next() {
  for (;;) {
    char name[kNameCapacity];
    z32s type = zTAR_OTHER;
    ArchiveMember member;
    end_ = zTar_BeginRead(tar_.Get(), name, sizeof name, &type, &member.size);
    if (end_ != zOK) return std::nullopt;
    if (type != zTAR_FILE) continue;
    member.name = name;
    const void* content = nullptr;
    member.status = zTar_View(tar_.Get(), &content, static_cast<zSize>(member.size));
    if (member.status == zOK) {
      member.content = {static_cast<const z8u*>(content), static_cast<zSize>(member.size)};
    }
    return member;
  }
}

std::vector<ArchiveMember> FindMembers(std::span<const z8u> archive,
                                       std::span<const std::string> names,
                                       const Orv::Operation& operation) {
  std::vector<ArchiveMember> found;
  for (const std::string& name : names) found.push_back({name, 0, zOK, {}});
  if (archive.empty()) return found;
  ArchiveWalk walk(archive, operation);
  while (const std::optional<ArchiveMember> member = walk.Next()) {
    const auto wanted = std::ranges::find(found, member->name, &ArchiveMember::name);
    if (wanted != found.end() && wanted->status == zOK) *wanted = *member;
  }
  return found;
}

RecordingArchive OpenRecordingArchive(std::span<const z8u> archive) {
  const std::string names[] = {kReplayMember, kJobMember};
  std::vector<ArchiveMember> members = FindMembers(archive, names, kGetReplayData);
  const ArchiveMember& replay = members.front();
  kGetReplayData.Require(replay.status, "Failed to read the replay buffer");
  if (replay.content.empty()) kGetReplayData.Fail(kBadInput, "The replay buffer is empty");
  return {replay.content, std::move(members.back())};
}

std::span<const z8u> GetResourceData(const ArchiveMember& member) {
  kGetResourceData.Require(member.status, "Failed to read the resource buffer (%s)", member.name);
  return member.content;
}

nlohmann::json GetScannerConfig(std::span<const z8u> job, std::span<const char* const> scannerIds) {
  std::vector<std::string> names;
  for (const char* id : scannerIds) {
    names.push_back(std::string(kScannerFolder) + id + kScannerConfig);
  }
  for (const ArchiveMember& member : FindMembers(job, names, kGetResourceData)) {
    const std::span<const z8u> content = GetResourceData(member);
    if (content.empty()) continue;
    nlohmann::json document = ParseBounded(content, kGetScannerConfig);
    nlohmann::json& scanner = document["orv:scanner"];
    if (!scanner.empty()) return std::move(scanner);
  }
  return nullptr;
}
