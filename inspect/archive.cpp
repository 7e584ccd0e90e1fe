// SPDX-License-Identifier: MIT
// What recording archives tell.
#include "formats/archive/document.h"
#include "formats/archive/layout.h"
#include "formats/archive/reader.h"
#include "inspect/findings.h"

namespace {

constexpr z64u kBlockSize = 512;  // contents are filled up to whole blocks

constexpr Orv::Operation kOperation{"inspection", "DescribeArchive"};

// Nothing for what is no archive.
std::optional<ArchiveWalk> OpenArchive(std::span<const z8u> archive) {
  try {
    return ArchiveWalk(archive, kOperation);
  } catch (const Orv::Exception& failure) {
    if (failure.Status() == zERROR_FORMAT) return std::nullopt;
    kOperation.Fail(failure.Status(), "The archive cannot be opened");
  }
}

// Gives each file to `use(name, content)`, where it lies. Tells where the archive is damaged;
// `what` names it.
template <class Use>
void ForEachMember(std::span<const z8u> archive, const char* what, z64u start, Findings& findings,
                   const Use& use) {
  std::optional<ArchiveWalk> walk = OpenArchive(archive);
  if (!walk) return findings.Problem(start, "%s is no archive", what);
  z64u end = 0;  // of the last member whose place is known
  while (const std::optional<ArchiveMember> member = walk->Next()) {
    if (member->status != zOK) {
      return findings.Problem(start + end, "the member \"%s\" of %s is cut", member->name, what);
    }
    const std::span<const z8u> content = member->content;
    if (!content.empty()) {
      end = static_cast<z64u>(content.data() - archive.data()) +
            (content.size() + kBlockSize - 1) / kBlockSize * kBlockSize;
    }
    use(member->name, content);
  }
  if (walk->End() != zERROR_NOT_FOUND) {
    findings.Problem(start + end, "%s is damaged as an archive, here or behind", what);
  }
}

// Of the documents, a conversion reads those of scanners, and sets bounds to them.
void ParseDocument(const std::string& name, std::span<const z8u> content) {
  if (name.starts_with(kScannerFolder) && name.ends_with(kScannerConfig)) {
    static_cast<void>(ParseBounded(content, kOperation));
    return;
  }
  const auto keepNothing = [](int, auto, const auto&) { return false; };
  [[maybe_unused]] const nlohmann::json nothing =
      nlohmann::json::parse(content.begin(), content.end(), keepNothing);
}

void CheckDocument(const std::string& name, std::span<const z8u> content, z64u start,
                   Findings& findings) {
  try {
    ParseDocument(name, content);
  } catch (const nlohmann::json::parse_error& error) {
    findings.Problem(start + std::max<zSize>(error.byte, 1) - 1, "\"%s\" is no JSON document",
                     name);
  } catch (const nlohmann::json::exception&) {
    findings.Problem(start, "\"%s\" is no JSON document", name);
  } catch (const Orv::Exception& failure) {
    findings.Problem(start, "\"%s\": %s", name, failure.what());
  }
}

bool IsDocument(const std::string& name) { return name.ends_with(".json"); }

}  // namespace

void DescribeArchive(const zBytes& bytes, bool check, Findings& findings) {
  std::span<const z8u> replay;
  bool hasJob = false;
  const auto offset = [&](std::span<const z8u> content) {
    return content.empty() ? 0 : static_cast<z64u>(content.data() - bytes.data());
  };
  ForEachMember(bytes, "the file", 0, findings,
                [&](const std::string& name, std::span<const z8u> content) {
                  findings.facts.members.push_back({name, content.size()});
                  if (name == kReplayMember) replay = content;
                  if (check && IsDocument(name)) {
                    CheckDocument(name, content, offset(content), findings);
                  }
                  if (name != kJobMember || content.empty()) return;
                  hasJob = true;
                  if (!check) return;
                  const z64u start = offset(content);
                  ForEachMember(content, "the job", start, findings,
                                [&](const std::string& inner, std::span<const z8u> document) {
                                  if (!IsDocument(inner)) return;
                                  CheckDocument(inner, document, offset(document), findings);
                                });
                });
  if (!hasJob) {
    findings.Note("there is no job (\"%s\"), so it cannot be exported to .csv", kJobMember);
  }
  if (replay.empty()) {
    return findings.Problem({}, "there is no recording (\"%s\") in the archive", kReplayMember);
  }
  DescribeRecording(replay, offset(replay), check, findings);
}
