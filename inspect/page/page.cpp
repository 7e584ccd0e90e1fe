// SPDX-License-Identifier: MIT
#include "inspect/page/page.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <string_view>

#include "inspect/page/pagescan.h"
#include "inspect/picture/colormap.h"
#include "inspect/report.h"
#include "page_html.h"
#include "text.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr z64u kLeastPerScan = 4096;  // fewer points of a large scan show nothing
constexpr z64u kScanItself = 64;      // what the description of a scan counts for
constexpr std::string_view kDataMark = "<!-- data -->";
constexpr const char* kLevellings[] = {"none", "plane", "mean"};
constexpr const char* kKinds[] = {"surface", "cloud", "profile", "profile"};  // by ScanKind

std::string Base64(std::span<const z8u> bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (zSize i = 0; i < bytes.size(); i += 3) {
    const zSize count = std::min(zSize{3}, bytes.size() - i);
    z32u group = 0;
    for (zSize j = 0; j < 3; ++j) group = group << 8 | (j < count ? bytes[i + j] : 0U);
    for (zSize j = 0; j < 4; ++j) {
      text += j <= count ? kDigits[group >> (18 - 6 * j) & 63] : '=';
    }
  }
  return text;
}

std::string Base64(const std::vector<z16s>& values) {
  // Memory holds them as the page wants them, the low byte first.
  return Base64({reinterpret_cast<const z8u*>(values.data()), values.size() * sizeof(z16s)});
}

// Json that may stand in an element of a page: ASCII, and no "<" that could end the element or
// begin a comment. Bytes that are no UTF-8 become U+FFFD.
std::string ToElementText(const Json& json) {
  std::string text;
  for (const char c : json.dump(-1, ' ', true, Json::error_handler_t::replace)) {
    c == '<' ? text += "\\u003c" : text += c;
  }
  return text;
}

std::string SourceName(const TaggedScan& scan) {
  return scan.item ? scan.source + " [" + std::to_string(*scan.item) + "]" : scan.source;
}

z64u RoundedUp(z64u value, z64u divisor) {
  return value / divisor + (value % divisor != 0 ? 1 : 0);
}

Json ToJson(Rgb color) { return {color.r, color.g, color.b}; }

std::string Palette() {
  std::vector<z8u> bytes;
  for (const auto& color : HeightPalette()) {
    for (const z8u part : {color.r, color.g, color.b}) bytes.push_back(part);
  }
  return Base64(bytes);
}

Json ToJson(const ColourChoice& choice) {
  constexpr const char* kNames[] = {"auto", "full", "percentiles", "values"};
  return {{"kind", kNames[static_cast<zSize>(choice.kind)]},
          {"low", choice.low},
          {"high", choice.high}};
}

// What was asked for.
Json ToJson(const Selection& selection) {
  Json choice = Json::object();
  if (const auto& frames = selection.frames) {
    const std::string first = std::to_string(frames->first);
    choice["frame"] =
        frames->first == frames->last ? first : first + ":" + std::to_string(frames->last);
  }
  if (!selection.source.empty()) choice["source"] = selection.source;
  return choice;
}

// A plane by the columns and rows of the page, or by the places of a profile that tells them.
Json ToJson(const Plane& plane, const Scan& scan, const PageScan& page) {
  const bool grid = IsGrid(scan);
  z64f u = page.x;
  z64f v = page.y;
  z64f perColumn = page.stepX;
  z64f perRow = page.stepY;
  if (!page.places.raw.empty()) {
    u = grid ? -scan.offset.x / scan.scale.x : 0;
    v = 0;
    perColumn = grid ? 1 / scan.scale.x : 1;
    perRow = 0;
  } else if (grid) {
    perColumn = static_cast<z64f>(scan.width) / page.width;
    perRow = static_cast<z64f>(scan.length) / page.length;
    u = (perColumn - 1) / 2;
    v = (perRow - 1) / 2;
  }
  return {{"offset", plane.At(u, v)},
          {"perColumn", plane.perU * perColumn},
          {"perRow", plane.perV * perRow}};
}

Json ToJson(const HeightStatistics& statistics, Json view) {
  view["low"] = statistics.figures.lowest;
  view["high"] = statistics.figures.highest;
  view["from"] = statistics.percentiles[0];
  view["to"] = statistics.percentiles[1];
  for (const z64f count : statistics.histogram) {
    view["histogram"].push_back(static_cast<z64u>(count));
  }
  Json& figures = view["figures"] = FiguresToJson(statistics.figures);
  for (zSize i = 0; i < std::size(kToldPercents); ++i) {
    figures["percentiles"][RealText(kToldPercents[i])] = statistics.percentiles[2 + i];
  }
  return view;
}

