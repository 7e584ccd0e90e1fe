// SPDX-License-Identifier: MIT
// What recordings tell.
#include <algorithm>
#include <map>
#include <tuple>

#include "formats/recording/recording.h"
#include "inspect/findings.h"
#include "surfacefileconverter/frameexport.h"

namespace {

// A source of any scanner, as its messages are told apart.
struct Source {
  std::string name;
  bool arrayed;
};

constexpr zSize kLongestTag = 256;

// Each of its scans bears the name, so a long one would take many times the memory of the file.
std::string TagOf(const ReplaySourceInfo& source) {
  const std::string& name = source.displayName;
  return name.size() <= kLongestTag ? name : name.substr(0, kLongestTag) + "...";
}

Scan ScanOf(MxMsg message) {
  constexpr Orv::Operation kOperation{"inspection", "DescribeRecording"};
  Scan scan;
  kOperation.Require(GetScan(message, scan), "There is not enough memory for the points of a scan");
  return scan;
}

std::vector<Source> SourcesOf(const RecordingFacts& facts) {
  std::vector<Source> sources;
  for (const Plovia::ReplayScannerInfo& scanner : facts.scanners) {
    for (const ReplaySourceInfo& source : scanner.sources) {
      sources.push_back({TagOf(source), source.arrayed != 0});
    }
  }
  return sources;
}

class RecordingDescriber {
 public:
  RecordingDescriber(std::span<const z8u> replay, Findings& findings)
      : findings_(findings), replay_(replay) {}

  // Tells of the recording up to the first damage; looks for damage to its end.
  void Run() {
    // Without an owner, a frame's arrays look into memory that serves the next frame again.
    serializer_.LoadDamaged(replay_, problems_);
    const bool classic = serializer_.GetReplayInfo().IsClassic();
    const z64u segments = serializer_.SegmentCount();
    if (IsReadable()) {
      RecordingFacts& facts = findings_.facts.recording.emplace();
      facts.classic = classic;
      facts.segments = segments;
      facts.scanners = serializer_.ReadScannerInfo();
      sources_ = SourcesOf(facts);
      WarnOfSources(facts);
    }
    if (classic) {
      ReadFrames();
    } else {
      for (z64u segment = 0; segment < segments; ++segment) {
        serializer_.LoadDataIndexFiles();
        ReadFrames();
      }
    }
    if (!IsReadable()) return;
    if (findings_.facts.frames == 0) findings_.Warn("frames-none", "there is no frame");
    if (unevenFrames_ > 0) {
      findings_.Warn("frames-uneven",
                     "%zu of %zu frames do not hold one message for each of the %zu sources",
                     unevenFrames_, findings_.facts.frames, sources_.size());
    }
  }

  // Whether nothing is wrong that keeps a frame from being read.
  bool IsReadable() const {
    return std::ranges::all_of(problems_, &Plovia::ReplayProblem::harmless);
  }

  // In the order of their offsets.
  std::vector<Plovia::ReplayProblem> TakeProblems() {
    std::ranges::stable_sort(problems_, {}, [](const Plovia::ReplayProblem& problem) {
      return std::tie(problem.offset, problem.inChunk);
    });
    return std::move(problems_);
  }

 private:
  void WarnOfSources(const RecordingFacts& facts) {
    if (facts.scanners.size() != 1) {
      findings_.Warn("scanners", "a conversion takes recordings of one scanner, this one has %zu",
                     facts.scanners.size());
    }
    for (const Plovia::ReplayScannerInfo& scanner : facts.scanners) {
      std::vector<ReplaySourceInfo> exportable;
      for (const ReplaySourceInfo& source : scanner.sources) {
        if (IsExportable(source)) {
          exportable.push_back(source);
        } else {
          findings_.Warn("source-left-out", "a conversion leaves out the source \"%s\"",
                         TagOf(source));
        }
      }
      WarnOfExports(exportable);
    }
  }

