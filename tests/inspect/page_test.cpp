// SPDX-License-Identifier: MIT
#include "inspect/page/page.h"

#include <gmock/gmock.h>

#include <sstream>

#include "inspect/scans_to_inspect.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr z16s kNo = kInvalidRaw;

std::string TextOf(const Page& page) {
  std::ostringstream out;
  page.Write(out);
  return out.str();
}

// The content of the element with that id, as a browser finds it: up to the next end tag.
std::string Element(const std::string& text, const std::string& id) {
  const std::string mark = "id=\"" + id + "\">";
  const zSize start = text.find(mark);
  if (start == std::string::npos) return "no " + id;
  return text.substr(start + mark.size(), text.find("</", start) - start - mark.size());
}

Json DocumentOf(const std::string& text) { return Json::parse(Element(text, "document")); }

// Numbers of `size` bytes. Apart from the product's own encoder, bits are collected one by one.
std::vector<int> ArrayOf(const std::string& text, const Json& entry, const char* key, int size) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (!entry.contains(key)) return {};
  const std::string base64 = Element(text, "array" + entry.at(key).dump());
  EXPECT_EQ(base64.size() % 4, 0U);
  std::vector<bool> bits;
  for (const char c : base64.substr(0, base64.find('='))) {
    for (int bit = 5; bit >= 0; --bit) bits.push_back((digits.find(c) >> bit & 1) != 0);
  }
  std::vector<int> numbers;
  for (zSize byte = 0; byte < bits.size() / 8; ++byte) {
    int value = 0;
    for (zSize bit = 0; bit < 8; ++bit) value = value * 2 + (bits[byte * 8 + bit] ? 1 : 0);
    if (size == 1 || byte % 2 == 0)
      numbers.push_back(value);
    else
      numbers.back() = static_cast<z16s>(numbers.back() + value * 256);
  }
  return numbers;
}

struct Shown {
  std::vector<int> heights, places, intensities;
  Json rest;
};
Shown Show(const Scan& scan, z64u budget = 1000) {
  Page page("part", Json::object(), {1, 1, scan.Count()}, budget);
  page.Add(3, 4, {"Top", {}, scan});
  const std::string text = TextOf(page);
  Json entry = DocumentOf(text).at("scans").at(0);
  Shown shown{ArrayOf(text, entry, "heights", 2),
              ArrayOf(text, entry, "places", 2),
              ArrayOf(text, entry, "intensities", 1),
              {}};
  for (const char* array : {"heights", "places", "intensities"}) entry.erase(array);
  shown.rest = entry;
  return shown;
}

TEST(Page, TakesAnyTextWithoutLettingItOutOfItsPlace) {
  const std::string hostile =
      "</script><script>alert(1)</script><!-- <img src=x onerror=alert(1)> &quot;'\" \xE2\x80\xA8"
      "\xFF\x01\n";
  const std::string clean =
      Json::parse(Json(hostile).dump(-1, ' ', true, Json::error_handler_t::replace));
  Page page(hostile, {{hostile, {hostile}}}, {1, 1, 1}, 100);
  page.Add(0, 0, {hostile, 7, MakeScan<z16s>(ScanKind::surface, 1, 1, {0})});
  const std::string text = TextOf(page);
  const Json document = DocumentOf(text);
  EXPECT_EQ(document.at("name"), clean);
  EXPECT_EQ(document.at("facts"), (Json{{clean, {clean}}}));
  EXPECT_EQ(document.at("scans").at(0).at("source"), clean + " [7]");
  EXPECT_EQ(text.find("alert"), text.find("alert", text.find("id=\"document\"")));
  EXPECT_EQ(text.find("<img"), std::string::npos);
  EXPECT_EQ(text.find("\xE2\x80\xA8"), std::string::npos);
}

TEST(Page, ForbidsItselfEveryRequest) {
  const std::string text = TextOf(Page("", Json::object(), {}, 1));
  EXPECT_THAT(text, testing::HasSubstr("Content-Security-Policy\" content=\"default-src 'none';"));
  for (const char* address : {"http:", "https:", "src=\"", "@import", "url("}) {
    EXPECT_EQ(text.find(address), std::string::npos) << address;
  }
  EXPECT_THAT(text, testing::EndsWith("</html>\n"));
}

TEST(Page, KeepsRawValuesOfWhatItDoesNotReduce) {
  const zPoint3d64f scale{0.5, 0.25, 0.125};
  const zPoint3d64f offset{-1, 2, 8};
  const std::vector<z16s> heights{-32767, 32767, kNo, 0, 7, -7};
  Scan scan = MakeScan(ScanKind::surface, 3, 2, heights, scale, offset);
  scan.intensities = MakeArray2<z8u>(2, 3, {0, 255, 3, 4, 5, 6});
  Shown shown = Show(scan, 6);
  EXPECT_THAT(shown.heights, ElementsAreArray(heights));
  EXPECT_THAT(shown.intensities, ElementsAre(0, 255, 3, 4, 5, 6));
  EXPECT_EQ(shown.rest.dump(),
            R"({"frame":3,"index":4,"source":"Top","kind":"surface","columns":3,"rows":2,)"
            R"("width":3,"length":2,"x":-1.0,"y":2.0,"stepX":0.5,"stepY":0.25,"scale":0.125,)"
            R"("offset":8.0,"low":-4087.875,"high":4103.875,"measured":5,"reduced":false})");
  scan.kind = ScanKind::profile;
  scan.width = 6;
  scan.length = 1;
  shown = Show(scan, 6);
  EXPECT_THAT(shown.heights, ElementsAreArray(heights));
  EXPECT_THAT(shown.intensities, ElementsAre(0, 255, 3, 4, 5, 6));
  EXPECT_EQ(shown.rest.at("x"), -1);
  EXPECT_EQ(shown.rest.at("stepX"), 0.5);
  EXPECT_EQ(shown.rest.at("width"), 6);
  shown = Show(MakeScan<zPoint16s>(ScanKind::pointProfile, 3, 1, {{5, 6}, {kNo, 1}, {9, kNo}},
                                   scale, offset));
  EXPECT_THAT(shown.heights, ElementsAre(6, kNo, kNo));
  EXPECT_THAT(shown.places, ElementsAre(5, kNo, 9));
  EXPECT_THAT(shown.rest.dump(), testing::EndsWith(R"("placeScale":0.5,"placeOffset":-1.0})"));
}

