// SPDX-License-Identifier: MIT
#include "inspect/page/page.h"

#include <gmock/gmock.h>

#include <sstream>

#include "inspect/page/pagescan.h"
#include "inspect/scans_to_inspect.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr z16s kNo = kInvalidRaw;

PageOptions WithBudget(z64u budget) {
  PageOptions options;
  options.budget = budget;
  return options;
}

std::string TextOf(const Page& page) {
  std::ostringstream out;
  page.Write(out);
  return out.str();
}

// The content of the page's description, as a browser finds it: up to the next end tag.
Json DocumentOf(const std::string& text) {
  const zSize start = text.find('{', text.find("id=\"document\">"));
  return Json::parse(text.substr(start, text.find("</", start) - start));
}

TEST(Page, TakesAnyTextWithoutLettingItOutOfItsPlace) {
  const std::string clean = "</script><script>alert(1)</script><!-- &quot;'\" \xEF\xBF\xBD\n";
  const std::string hostile = "</script><script>alert(1)</script><!-- &quot;'\" \xFF\n";
  Page page(hostile, {{hostile, {hostile}}}, {1, 1, 1}, WithBudget(100));
  page.Add(0, 0, {hostile, 7, MakeScan<z16s>(ScanKind::surface, 1, 1, {0})});
  const std::string text = TextOf(page);
  const Json document = DocumentOf(text);
  EXPECT_EQ(document.at("name"), clean);
  EXPECT_EQ(document.at("scans").at(0).at("source"), clean + " [7]");
  EXPECT_EQ(text.find("alert"), text.find("alert", text.find("id=\"document\"")));
  EXPECT_THAT(text, HasSubstr("Content-Security-Policy\" content=\"default-src 'none';"));
}

TEST(Page, HoldsRawValuesAndWhatTheyStandFor) {
  Scan scan =
      MakeScan<zPoint16s>(ScanKind::pointProfile, 4, 1, {{5, 6}, {kNo, 1}, {-9, kNo}, {300, -2}},
                          {0.5, 1, 0.125}, {-1, 2, 8});
  scan.intensities = MakeArray2<z8u>(1, 4, {0, 255, 62, 63});
  scan.units = {{{"m", 1e3}, {}, {"µm", 1e-3}}};
  scan.cautions = {{"key", "text"}};
  PageOptions options = WithBudget(4);
  options.range = {ColourChoice::Kind::values, 1, 2};
  options.levelling = Levelling::plane;
  options.selection.frames = FrameRange{3, 3};
  Page page("part", Json::object(), {1, 1, 4}, options);
  page.Add(3, 4, {"Top", {}, scan});
  const std::string text = TextOf(page);
  Json document = DocumentOf(text);
  Json& entry = document.at("scans").at(0);
  const Json view = entry.at("views").at("none");
  entry.erase("views");
  EXPECT_EQ(document.at("scans").dump(),
            R"([{"frame":3,"index":4,"source":"Top","kind":"profile","columns":4,"rows":1,)"
            R"("width":4,"length":1,"x":0.0,"y":0.0,"stepX":0.0,"stepY":0.0,"scale":0.125,)"
            R"("offset":8.0,"measured":2,"reduced":false,"valid":2,"cautions":["text"],)"
            R"("units":[["m",1000.0],["mm",1.0],["µm",0.001]],"heights":0,)"
            R"("intensities":1,"places":2,"placeScale":0.5,"placeOffset":-1.0}])");
  EXPECT_EQ(view.at("low"), 7.75);
  EXPECT_EQ(view.at("high"), 8.75);
  EXPECT_EQ(view.at("histogram").size(), 256);
  EXPECT_EQ(view.at("histogram").at(0).get<int>() + view.at("histogram").at(255).get<int>(), 2);
  EXPECT_EQ(view.at("figures").at("mean"), 8.25);
  EXPECT_EQ(
      document.at("choice").dump() + document.at("range").dump() + document.at("level").dump(),
      R"({"frame":"3"}{"kind":"values","low":1.0,"high":2.0}"plane")");
  EXPECT_THAT(text, HasSubstr("id=\"array0\">BgAAgACA/v8=</script>"));
  EXPECT_THAT(text, HasSubstr("id=\"array1\">AP8+Pw==</script>"));
}

TEST(PageScan, RoundsReducedHeightsToTheirOwnRange) {
  const int low = -32767, high = 32767;
  std::vector<z16s> heights(40, 100);
  std::fill(heights.begin() + 16, heights.end(), z16s{30000});
  std::fill(heights.begin() + 24, heights.begin() + 32, kNo);
  Scan scan = MakeScan(ScanKind::surface, 4, 10, heights, {1, 2, 0.5}, {0, 0, 7});
  PageScan page = MakePageScan(scan, 10);
  EXPECT_THAT(page.heights.raw, ElementsAre(low, low, low, low, high, high, kNo, kNo, high, high));
  EXPECT_NEAR(low * page.heights.scale + page.heights.offset, 57, 1e-9);
  EXPECT_TRUE(page.reduced);
  EXPECT_EQ(MakePageScan(scan, 40).heights.raw, heights);
  EXPECT_FALSE(MakePageScan(scan, 40).reduced);
  scan = MakeScan(ScanKind::profile, 40, 1, heights, {2, 1, 1}, {5, 0, 0});
  std::vector<z8u> intensities(40);
  for (zSize i = 0; i < 40; ++i) intensities[i] = static_cast<z8u>(6 * i);
  scan.intensities = MakeArray2(1, 40, intensities);
  page = MakePageScan(scan, 7);  // two points of each of three columns, at 5, 31, 37, ...
  EXPECT_THAT(page.heights.raw, ElementsAre(low, low, high, high));
  EXPECT_THAT(page.places.raw, ElementsAre(low, -6144, 0, high));
  EXPECT_EQ(page.places.offset, 37);
  EXPECT_THAT(page.intensities, ElementsAre(0, 78, 96, 192));
  page = MakePageScan(scan, 40);
  EXPECT_EQ(page.heights.raw, heights);
  EXPECT_THAT((std::vector{page.x, page.stepX}), ElementsAre(5, 2));
}