  // Of sources that a conversion takes, but does not write, or over each other.
  void WarnOfExports(const std::vector<ReplaySourceInfo>& sources) {
    const std::vector<zSize> written = WrittenSources(sources);
    for (zSize j = 0; j < sources.size(); ++j) {
      if (std::ranges::binary_search(written, j)) continue;
      const bool behindArray =
          !written.empty() && j > written.back() && sources[written.back()].arrayed != 0;
      findings_.Warn("source-not-written",
                     "a conversion into scan files leaves out the source \"%s\"%s",
                     TagOf(sources[j]), behindArray ? ", which stands behind an arrayed one" : "");
    }
    std::map<std::string, zSize> named;
    for (const std::string& tag : SanitizeScannerNames(sources)) ++named[tag];
    for (const auto& [tag, count] : named) {
      if (count == 1) continue;
      findings_.Warn(
          "source-names-equal",
          "%zu sources have the same name in files (\"%s\"): a conversion into scan files "
          "refuses the recording",
          count, tag.substr(0, kLongestTag));
    }
  }

  // Those of the current segment, or of all a classic recording.
  void ReadFrames() {
    const std::vector<z32u> indexes = serializer_.ReadIndexInfo();
    for (zSize i = 0; i < indexes.size(); ++i) {
      const Plovia::ReplayFrame frame = serializer_.ReadData(i);
      if (!IsReadable()) continue;
      if (frame.size() != sources_.size()) ++unevenFrames_;
      for (zSize j = 0; j < frame.size(); ++j) TakeMessage(indexes[i], j, frame[j].Get());
      ++findings_.facts.frames;
    }
  }

  // Messages stand in the order of their sources.
  void TakeMessage(z32u index, zSize position, MxMsg message) {
    const std::string& source = position < sources_.size() ? sources_[position].name : kUnknown;
    const zSize frame = findings_.facts.frames;
    if (MxMsg_Kind(message) != MxKind::array) {
      return TakeScan(frame, index, {source, {}, ScanOf(message)});
    }
    for (zSize item = 0; item < MxArrayMsg_Count(message); ++item) {
      TakeScan(frame, index, {source, item, ScanOf(MxArrayMsg_At(message, item))});
    }
  }

  void TakeScan(zSize frame, z32u index, TaggedScan scan) {
    const z64u bytes = scan.scan.Count() * zType_Size(zArray_ItemType(scan.scan.points.Get()));
    findings_.Take(frame, index, std::move(scan));
    findings_.progress.AddBytes(bytes);
  }

  const std::string kUnknown = "unknown";
  Findings& findings_;
  std::span<const z8u> replay_;
  std::vector<Plovia::ReplayProblem> problems_;
  Plovia::ReplaySerializer serializer_;
  std::vector<Source> sources_;
  zSize unevenFrames_ = 0;
};

void TellProblems(const std::vector<Plovia::ReplayProblem>& problems, z64u start,
                  Findings& findings) {
  for (const Plovia::ReplayProblem& problem : problems) {
    if (problem.inChunk) {
      findings.Problem(start + problem.offset, "in the compressed chunk here, at byte %llu: %s",
                       *problem.inChunk, problem.what);
    } else {
      findings.Problem(start + problem.offset, "%s", problem.what);
    }
  }
  if (findings.facts.problems.size() >= Plovia::kMostReplayProblems) {
    findings.Problem({}, "there may be more: the search ended here");
  }
}

}  // namespace

void DescribeRecording(std::span<const z8u> replay, z64u start, bool check, Findings& findings) {
  RecordingDescriber describer(replay, findings);
  try {
    describer.Run();
  } catch (const Orv::Exception& failure) {
    if (failure.Status() == zERROR_MEMORY) throw;
    // There are more problems than are told.
  }
  if (check || !describer.IsReadable()) TellProblems(describer.TakeProblems(), start, findings);
}
