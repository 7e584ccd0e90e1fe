// SPDX-License-Identifier: MIT
#include "inspect/page/page.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "inspect/scans_to_inspect.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr z64f kNan = std::numeric_limits<z64f>::quiet_NaN();
constexpr z64f kInf = std::numeric_limits<z64f>::infinity();

std::vector<z16s> Counting(zSize count) {
  std::vector<z16s> heights(count);
  for (zSize i = 0; i < count; ++i) heights[i] = static_cast<z16s>(i % 1000);
  return heights;
}

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

// Apart from the product's own encoder: bits are collected one by one.
std::vector<z8u> Decoded(const std::string& base64) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<z8u> bytes;
  z32u bits = 0;
  int count = 0;
  EXPECT_EQ(base64.size() % 4, 0U);
  for (const char c : base64.substr(0, base64.find('='))) {
    bits = bits << 6 | static_cast<z32u>(digits.find(c));
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<z8u>(bits >> count));
    bits &= (1U << count) - 1;
  }
  return bytes;
}

std::vector<z8u> ArrayOf(const std::string& text, const Json& id) {
  return Decoded(Element(text, "array" + id.dump()));
}

std::vector<int> Values(const std::string& text, const Json& id) {
  const std::vector<z8u> bytes = ArrayOf(text, id);
  std::vector<int> values;
  for (zSize i = 0; i + 1 < bytes.size(); i += 2) {
    values.push_back(static_cast<z16s>(bytes[i] | bytes[i + 1] << 8));
  }
  return values;
}

struct Shown {
  std::string text;
  Json scan;  // its description

  std::vector<int> Heights() const { return Values(text, scan.at("heights")); }
  std::vector<z64f> RealHeights() const {
    std::vector<z64f> reals;
    for (const int raw : Heights()) {
      reals.push_back(raw == kInvalidRaw
                          ? kNan
                          : raw * scan.at("scale").get<z64f>() + scan.at("offset").get<z64f>());
    }
    return reals;
  }
};

Shown Show(const Scan& scan, z64u budget = 1000) {
  Page page("part", Json::object(), {1, 1, scan.Count()}, budget);
  page.Add(0, 0, {{}, {}, scan});
  Shown shown{TextOf(page), {}};
  shown.scan = DocumentOf(shown.text).at("scans").at(0);
  return shown;
}

TEST(Page, TakesAnyTextWithoutLettingItOutOfItsPlace) {
  const std::string hostile =
      "</script><script>alert(1)</script><!-- <img src=x onerror=alert(1)> &quot;'\" \xE2\x80\xA8"
      "\xFF\x01\n";
  const std::string clean =
      Json::parse(Json(hostile).dump(-1, ' ', true, Json::error_handler_t::replace));
  ASSERT_THAT(clean, testing::HasSubstr("\xEF\xBF\xBD"));
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
}

TEST(Page, KeepsRawValuesOfWhatItDoesNotReduce) {
  const zPoint3d64f scale{0.1, 0.25, 1.0 / 3};
  const zPoint3d64f offset{-1, 2, 1e6};
  const std::vector<z16s> heights{-32767, 32767, kInvalidRaw, 0, 7, -7};
  Scan surface = MakeScan(ScanKind::surface, 3, 2, heights, scale, offset);
  surface.intensities = MakeArray2<z8u>(2, 3, {0, 255, 3, 4, 5, 6});
  Shown shown = Show(surface, 6);
  EXPECT_THAT(shown.Heights(), ElementsAreArray(heights));
  EXPECT_THAT(ArrayOf(shown.text, shown.scan.at("intensities")), ElementsAre(0, 255, 3, 4, 5, 6));
  EXPECT_EQ(shown.scan.at("scale"), scale.z);
  EXPECT_EQ(shown.scan.at("offset"), offset.z);
  EXPECT_EQ(shown.scan.at("low"), -32767 * scale.z + offset.z);
  EXPECT_EQ(shown.scan.at("stepY"), scale.y);
  EXPECT_EQ(shown.scan.at("measured"), 5);
  EXPECT_FALSE(shown.scan.at("reduced"));

  shown = Show(MakeScan(ScanKind::profile, 6, 1, heights, scale, offset), 6);
  EXPECT_THAT(shown.Heights(), ElementsAreArray(heights));
  EXPECT_EQ(shown.scan.at("x"), offset.x);
  EXPECT_EQ(shown.scan.at("stepX"), scale.x);

  shown = Show(MakeScan<zPoint16s>(ScanKind::pointProfile, 3, 1,
                                   {{5, 6}, {kInvalidRaw, 1}, {9, kInvalidRaw}}, scale, offset));
  EXPECT_THAT(shown.Heights(), ElementsAre(6, kInvalidRaw, kInvalidRaw));
  EXPECT_THAT(Values(shown.text, shown.scan.at("places")), ElementsAre(5, kInvalidRaw, 9));
  EXPECT_EQ(shown.scan.at("placeScale"), scale.x);
}

TEST(Page, RoundsReducedHeightsToTheirOwnRange) {
  std::vector<z16s> heights(40, 100);
  std::fill(heights.begin() + 20, heights.end(), z16s{30000});
  const Shown shown = Show(MakeScan(ScanKind::surface, 4, 10, heights, {1, 1, 0.5}, {0, 0, 7}), 10);
  EXPECT_TRUE(shown.scan.at("reduced"));
  EXPECT_LE(shown.Heights().size(), 10U);
  EXPECT_NEAR(shown.RealHeights().front(), 57, 1e-9);
  EXPECT_NEAR(shown.RealHeights().back(), 15007, 1e-9);
}

