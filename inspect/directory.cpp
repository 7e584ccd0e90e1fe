// SPDX-License-Identifier: MIT
// What directories of surfaces tell.
#include <algorithm>
#include <map>

#include "filesource.h"
#include "formats/directory/reader.h"
#include "inspect/conversion.h"
#include "inspect/findings.h"
#include "numbers.h"

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

// One file, with its place in the recording, and with what is said of its name where it is shown.
FileFacts DescribeFile(const std::string& path, const FramePlace& place, const ScanVisitor& visit,
                       Progress& progress) {
  FileFacts facts;
  facts.path = path;
  facts.kind = FileKind::sur;
  const auto index = static_cast<z32u>(place.frame);
  ScanVisitor placed{
      [&](zSize, const std::string&) { return visit.Wants(place.frame, place.source); },
      {},
      visit.figures};
  if (visit.take) {
    placed.take = [&](zSize, z32u, const TaggedScan& scan) {
      visit.take(place.frame, index, {place.source, {}, scan.scan});
    };
  }
  Findings findings(facts, placed, progress);
  try {
    facts.size = SizeOf(path);
    DescribeScanFile(*OpenFile(path), findings);
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

// Gives the files that somebody wants to look at, with what is said of their names.
void Show(const std::string& path, const std::optional<Taking>& taking, Findings& findings) {
  if (!findings.visit.take) return;
  for (const StoredFile& file : findings.facts.members) {
    const FramePlace place = PlaceOf(file.name);
    if (!findings.visit.Wants(place.frame, place.source)) continue;
    const ScanVisitor cautious{findings.visit.wants,
                               [&](zSize frame, z32u index, const TaggedScan& scan) {
                                 TaggedScan told = scan;
                                 if (taking)
                                   std::ranges::copy(taking->Of(file.name),
                                                     std::back_inserter(told.scan.cautions));
                                 findings.visit.take(frame, index, told);
                               },
                               false};
    static_cast<void>(
        DescribeFile(PathInDirectory(path, file.name), place, cautious, findings.progress));
  }
}

}  // namespace

void DescribeDirectory(const std::string& path, Depth depth, Findings& findings) {
  const bool check = depth == Depth::check;
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
  const ScanVisitor measuring{findings.visit.wants, {}, findings.visit.figures};
  for (const std::string& name : ListFiles(path)) {
    FileFacts file =
        DescribeFile(PathInDirectory(path, name), PlaceOf(name), measuring, findings.progress);
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
  Show(path, taking, findings);
}
