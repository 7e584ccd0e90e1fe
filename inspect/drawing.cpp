// SPDX-License-Identifier: MIT
#include "inspect/drawing.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "formats/directory/reader.h"
#include "inspect/inspect.h"
#include "inspect/measure/level.h"
#include "inspect/page/page.h"
#include "inspect/picture/picture.h"
#include "inspect/report.h"
#include "outputfile/outputfile.h"
#include "outputfile/writefile.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"inspection", "DrawFile"};

std::string FileName(const std::string& path) {
  const auto name = std::filesystem::path(path).filename().string();
  return name.empty() ? path : name;
}

std::string TitleOf(const std::string& path, zSize frame, const TaggedScan& scan) {
  std::string title = FileName(path);
  if (scan.source.empty()) return title;
  title += Orv::Format(", frame %zu, %s", frame, scan.source);
  if (scan.item) title += Orv::Format(" [%zu]", *scan.item);
  return title;
}

// To those of a scan, as many as a picture has room for.
void AddCautions(const std::vector<Caution>& cautions, Scan& scan) {
  constexpr zSize kMost = 8;
  std::ranges::copy(cautions, std::back_inserter(scan.cautions));
  if (scan.cautions.size() <= kMost) return;
  const std::string more = Orv::Format("the report tells %zu more", scan.cautions.size() - kMost);
  scan.cautions.resize(kMost);
  scan.cautions.push_back({"", more});
}

// The heights of the scans of each source, so that its frames share their colours.
class SharedRanges {
 public:
  SharedRanges(const ColourChoice& choice, Levelling levelling)
      : choice_(choice), levelling_(levelling) {}

  // Tells the plane that levels the scan.
  Plane Add(const TaggedScan& tagged) {
    const Scan& scan = tagged.scan;
    const Plane plane = PlaneFor(levelling_, scan);
    const HeightBlocks heights =
        levelling_ == Levelling::none ? HeightsOf(scan) : HeightsOver(scan, plane);
    ranges_.try_emplace(tagged.source, choice_)
        .first->second.Add(MeasureHeights(heights, choice_.Percents()));
    return plane;
  }
  PictureView ViewOf(const std::string& source, z64f step) const {
    const SharedRange& range = ranges_.at(source);
    return {range.All(), range.Colours(), step, levelling_};
  }

 private:
  ColourChoice choice_;
  Levelling levelling_;
  std::map<std::string, SharedRange> ranges_;
};

// Draws the first scan that is wanted, once all is known of the whole.
FileFacts DrawScan(const std::string& path, const InspectOptions& options, Progress& progress) {
  SharedRanges ranges(options.range, options.levelling);
  std::optional<TaggedScan> wanted;
  Plane plane;
  std::string title;
  const std::string& source = options.selection.source;
  FileFacts facts =
      InspectFile(path, options.depth,
                  {[&](zSize, const std::string& tag) { return source.empty() || source == tag; },
                   [&](zSize frame, z32u, const TaggedScan& scan) {
                     const Plane ofScan = ranges.Add(scan);
                     if (wanted || !options.selection.Wants(frame, scan.source)) return;
                     wanted = scan;
                     plane = ofScan;
                     title = TitleOf(path, frame, scan);
                   }},
                  progress);
  if (!wanted) return facts;
  Scan scan = std::move(wanted->scan);
  const PictureView view = ranges.ViewOf(wanted->source, std::abs(scan.scale.z));
  if (options.levelling != Levelling::none) scan = LevelScan(std::move(scan), plane);
  AddCautions(facts.cautions, scan);
  WriteBuffer(DrawPicture(scan, title, view), options.png);
  return facts;
}

// The most scans whose figures a page tells.
constexpr zSize kMostRows = 1000;

nlohmann::ordered_json PageFacts(const FileFacts& facts) {
  nlohmann::ordered_json document = FileToJson(facts);
  document["file"] = FileName(facts.path);  // pages travel, and leave the machine's folders at home
  nlohmann::ordered_json scans = nlohmann::ordered_json::array();
  for (const PlacedScan& scan : facts.scans) {
    if (scans.size() < kMostRows) scans.push_back(ScanToJson(scan));
  }
  if (facts.scans.size() > kMostRows) {
    document["notes"].push_back(
        Orv::Format("of %zu scans, the first %zu are listed", facts.scans.size(), kMostRows));
  }
  document["scans"] = std::move(scans);
  return document;
}

// A page of all scans that are wanted, of which `facts` tells.
void WritePage(const std::string& path, const FileFacts& facts, const InspectOptions& options,
               Progress& progress) {
  const FrameRange frames = options.selection.FramesOf(facts.frames);
  PageExtent extent{frames.last - frames.first + 1, 0, 0, frames.first};
  for (const PlacedScan& scan : facts.scans) {
    if (!options.selection.Wants(scan.frame, scan.source)) continue;
    ++extent.scans;
    extent.points += scan.facts.points;
  }
  Page page(FileName(path), PageFacts(facts), extent,
            {options.points, options.range, options.levelling, options.selection});
  static_cast<void>(InspectFile(
      path, Depth::reading,
      {[&](zSize frame, const std::string& source) {
         return options.selection.Wants(frame, source);
       },
       [&](zSize frame, z32u index, const TaggedScan& scan) { page.Add(frame, index, scan); }},
      progress));
  std::ostringstream text;
  page.Write(text);
  const std::string_view written = text.view();
  const auto* bytes = reinterpret_cast<const z8u*>(written.data());
  WriteBuffer(zBytes(bytes, bytes + written.size()), options.html);
}

// What is looked at, and what will be written.
void RequireOtherFiles(const std::string& path, const InspectOptions& options) {
  std::vector<std::string> inputs = {path};
  if (zDirectory_Exists(path.c_str())) {
    for (const std::string& name : ListFileNames(path, kOperation, &zAllocator::Default())) {
      inputs.push_back(PathInDirectory(path, name));
    }
  }
  std::vector<std::string> outputs;
  for (const std::string& output : {options.png, options.html}) {
    if (!output.empty()) outputs.push_back(output);
  }
  RequireSeparateFiles(kOperation, outputs, inputs);
}

}  // namespace

FileFacts DrawFile(const std::string& path, const InspectOptions& options, Progress& progress) {
  RequireOtherFiles(path, options);
  FileFacts facts = options.png.empty() ? InspectFile(path, options.depth, {}, progress)
                                        : DrawScan(path, options, progress);
  if (options.selection.FindsAny(facts) && !options.html.empty()) {
    WritePage(path, facts, options, progress);
  }
  return facts;
}
