// SPDX-License-Identifier: MIT
// What recording archives tell.
#include "sdk/archive.h"
#include "inspect/findings.h"
#include "surfacefileconverter/boundeddocument.h"

namespace {

constexpr zSize kNameCapacity = 512;
constexpr z64u kBlockSize = 512;  // contents are filled up to whole blocks

using Handle = Orv::Object<void*>;

void Require(zStatus status) {
  if (status != zOK) {
    throw Orv::Exception(__LINE__, "inspection", status, "DescribeArchive",
                         "The archive cannot be opened");
  }
}

// Gives each file member to `use(name, content)`, where it lies. Tells where the archive is
// damaged; `what` names it.
template <class Use>
void ForEachMember(std::span<const z8u> archive, const char* what, z64u start, Findings& findings,
                   const Use& use) {
  Handle stream;
  Handle tar;
  zAlloc alloc = &zAllocator::Default();
  Require(zMemory_Construct(stream.Out(), alloc));
  Require(zMemory_Attach(stream.Get(), archive.data(), 0, archive.size(), archive.size()));
  const zStatus opened = zTar_Construct(tar.Out(), stream.Get(), zTAR_READ, alloc);
  if (opened == zERROR_FORMAT) return findings.Problem(start, "%s is no archive", what);
  Require(opened);
  z64u end = 0;  // of the last member whose place is known
  for (;;) {
    char name[kNameCapacity];
    z32s type = zTAR_OTHER;
    z64u size = 0;
    const zStatus status = zTar_BeginRead(tar.Get(), name, sizeof name, &type, &size);
    if (status == zERROR_NOT_FOUND) return;
    if (status != zOK) {
      return findings.Problem(start + end, "%s is damaged as an archive, here or behind", what);
    }
    if (type != zTAR_FILE) continue;
    const void* content = nullptr;
    if (zTar_View(tar.Get(), &content, size) != zOK) {
      return findings.Problem(start + end, "the member \"%s\" of %s is cut", name, what);
    }
    const auto* bytes = static_cast<const z8u*>(content);
    if (size > 0) {
      end = static_cast<z64u>(bytes - archive.data()) +
            (size + kBlockSize - 1) / kBlockSize * kBlockSize;
    }
    use(std::string(name), std::span<const z8u>(bytes, static_cast<zSize>(size)));
  }
}

// Of the documents, a conversion reads those of scanners, and sets bounds to them.
void ParseDocument(const std::string& name, std::span<const z8u> content) {
  if (name.starts_with("scan/") && name.ends_with("/config.json")) {
    static_cast<void>(ParseBounded(zBytes(content.begin(), content.end()), "DescribeArchive"));
    return;
  }
  const auto keepNothing = [](int, nlohmann::json::parse_event_t, nlohmann::json&) {
    return false;
  };
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
  constexpr std::string_view kReplay = "replay/buffer";
  constexpr std::string_view kJob = "jobs/live/_live.ovjob";
  std::span<const z8u> replay;
  bool hasJob = false;
  const auto offset = [&](std::span<const z8u> content) {
    return content.empty() ? 0 : static_cast<z64u>(content.data() - bytes.data());
  };
  ForEachMember(bytes, "the file", 0, findings,
                [&](const std::string& name, std::span<const z8u> content) {
                  findings.facts.members.push_back({name, content.size()});
                  if (name == kReplay) replay = content;
                  if (check && IsDocument(name)) {
                    CheckDocument(name, content, offset(content), findings);
                  }
                  if (name != kJob || content.empty()) return;
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
    findings.Note("there is no job (\"%s\"), so it cannot be exported to .csv", kJob);
  }
  if (replay.empty()) {
    return findings.Problem({}, "there is no recording (\"%s\") in the archive", kReplay);
  }
  DescribeRecording(replay, offset(replay), check, findings);
}