// What is seen of all points, as they are and over the plane that they lie on.
Json Views(const Scan& scan, const PageScan& page, const ColourChoice& choice) {
  std::vector<z64f> percents = choice.Percents();
  percents.insert(percents.end(), std::begin(kToldPercents), std::end(kToldPercents));
  const HeightStatistics plain = MeasureHeights(HeightsOf(scan), percents);
  if (plain.figures.validPoints == 0) return {};
  const Plane plane = FitPlane(scan);
  return {{"none", ToJson(plain, ToJson(Plane(), scan, page))},
          {"plane",
           ToJson(MeasureHeights(HeightsOver(scan, plane), percents), ToJson(plane, scan, page))}};
}

}  // namespace

Page::Page(std::string name, Json facts, const PageExtent& extent, const PageOptions& options)
    : options_(options),
      left_(options.budget),
      firstFrame_(extent.firstFrame),
      pointsPerScan_(options.budget) {
  const z64u budget = options.budget;
  document_["name"] = std::move(name);
  document_["facts"] = std::move(facts);
  document_["palette"] = Palette();
  document_["below"] = ToJson(kBelowRange);
  document_["above"] = ToJson(kAboveRange);
  document_["level"] = kLevellings[static_cast<zSize>(options.levelling)];
  document_["range"] = ToJson(options.range);
  document_["choice"] = ToJson(options.selection);
  document_["frames"] = extent.frames;
  document_["scans"] = Json::array();
  const z64u frames = std::max(zSize{1}, extent.frames);
  const z64u scans = std::max(zSize{1}, extent.scans);
  if (extent.points <= budget && scans <= budget / kScanItself) return;
  const z64u mostScans = std::max(z64u{1}, budget / kLeastPerScan);
  every_ = std::min(frames, RoundedUp(scans, mostScans));
  const z64u shown = RoundedUp(frames, every_);
  pointsPerScan_ = std::max(z64u{1}, budget / shown / RoundedUp(scans, frames));
}

void Page::Add(zSize frame, z32u frameIndex, const TaggedScan& tagged) {
  if ((frame - firstFrame_) % every_ != 0) return;
  if (left_ == 0) {
    ++leftOut_;
    return;
  }
  const Scan& scan = tagged.scan;
  const PageScan page = MakePageScan(scan, std::min(left_, pointsPerScan_));
  left_ -= std::min<z64u>(left_, std::max<z64u>(kScanItself, page.heights.raw.size()));

  Json entry = {{"frame", frame},
                {"index", frameIndex},
                {"source", SourceName(tagged)},
                {"kind", kKinds[static_cast<zSize>(scan.kind)]},
                {"columns", scan.width},
                {"rows", scan.length},
                {"width", page.width},
                {"length", page.length},
                {"x", page.x},
                {"y", page.y},
                {"stepX", page.stepX},
                {"stepY", page.stepY},
                {"scale", page.heights.scale},
                {"offset", page.heights.offset},
                {"measured", page.measured},
                {"reduced", page.reduced}};
  if (Json views = Views(scan, page, options_.range); !views.is_null()) {
    entry["valid"] = views["none"]["figures"]["valid_points"];
    entry["views"] = std::move(views);
  }
  for (const Caution& caution : scan.cautions) entry["cautions"].push_back(caution.text);
  const auto isMm = [](const AxisUnit& unit) { return unit.name == "mm"; };
  if (!std::ranges::all_of(scan.units, isMm)) {
    for (const AxisUnit& unit : scan.units) entry["units"].push_back({unit.name, unit.mm});
  }
  const auto add = [&](const char* key, std::string array) {
    entry[key] = arrays_.size();
    arrays_.push_back(std::move(array));
  };
  add("heights", Base64(page.heights.raw));
  const auto addValues = [&](const char* key, const PageValues& values) {
    if (values.raw.empty()) return;
    entry[key] = {{"array", arrays_.size()}, {"scale", values.scale}, {"offset", values.offset}};
    arrays_.push_back(Base64(values.raw));
  };
  addValues("lows", page.lows);
  addValues("highs", page.highs);
  if (!page.intensities.empty()) add("intensities", Base64(page.intensities));
  if (!page.places.raw.empty()) {
    add("places", Base64(page.places.raw));
    entry["placeScale"] = page.places.scale;
    entry["placeOffset"] = page.places.offset;
  }
  document_["scans"].push_back(std::move(entry));
}

void Page::Write(std::ostream& out) const {
  Json document = document_;
  document["budget"] = options_.budget;
  document["every"] = every_;
  document["leftOut"] = leftOut_;
  const std::string_view source(reinterpret_cast<const char*>(page_html), sizeof page_html);
  const zSize mark = source.find(kDataMark);
  out << source.substr(0, mark) << R"(<script type="application/json" id="document">)"
      << ToElementText(document) << "</script>\n";
  for (zSize i = 0; i < arrays_.size(); ++i) {
    out << R"(<script type="text/plain" id="array)" << i << "\">" << arrays_[i] << "</script>\n";
  }
  out << source.substr(mark + kDataMark.size());
}
