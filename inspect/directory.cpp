// SPDX-License-Identifier: MIT
// What directories of surfaces tell.
#include <algorithm>
#include <map>

#include "formats/directory/reader.h"
#include "inspect/findings.h"
#include "numbers.h"
#include "wholefile.h"

namespace {

constexpr Orv::Operation kOperation{"inspection", "DescribeDirectory"};

std::vector<std::string> ListFiles(const std::string& path) {
  try {
    return ListFileNames(path, kOperation, &zAllocator::Default());
  } catch (const Orv::Exception& failure) {
    kOperation.Fail(failure.Status(), "The directory cannot be listed");
  }
}

// Whose file a name says that it is.
struct FramePlace {
  zSize frame = 0;
  std::string source;
};

// Of a name that does not tell it, the name itself as the source.
FramePlace PlaceOf(const std::string& name) {
  const auto parts = ParseFrameFileName(name);
  const bool told = parts && !parts->behind.empty() &&
                    std::ranges::all_of(parts->index, [](char c) { return c >= '0' && c <= '9'; });
  if (!told) return {0, name};
  return {static_cast<zSize>(parseInteger(std::string(parts->index))), std::string(parts->tag)};
}

FileFacts DescribeFile(const std::string& path, const FramePlace& place,
                       const Findings& directory) {
  FileFacts facts;
  facts.path = path;
  facts.kind = FileKind::sur;
  const auto index = static_cast<z32u>(place.frame);
  const ScanVisitor visit = [&](zSize, z32u, const TaggedScan& scan) {
    if (directory.visit) directory.visit(place.frame, index, {place.source, {}, scan.scan});
  };
  Findings findings(facts, visit, directory.progress);
  try {
    facts.size = SizeOf(path);
    zBytes bytes;
    ReadFileBuffer(path, bytes);
    DescribeScanFile(bytes, findings);
  } catch (const Orv::Exception& failure) {
    findings.Problem({}, "the file cannot be read: %s", failure.what());
  }
  for (PlacedScan& scan : facts.scans) {
    scan.frame = place.frame;
    scan.index = index;
    scan.source = place.source;
  }
  return facts;
}

}  // namespace

void DescribeDirectory(const std::string& path, Findings& findings) {
  FileFacts& facts = findings.facts;
  try {
    static_cast<void>(OpenSurfaceDirectory(path, &zAllocator::Default()));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    findings.Warn("refused", "a conversion refuses the directory: %s", failure.what());
  }
  facts.size = 0;
  std::map<std::string, zSize> notes;  // and how many files have them
  for (const std::string& name : ListFiles(path)) {
    FileFacts file = DescribeFile(PathInDirectory(path, name), PlaceOf(name), findings);
    facts.members.push_back({name, file.size});
    facts.size = *facts.size + file.size.value_or(0);
    for (const std::string& note : file.notes) ++notes[note];
    for (PlacedScan& scan : file.scans) {
      facts.frames = std::max(facts.frames, scan.frame + 1);
      facts.scans.push_back(std::move(scan));
    }
    for (const Problem& problem : file.problems) {
      findings.Problem(problem.offset, "%s: %s", name, problem.text);
    }
    findings.progress.AddBytes(file.size.value_or(0));
  }
  for (const auto& [note, files] : notes) {
    findings.Note("%zu of %zu files: %s", files, facts.members.size(), note);
  }
}