TEST(Page, TakesScansOfNoExtent) {
  EXPECT_THAT(Show(MakeScan<z16s>(ScanKind::surface, 0, 5, {})).Heights(), IsEmpty());
  EXPECT_THAT(Show(MakeScan<z16s>(ScanKind::profile, 0, 1, {})).Heights(), IsEmpty());
  const std::vector<z16s> nothing(4, kInvalidRaw);
  EXPECT_EQ(Show(MakeScan(ScanKind::surface, 2, 2, nothing)).scan.at("measured"), 0);
  EXPECT_EQ(Show(MakeScan(ScanKind::surface, 4, 1, nothing), 2).scan.at("measured"), 0);
  for (const z64u budget : {z64u{2}, z64u{1000}}) {
    SCOPED_TRACE(budget);
    const Shown flat = Show(MakeScan<z16s>(ScanKind::surface, 2, 2, {5, 5, 5, 5}), budget);
    EXPECT_THAT(flat.RealHeights(), testing::Each(5.0));
  }
  const Shown cloud = Show(MakeScan<zPoint3d16s>(ScanKind::cloud, 2, 1, {{1, 1, 9}, {1, 1, 9}}));
  EXPECT_THAT(cloud.RealHeights(), testing::Contains(9.0));
}

TEST(Page, CountsPointsWithoutFinitePlaceAsNotMeasured) {
  const std::vector<zPoint3d64f> wrong{
      {kNan, 1, 1}, {kInf, 1, 1}, {1, 1, kNan}, {1, 1, -kInf}, {1e308, 1, 1e308}};
  for (const zPoint3d64f& factors : wrong) {
    SCOPED_TRACE(testing::Message() << factors.x << ' ' << factors.z);
    for (const z64u budget : {z64u{3}, z64u{1000}}) {
      for (const bool offset : {false, true}) {
        const zPoint3d64f scale = offset ? zPoint3d64f{1e306, 1, 1e306} : factors;
        const zPoint3d64f shift = offset ? factors : zPoint3d64f{};
        const std::vector<z16s> heights{1000, 2000, 3000, 4000};
        const std::vector<zPoint16s> line{{1000, 1000}, {2000, 2000}, {3000, 1}, {4000, 1}};
        const std::vector<zPoint3d16s> cloud{{1000, 1, 1000}, {1000, 1, 1000}};
        for (const Shown& shown :
             {Show(MakeScan(ScanKind::surface, 2, 2, heights, scale, shift), budget),
              Show(MakeScan(ScanKind::profile, 4, 1, heights, scale, shift), budget),
              Show(MakeScan(ScanKind::pointProfile, 4, 1, line, scale, shift), budget),
              Show(MakeScan(ScanKind::cloud, 2, 1, cloud, scale, shift), budget)}) {
          EXPECT_EQ(shown.scan.at("measured"), 0);
          EXPECT_THAT(shown.Heights(), testing::Each(kInvalidRaw));
        }
      }
    }
  }
}

zSize PointsOf(const std::string& text) {
  zSize points = 0;
  const Json document = DocumentOf(text);
  for (const Json& scan : document.at("scans")) {
    points += Values(text, scan.at("heights")).size();
  }
  return points;
}

TEST(Page, KeepsToItsBudget) {
  const Scan surface = MakeScan(ScanKind::surface, 100, 80, Counting(8000));
  const Scan profile = MakeScan(ScanKind::profile, 8000, 1, Counting(8000));
  for (const z64u budget : {z64u{1}, z64u{63}, z64u{5000}, z64u{20000}, z64u{47999}}) {
    SCOPED_TRACE(budget);
    // Arrays may hold more items than were announced.
    for (const zSize announced : {zSize{6}, zSize{4}}) {
      Page page("", Json::object(), {3, announced, announced * 8000}, budget);
      zSize wanted = 0;
      for (zSize frame = 0; frame < 3; ++frame) {
        page.Add(frame, 0, {"a", {}, surface});
        page.Add(frame, 0, {"b", {}, profile});
        wanted += page.Shows(frame) ? 2U : 0U;
      }
      const std::string text = TextOf(page);
      const Json document = DocumentOf(text);
      EXPECT_LE(PointsOf(text), budget);
      EXPECT_GT(PointsOf(text), budget / 4);
      EXPECT_EQ(document.at("scans").size() + document.at("leftOut").get<zSize>(), wanted);
    }
  }
}

TEST(Page, LeavesFramesOutEvenlyRatherThanShowTooLittle) {
  Page page("", Json::object(), {100, 100, 100 * 8000}, 50000);
  const Scan scan = MakeScan(ScanKind::surface, 100, 80, Counting(8000));
  std::vector<zSize> shown;
  for (zSize frame = 0; frame < 100; ++frame) {
    if (page.Shows(frame)) shown.push_back(frame);
    page.Add(frame, static_cast<z32u>(1000 + frame), {"a", {}, scan});
  }
  EXPECT_THAT(shown, ElementsAre(0, 9, 18, 27, 36, 45, 54, 63, 72, 81, 90, 99));
  const Json document = DocumentOf(TextOf(page));
  EXPECT_EQ(document.at("every"), 9);
  EXPECT_EQ(document.at("scans").size(), 12U);
  EXPECT_EQ(document.at("scans").at(1).at("frame"), 9);
  EXPECT_EQ(document.at("scans").at(1).at("index"), 1009);
  // As long as all fit, nothing is left out, however small the shares would be.
  EXPECT_TRUE(Page("", Json::object(), {100, 100, 50000}, 50000).Shows(1));
}

}  // namespace
