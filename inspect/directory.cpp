// SPDX-License-Identifier: MIT
// What directories of surfaces tell.
#include <algorithm>
#include <map>

#include "formats/directory/reader.h"
#include "inspect/conversion.h"
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

// What a conversion does with the files by their names: some it may take more than once, or never.
class Taking {
 public:
  explicit Taking(const std::string& path) {
    const SurfaceDirectory directory = OpenSurfaceDirectory(path, &zAllocator::Default());
    const auto frames = FilesByFrame(directory);
    std::map<std::string, zSize> uses;
    zSize scans = 0;
    zSize uneven = 0;
    for (const std::vector<std::string>& frame : frames) {
      for (const std::string& file : frame) ++uses[file];
      scans += frame.size();
      if (frame.size() != directory.tags.size()) ++uneven;
    }
    for (const std::string& name : directory.files) Tell(name, uses[PathInDirectory(path, name)]);
    if (files_.empty()) return;
    whole_ = {
        {"scans-by-names",
         Orv::Format("a conversion makes a recording of %zu scans of the %zu files; %zu of "
                     "its %zu frames do not have one for each of the %zu sources",
                     scans, directory.files.size(), uneven, frames.size(), directory.tags.size())}};
  }

  // About the whole, then about each file that does not come in once.
  std::vector<Caution> All() const {
    std::vector<Caution> all = whole_;
    for (const auto& [name, caution] : files_) all.push_back(caution);
    return all;
  }
  // About one file, if there is anything.
  std::vector<Caution> Of(const std::string& name) const {
    const auto file = files_.find(name);
    return file == files_.end() ? std::vector<Caution>() : std::vector{file->second};
  }

 private:
  void Tell(const std::string& name, zSize uses) {
    if (uses == 0) files_[name] = {"file-dropped", name + " does not come into the recording"};
    if (uses > 1) {
      files_[name] = {"file-doubled",
                      Orv::Format("%s comes into the recording %zu times", name, uses)};
    }
  }

  std::vector<Caution> whole_;
  std::map<std::string, Caution> files_;
};

FileFacts DescribeFile(const std::string& path, const FramePlace& place,
                       const std::vector<Caution>& cautions, const Findings& directory) {
  FileFacts facts;
  facts.path = path;
  facts.kind = FileKind::sur;
  const auto index = static_cast<z32u>(place.frame);
  const ScanVisitor visit = [&](zSize, z32u, const TaggedScan& scan) {
    if (!directory.visit) return;
    TaggedScan placed{place.source, {}, scan.scan};
    std::ranges::copy(cautions, std::back_inserter(placed.scan.cautions));
    directory.visit(place.frame, index, placed);
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

void DescribeDirectory(const std::string& path, bool check, Findings& findings) {
  FileFacts& facts = findings.facts;
  std::optional<Taking> taking;
  try {
    facts.cautions = taking.emplace(path).All();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    if (!check) findings.Warn("refused", "a conversion refuses the directory: %s", failure.what());
  }
  facts.size = 0;
  std::map<std::string, zSize> notes;  // and how many files have them
  for (const std::string& name : ListFiles(path)) {
    FileFacts file = DescribeFile(PathInDirectory(path, name), PlaceOf(name),
                                  taking ? taking->Of(name) : std::vector<Caution>(), findings);
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
  if (check && facts.problems.empty()) findings.Refuse(RefusalOfDirectory(path));
}