TEST(Page, RoundsReducedHeightsToTheirOwnRange) {
  std::vector<z16s> heights(40, 100);
  std::fill(heights.begin() + 16, heights.end(), z16s{30000});
  std::fill(heights.begin() + 24, heights.begin() + 32, kNo);
  Scan scan = MakeScan(ScanKind::surface, 4, 10, heights, {1, 2, 0.5}, {0, 0, 7});
  Shown shown = Show(scan, 10);
  const int low = -32767, high = 32767;
  EXPECT_THAT(shown.heights, ElementsAre(low, low, low, low, high, high, kNo, kNo, high, high));
  EXPECT_NEAR(shown.rest.at("scale"), 14950.0 / 65534, 1e-12);
  EXPECT_EQ(shown.rest.at("offset"), 7532);
  EXPECT_NEAR(shown.rest.at("low"), 57, 1e-9);
  EXPECT_EQ(shown.rest.at("measured"), 8);
  EXPECT_TRUE(shown.rest.at("reduced"));
  scan = MakeScan(ScanKind::profile, 40, 1, heights, {2, 1, 1}, {5, 0, 0});
  scan.intensities = MakeArray2(1, 40, std::vector<z8u>(40, 9));
  shown = Show(scan, 7);  // two points of each of three columns, at 5, 31, 37, ...
  EXPECT_THAT(shown.heights, ElementsAre(low, low, high, high));
  EXPECT_THAT(shown.places, ElementsAre(low, -6144, 0, high));
  EXPECT_THAT(shown.intensities, ElementsAre(9, 9, 9, 9));
  EXPECT_EQ(shown.rest.at("placeOffset"), 37);
  EXPECT_TRUE(shown.rest.at("reduced"));
  shown = Show(MakeScan<zPoint3d16s>(ScanKind::cloud, 2, 1, {{1, 1, 9}, {1, 1, 9}}));
  EXPECT_THAT(shown.heights, ElementsAre(0));
  EXPECT_EQ(shown.rest.at("offset"), 9);
  EXPECT_FALSE(shown.rest.at("reduced"));
}

TEST(Page, CountsPointsWithoutFinitePlaceAsNotMeasured) {
  for (const Scan& scan : MakeHostileScans()) {
    bool any = false;
    ForEachValidPoint(scan, [&any](z32u, z32u, const zPoint3d64f& point) {
      any = any || (std::isfinite(point.x + point.y) && std::isfinite(point.z));
    });
    const Shown shown = Show(scan, scan.Count() / 2);
    EXPECT_LE(shown.heights.size(), scan.Count() / 2) << shown.rest;
    EXPECT_TRUE(any || shown.rest.at("measured") == 0) << shown.rest;
  }
}

// Scans of 100 x 80 points.
TEST(Page, KeepsToItsBudget) {
  const Scan scan = MakeScan(ScanKind::surface, 100, 80, std::vector<z16s>(8000, 5));
  const struct {
    zSize frames, perFrame, announced;
    z64u budget;
    const char* shown;  // points, every which frame, scans left out; frames and their indexes
  } rows[] = {
      {3, 2, 6, 1, "1 3 1: 0/1000 "},
      {3, 2, 6, 63, "24 3 1: 0/1000 "},
      {3, 2, 6, 5000, "4840 3 0: 0/1000 0/1001 "},
      {3, 2, 6, 20000, "19908 2 0: 0/1000 0/1001 2/1004 2/1005 "},
      {2, 2, 4, 32000, "32000 1 0: 0/1000 0/1001 1/1002 1/1003 "},
      {2, 2, 4, 31999, "31284 1 0: 0/1000 0/1001 1/1002 1/1003 "},
      {2, 2, 2, 16000, "16000 1 2: 0/1000 0/1001 "},  // more than was announced
      {100, 1, 100, 20000, "19908 25 0: 0/1000 25/1025 50/1050 75/1075 "},
  };
  for (const auto& row : rows) {
    Page page("", Json::object(), {row.frames, row.announced, row.announced * 8000}, row.budget);
    for (zSize i = 0; i < row.frames * row.perFrame; ++i) {
      page.Add(i / row.perFrame, static_cast<z32u>(1000 + i), {"a", {}, scan});
    }
    const std::string text = TextOf(page);
    const Json document = DocumentOf(text);
    zSize points = 0;
    std::string frames;
    for (const Json& shown : document.at("scans")) {
      points += ArrayOf(text, shown, "heights", 2).size();
      frames += shown.at("frame").dump() + "/" + shown.at("index").dump() + " ";
    }
    EXPECT_EQ(std::to_string(points) + " " + document.at("every").dump() + " " +
                  document.at("leftOut").dump() + ": " + frames,
              row.shown)
        << row.budget;
  }
}

}  // namespace
