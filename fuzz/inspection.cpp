// SPDX-License-Identifier: MIT
// A file of any kind is looked at in every way. The first byte chooses the kind, the second what is
// done with its scans.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "fuzz.h"
#include "inspect/inspect.h"
#include "inspect/measure/level.h"
#include "inspect/page/page.h"
#include "inspect/picture/picture.h"
#include "inspect/reduction/heightmap.h"
#include "inspect/report.h"
#include "scratch.h"

namespace {

// Neither reduction holds more than it was asked for.
void Reduce(const Scan& scan, zSize most) {
  if (scan.IsProfile()) {
    Require(MakeProfileLine(scan, most).x.size() <= 3 * most);
  } else {
    const HeightMap map = MakeHeightMap(scan, most);
    Require(map.heights.size() <= most);
    Require(map.heights.size() == zSize{map.width} * map.length);
    Require(map.lows.size() == (map.reduced ? map.heights.size() : 0));
  }
}

// Percentiles ascend, within all heights.
void Measure(const ScanFigures& figures) {
  for (const HeightStatistics* heights : {&figures.plain, &figures.levelled}) {
    if (heights->figures.validPoints == 0) continue;
    Require(std::ranges::is_sorted(heights->percentiles));
    Require(heights->figures.lowest <= heights->percentiles.front());
    Require(heights->percentiles.back() <= heights->figures.highest);
  }
}

// As a picture and as a page, levelled.
void Draw(const TaggedScan& scan) {
  const Plane plane = FitPlane(scan.scan);
  SharedRange range({});
  range.Add(MeasureHeights(HeightsOver(scan.scan, plane), {1, 99}));
  const PictureView view{range.All(), range.Colours(), scan.scan.scale.z, Levelling::plane};
  Require(!DrawPicture(LevelScan(scan.scan, plane), scan.source, view).empty());
  Page page(scan.source, nlohmann::ordered_json::object(), {}, {.budget = 1000});
  page.Add(0, 0, scan);
  std::ostringstream text;
  page.Write(text);
}

bool IsHarmless(std::string_view text) {
  return std::ranges::all_of(text, [](char c) {
    return c == '\n' || (c != '\x7F' && static_cast<unsigned char>(c) >= 0x20);
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder scratch;
  if (size < 2) return 0;
  const ScratchFolder::Input file = ScratchFolder::WriteInput(data, size);
  const std::string& input = file.name;
  const z8u options = file.options;
  Progress progress(1, false);
  const ScanVisitor visit{[](zSize, const std::string&) { return true; },
                          [most = zSize{1} + options](zSize, z32u, const TaggedScan& scan) {
                            Reduce(scan.scan, most);
                            if (most == 256) Draw(scan);  // takes long
                          },
                          (options & 4) != 0};
  const Depth depth = (options & 1) != 0   ? Depth::check
                      : (options & 2) != 0 ? Depth::quick
                                           : Depth::reading;
  // A file can be bad in any way, and is then told to be: nothing is thrown.
  const FileFacts facts = InspectFile(input, depth, visit, progress);
  for (const PlacedScan& scan : facts.scans) {
    if (scan.facts.figures) Measure(*scan.facts.figures);
  }
  std::ostringstream json;
  WriteJson(facts, json);
  Require(nlohmann::json::parse(json.str()).is_object());
  std::ostringstream report;
  for (const auto details : {ScanDetails::ofFew, ScanDetails::all}) {
    WriteReport(facts, details, report);
  }
  WriteVerdict(facts, report);
  Require(IsHarmless(report.str()) && IsHarmless(json.str()));
  scratch.Clear();
  return 0;
}