TEST(PageScan, CountsPointsWithoutFinitePlaceAsNotMeasured) {
  for (const Scan& scan : MakeHostileScans()) {
    bool any = false;
    ForEachValidPoint(scan, [&any](z32u, z32u, const zPoint3d64f& point) {
      any = any || (std::isfinite(point.x + point.y) && std::isfinite(point.z));
    });
    const PageScan page = MakePageScan(scan, scan.Count() / 2);
    EXPECT_LE(std::max(page.heights.raw.size(), page.places.raw.size()), scan.Count() / 2);
    EXPECT_TRUE(any || page.measured == 0) << scan.scale.x << " " << scan.offset.x;
  }
}

// What is left of heights that lie on a plane when the page's own plane is taken off them.
TEST(Page, TellsThePlaneByWhatItHasOfAScan) {
  constexpr zSize kWidth = 12, kLength = 8;
  std::vector<z16s> heights;
  std::vector<zPoint3d16s> cloud;
  std::vector<zPoint16s> line;
  for (int row = 0; row < int{kLength}; ++row) {
    for (int column = 0; column < int{kWidth}; ++column) {
      heights.push_back(static_cast<z16s>(100 + 30 * column - 20 * row));
      cloud.push_back({static_cast<z16s>(column), static_cast<z16s>(row), heights.back()});
      line.push_back({static_cast<z16s>(7 * column + 84 * row),
                      static_cast<z16s>(21 * column + 252 * row - 900)});
    }
  }
  const std::vector<z16s> slope(heights.begin(), heights.begin() + kWidth);
  const zPoint3d64f scale{0.5, 0.25, 0.125}, offset{9, -4, 77};
  const Scan scans[] = {
      MakeScan(ScanKind::surface, kWidth, kLength, heights, scale, offset),
      MakeScan(ScanKind::cloud, kWidth, kLength, cloud, scale, offset),
      MakeScan(ScanKind::profile, kWidth, 1, slope, scale, offset),
      MakeScan(ScanKind::pointProfile, kWidth * kLength, 1, line, scale, offset),
  };
  for (const Scan& scan : scans) {
    for (const z64u budget : {z64u{8}, z64u{24}, z64u{96}}) {
      Page page("", Json::object(), {1, 1, scan.Count()}, WithBudget(budget));
      page.Add(0, 0, {"", {}, scan});
      const Json entry = DocumentOf(TextOf(page)).at("scans").at(0);
      const PageScan kept = MakePageScan(scan, std::min<zSize>(budget, scan.Count()));
      const Json& plane = entry.at("views").at("plane");
      EXPECT_NEAR(plane.at("high").get<z64f>() - plane.at("low").get<z64f>(), 0, 1e-9);
      for (zSize i = 0; i < kept.heights.raw.size(); ++i) {
        if (kept.heights.raw[i] == kNo) continue;
        const zSize column = i % kept.width;
        const z64f place = kept.places.raw.empty()
                               ? static_cast<z64f>(column)
                               : kept.places.raw[i] * kept.places.scale + kept.places.offset;
        const z64f z = kept.heights.raw[i] * kept.heights.scale + kept.heights.offset;
        const z64f height = plane.at("offset").get<z64f>() +
                            plane.at("perColumn").get<z64f>() * place +
                            plane.at("perRow").get<z64f>() * static_cast<z64f>(i / kept.width);
        EXPECT_NEAR(z - height, 0, 0.01)
            << static_cast<int>(scan.kind) << " " << budget << " " << i;
      }
    }
  }
}

TEST(Page, KeepsToItsBudget) {
  const Scan scan = MakeScan(ScanKind::surface, 100, 80, std::vector<z16s>(8000, 5));
  const struct {
    zSize frames, perFrame, announced;
    z64u budget;
    const char* shown;  // points, every which frame, scans left out; frames and their indexes
  } rows[] = {
      {3, 2, 6, 63, "24 3 1: 0/1000"},
      {3, 2, 6, 20000, "19908 2 0: 0/1000 0/1001 2/1004 2/1005"},
      {2, 2, 4, 32000, "32000 1 0: 0/1000 0/1001 1/1002 1/1003"},
      {2, 2, 4, 31999, "31284 1 0: 0/1000 0/1001 1/1002 1/1003"},
      {2, 2, 2, 16000, "16000 1 2: 0/1000 0/1001"},  // more than was announced
  };
  for (const auto& row : rows) {
    Page page("", Json::object(), {row.frames, row.announced, row.announced * 8000},
              WithBudget(row.budget));
    for (zSize i = 0; i < row.frames * row.perFrame; ++i) {
      page.Add(i / row.perFrame, static_cast<z32u>(1000 + i), {"a", {}, scan});
    }
    const Json document = DocumentOf(TextOf(page));
    std::string frames = document.at("every").dump() + " " + document.at("leftOut").dump() + ":";
    zSize points = 0;
    for (const Json& shown : document.at("scans")) {
      points += shown.at("width").get<zSize>() * shown.at("length").get<zSize>();
      frames += " " + shown.at("frame").dump() + "/" + shown.at("index").dump();
    }
    EXPECT_EQ(std::to_string(points) + " " + frames, row.shown);
  }
}

}  // namespace
