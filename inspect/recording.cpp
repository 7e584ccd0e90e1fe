// SPDX-License-Identifier: MIT
// What recordings tell.
#include <algorithm>
#include <map>
#include <tuple>

#include "formats/recording/recording.h"
#include "inspect/findings.h"
#include "scan/surfacestream.h"
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

// The scans of a message, with their places in an array.
template <class Use>
void ForEachScan(MxMsg message, const Use& use) {
  constexpr Orv::Operation kOperation{"inspection", "DescribeRecording"};
  const auto take = [&](MxMsg item, std::optional<zSize> place) {
    Scan scan;
    kOperation.Require(GetScan(item, scan), "The message holds no scan");
    use(std::move(scan), place);
  };
  if (MxMsg_Kind(message) != MxKind::array) return take(message, std::nullopt);
  for (zSize item = 0; item < MxArrayMsg_Count(message); ++item) {
    take(MxArrayMsg_At(message, item), item);
  }
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
  explicit RecordingDescriber(Findings& findings) : findings_(findings) {}

  // Looks for damage to the end of a recording; tells of it up to the first damage.
  void Run(zSourcePtr replay) {
    serializer_.LoadDamaged(
        std::move(replay), problems_,
        {[&](z64u number, zObject message) { Measure(number, message); },
         [&](z64u number, const Plovia::SurfaceStream& surface) { Measure(number, surface); }});
    if (!IsWalkable()) return;
    PlaceFrames(TellOfSources());
    if (!IsReadable()) return;
    if (findings_.facts.frames == 0) findings_.Warn("frames-none", "there is no frame");
    if (unevenFrames_ > 0) {
      findings_.Warn("frames-uneven",
                     "%zu of %zu frames do not hold one message for each of the %zu sources",
                     unevenFrames_, findings_.facts.frames, sources_.size());
    }
  }

  // Tells of the first frame, and what the summary says of the others.
  void RunQuickly(zSourcePtr replay) try {
    const Plovia::ReplaySummary summary = serializer_.LoadFirstFrame(std::move(replay));
    RecordingFacts& facts = TellOfSources();
    const bool isEmpty = serializer_.SegmentCount() == 0 && serializer_.ReadIndexInfo().empty();
    if (!isEmpty) {
      if (!facts.classic) serializer_.LoadDataIndexFiles();
      const Plovia::ReplayFrame frame = serializer_.ReadData(0);
      for (zSize i = 0; i < frame.messageCount; ++i) {
        Measure(i, serializer_.ReadMessage(i).Get());
      }
      PlaceFrame(frame);
    }
    if (summary.frames) findings_.facts.frames = static_cast<zSize>(*summary.frames);
    if (summary.chunks) facts.segments = *summary.chunks;
    findings_.Note("only the summary and the first frame were read: nothing else was checked");
  } catch (const Orv::Exception& failure) {
    if (failure.Status() != zERROR_FORMAT) throw;
    findings_.Problem({}, "%s", failure.what());
  }

  // Reads the scans again that somebody wants to look at.
  void Show() {
    std::vector<PlacedScan>& scans = findings_.facts.scans;
    for (zSize i = 0, end = 0; i < scans.size(); i = end) {
      for (end = i + 1; end < scans.size() && numbers_[end] == numbers_[i];) ++end;
      if (!findings_.visit.Wants(scans[i].frame, scans[i].source)) continue;
      ForEachScan(serializer_.ReadMessage(numbers_[i]).Get(),
                  [&](Scan scan, std::optional<zSize> item) {
                    findings_.Show(scans[i + item.value_or(0)], std::move(scan));
                  });
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

  RecordingFacts& TellOfSources() {
    RecordingFacts& facts = findings_.facts.recording.emplace();
    facts.classic = serializer_.GetReplayInfo().IsClassic();
    facts.segments = serializer_.SegmentCount();
    facts.scanners = serializer_.ReadScannerInfo();
    sources_ = SourcesOf(facts);
    WarnOfSources(facts);
    return facts;
  }

  // Whether nothing is wrong but with messages.
  bool IsWalkable() const {
    return std::ranges::all_of(problems_, [](const Plovia::ReplayProblem& problem) {
      return problem.harmless || problem.message;
    });
  }

  bool IsDamaged(const Plovia::ReplayFrame& frame) const {
    return std::ranges::any_of(problems_, [&](const Plovia::ReplayProblem& problem) {
      return problem.message && *problem.message >= frame.firstMessage &&
             *problem.message < frame.firstMessage + frame.messageCount;
    });
  }

  void Measure(z64u number, MxMsg message) {
    ForEachScan(message, [&](const Scan& scan, std::optional<zSize> item) {
      measured_.push_back({number, item, MeasureScan(scan)});
      findings_.progress.AddBytes(scan.Count() * zType_Size(zArray_ItemType(scan.points.Get())));
    });
  }

  void Measure(z64u number, const Plovia::SurfaceStream& surface) {
    Scan scan = ScanOf(surface);
    MeasuredPoints points;
    scan.box = surface.heights([&](std::span<const z16s> heights) {
      points.Include(heights);
      findings_.progress.AddBytes(heights.size_bytes());
    });
    measured_.push_back({number, std::nullopt, MeasureScan(scan, points)});
  }

  void PlaceFrames(const RecordingFacts& facts) {
    if (facts.classic) return PlaceCurrentFrames();
    for (z64u segment = 0; segment < facts.segments; ++segment) {
      serializer_.LoadDataIndexFiles();
      PlaceCurrentFrames();
    }
  }

  // Those of the current segment, or of all a classic recording.
  void PlaceCurrentFrames() {
    const zSize count = serializer_.ReadIndexInfo().size();
    for (zSize i = 0; i < count && !damaged_; ++i) {
      const Plovia::ReplayFrame frame = serializer_.ReadData(i);
      damaged_ = IsDamaged(frame);
      if (!damaged_) PlaceFrame(frame);
    }
  }

  // Messages stand in the order of their sources.
  void PlaceFrame(const Plovia::ReplayFrame& frame) {
    if (frame.messageCount != sources_.size()) ++unevenFrames_;
    auto scan = std::ranges::lower_bound(measured_, frame.firstMessage, {}, &MeasuredScan::number);
    for (; scan != measured_.end(); ++scan) {
      const auto position = static_cast<zSize>(scan->number - frame.firstMessage);
      if (position >= frame.messageCount) break;
      const std::string& source = position < sources_.size() ? sources_[position].name : kUnknown;
      numbers_.push_back(scan->number);
      findings_.Add(
          {findings_.facts.frames, frame.index, source, scan->item, std::move(scan->facts)});
    }
    ++findings_.facts.frames;
  }

  struct MeasuredScan {
    z64u number;                // of its message
    std::optional<zSize> item;  // in an array message
    ScanFacts facts;
  };

  const std::string kUnknown = "unknown";
  Findings& findings_;
  std::vector<Plovia::ReplayProblem> problems_;
  Plovia::ReplaySerializer serializer_;
  std::vector<Source> sources_;
  std::vector<MeasuredScan> measured_;  // in the order of the messages
  std::vector<z64u> numbers_;           // of the message of each scan that is told
  zSize unevenFrames_ = 0;
  bool damaged_ = false;  // a frame was
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

void DescribeRecording(zSourcePtr replay, z64u start, Depth depth, Findings& findings) {
  RecordingDescriber describer(findings);
  if (depth == Depth::quick) return describer.RunQuickly(std::move(replay));
  try {
    describer.Run(std::move(replay));
  } catch (const Orv::Exception& failure) {
    if (failure.Status() != zERROR_FORMAT) throw;
    // There are more problems than are told.
  }
  if (depth == Depth::check || !describer.IsReadable())
    TellProblems(describer.TakeProblems(), start, findings);
  describer.Show();
}
