// SPDX-License-Identifier: MIT
// What recording archives tell.
#include "filesource.h"
#include "formats/archive/document.h"
#include "formats/archive/layout.h"
#include "formats/archive/reader.h"
#include "inspect/findings.h"

namespace {

constexpr z64u kBlockSize = 512;  // contents are filled up to whole blocks

constexpr Orv::Operation kOperation{"inspection", "DescribeArchive"};

// Nothing for what is no archive.
std::optional<ArchiveWalk> OpenArchive(zSourcePtr archive) {
  try {
    return ArchiveWalk(std::move(archive), kOperation);
  } catch (const Orv::Exception& failure) {
    if (failure.Status() == zERROR_FORMAT) return std::nullopt;
    throw;
  }
}

// Gives each file, where it lies, to `use`. Tells where the archive, which begins at `start` of its
// file, is damaged; `what` names it.
template <class Use>
void ForEachMember(const zSourcePtr& archive, const char* what, z64u start, Findings& findings,
                   const Use& use) {
  std::optional<ArchiveWalk> walk = OpenArchive(archive);
  if (!walk) return findings.Problem(start, "%s is no archive", what);
  z64u end = 0;  // of the last member whose place is known
  while (const std::optional<ArchiveMember> member = walk->Next()) {
    if (member->status != zOK) {
      return findings.Problem(start + end, "the member \"%s\" of %s is cut", member->name, what);
    }
    if (!member->IsEmpty()) {
      end = member->offset + (member->size + kBlockSize - 1) / kBlockSize * kBlockSize;
    }
    use(*member);
  }
  if (walk->End() != zERROR_NOT_FOUND) {
    findings.Problem(start + end, "%s is damaged as an archive, here or behind", what);
  }
}

// Of the documents, a conversion reads those of scanners, and sets bounds to them.
void ParseDocument(const ArchiveMember& document) {
  if (document.name.starts_with(kScannerFolder) && document.name.ends_with(kScannerConfig)) {
    static_cast<void>(ParseBounded(*document.content, kOperation));
    return;
  }
  const zBytes content = ReadAll(*document.content);
  const auto keepNothing = [](int, auto, const auto&) { return false; };
  [[maybe_unused]] const nlohmann::json nothing =
      nlohmann::json::parse(content.begin(), content.end(), keepNothing);
}

void CheckDocument(const ArchiveMember& document, z64u archiveStart, Findings& findings) {
  const std::string& name = document.name;
  if (!name.ends_with(".json")) return;
  const z64u start = document.IsEmpty() ? 0 : archiveStart + document.offset;
  try {
    ParseDocument(document);
  } catch (const nlohmann::json::parse_error& error) {
    findings.Problem(start + std::max<zSize>(error.byte, 1) - 1, "\"%s\" is no JSON document",
                     name);
  } catch (const nlohmann::json::exception&) {
    findings.Problem(start, "\"%s\" is no JSON document", name);
  } catch (const Orv::Exception& failure) {
    findings.Problem(start, "\"%s\": %s", name, failure.what());
  }
}

}  // namespace

void DescribeArchive(const zSourcePtr& file, Depth depth, Findings& findings) {
  const bool check = depth == Depth::check;
  ArchiveMember replay;
  bool hasJob = false;
  ForEachMember(file, "the file", 0, findings, [&](const ArchiveMember& member) {
    findings.facts.members.push_back({member.name, member.size});
    if (member.name == kReplayMember) replay = member;
    if (check) CheckDocument(member, 0, findings);
    if (member.name != kJobMember || member.IsEmpty()) return;
    hasJob = true;
    if (!check) return;
    ForEachMember(
        member.content, "the job", member.offset, findings,
        [&](const ArchiveMember& inner) { CheckDocument(inner, member.offset, findings); });
  });
  if (!hasJob) {
    findings.Note("there is no job (\"%s\"), so it cannot be exported to .csv", kJobMember);
  }
  if (replay.IsEmpty()) {
    return findings.Problem({}, "there is no recording (\"%s\") in the archive", kReplayMember);
  }
  DescribeRecording(replay.content, replay.offset, depth, findings);
}
