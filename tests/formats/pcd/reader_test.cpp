// SPDX-License-Identifier: MIT
#include "formats/pcd/reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "statuses.h"
#include "support/scans.h"

namespace {

using Points = std::vector<zPoint3d32f>;

// A header with changed lines, divided by '|': "KEYWORD rest", or "KEYWORD>text" for any text.
std::string Header(const std::string& changes = "") {
  std::string header =
      "# comment\n\n# another\nVERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\n"
      "WIDTH 2\nHEIGHT 2\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS 4\nDATA binary\n";
  std::istringstream all(changes);
  for (std::string change; std::getline(all, change, '|');) {
    const std::size_t key = change.find_first_of(" >");
    const std::size_t start = header.find("\n" + change.substr(0, key)) + 1;
    const std::string line = change[key] == '>' ? change.substr(key + 1) : change + "\n";
    header.replace(start, header.find('\n', start) + 1 - start, line);
  }
  return header;
}

struct Loaded {
  zStatus status;
  Scan record;
  std::string warning;

  // The cells, of three coordinates each: "-" for the lowest raw value, "+" for the highest, "N"
  // for the invalid one, 0, and other numbers in brackets.
  std::string Raws() const {
    std::string all;
    for (const auto& [x, y, z] : zArray_Items<zPoint3d16s>(record.points.Get())) {
      if (!all.empty()) all += ' ';
      for (const z16s raw : {x, y, z}) {
        const std::string other = Orv::Format("(%d)", raw);
        all += raw == 0        ? "0"
               : raw == 32767  ? "+"
               : raw == -32767 ? "-"
               : raw == -32768 ? "N"
                               : other;
      }
    }
    return all;
  }
};

Loaded Load(const zBytes& bytes, const PcdOptions& options = {}) {
  Loaded loaded;
  const auto listen = [&](NoticeKind kind, const std::string& text) {
    loaded.warning += (kind == NoticeKind::warning ? "" : "no warning: ") + text;
  };
  loaded.status =
      LoadPcdFileBuffer(*SourceOf(bytes), loaded.record, options, DefaultAlloc(), listen);
  return loaded;
}

template <class Record>
std::string Records(const std::vector<Record>& records) {
  return {reinterpret_cast<const char*>(records.data()), records.size() * sizeof(Record)};
}

zBytes Cloud(const Points& cloud, zSize rows = 1) {
  return ToBytes(
      Header(Orv::Format("WIDTH %u|HEIGHT %u|POINTS %u", cloud.size() / rows, rows, cloud.size())) +
      Records(cloud));
}

const Points kSquare{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 8}};

TEST(PcdHeader, IsParsedLineByLine) {
  const std::string records = Records(kSquare);
  const auto expect = [&](zStatus status, const std::string& rows) {
    std::istringstream all(rows);
    for (std::string changes; std::getline(all, changes, ';');) {
      EXPECT_EQ(Load(ToBytes(Header(changes) + records)).status, status) << changes;
    }
  };
  expect(zOK,
         ";VERSION .7;COUNT>;COUNT>xCOUNT1 1 1\n;FIELDS x y z |SIZE 4 4 4 ;TYPE ;WIDTH 2 ;"
         "VIEWPOINT>VIEWPOINT\n");
  expect(kMalformed,
         "VERSION 0.7 ;VERSION 0.6;VERSION 0.7\n# x;COUNT>COUNT\n;COUNT 1 1;COUNT 1 1 1 1;"
         "COUNT 1 1 x;COUNT 1 4294967295 4294967295;FIELDS x  y z;FIELDS |SIZE 4;FIELDS X y z;"
         "FIELDS x Y z;FIELDS x y Z;SIZE 4 4;SIZE 4 4 4 4;SIZE 4 4 -4;SIZE 4 4 4294967296;"
         "SIZE 4294967295 4 4;SIZE 4 4 3;FIELDS x y z intensity|SIZE 4 4 4 0|COUNT>;"
         "FIELDS x y z rgb|SIZE 4 4 4 3|COUNT>;TYPE>;TYPE>TYPE\n;WIDTH 0|POINTS 0;"
         "HEIGHT 0|POINTS 0;WIDTH -2;WIDTH>WIDTH\n;WIDTH 2x;WIDTH 4294967298;"
         "HEIGHT>WIDTH 2\n|WIDTH>HEIGHT 2\n;VIEWPOINT>;VIEWPOINT>VIEWPOINTS 0\n;POINTS 5;"
         "WIDTH 65536|HEIGHT 65536|POINTS 0;DATA binary_compressed;DATA binary ;"
         "WIDTH 4294967295|HEIGHT 4294967295|POINTS 18446744065119617025");
  EXPECT_EQ(Load({}).status, kRefused);
  const std::string plain = Header();
  for (zSize end = 1; end < plain.size(); ++end) {
    EXPECT_EQ(Load(ToBytes(plain.substr(0, end))).status, kMalformed) << end;
  }
  EXPECT_EQ(Load(ToBytes(plain + records.substr(1))).status, kMalformed);
  EXPECT_EQ(Load(ToBytes(plain + records + "padding")).status, zOK);
  std::string windows;
  for (const char c : plain) windows += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(Load(ToBytes(windows + records)).Raws(), Load(ToBytes(plain + records)).Raws());
  EXPECT_EQ(Load(ToBytes(Header("DATA ascii") + "0 0 0\n")).status, kNotImplemented);
}

TEST(PcdSurface, QuantisesEachAxisBetweenItsExtremes) {
  const zPoint3d64f center{0.5, 0.5, 4}, away{9, 9, 8};
  const zBytes square = Cloud(kSquare, 2);
  const zBytes halves = Cloud({{-65534, 0, 0}, {1, 0, 0}, {-1, 0, 0}, {65534, 0, 0}}, 2);
  const zBytes notFinite = Cloud({{NAN, 1, 1}, {1, HUGE_VALF, 1}, {1, 1, -HUGE_VALF}, {3, 4, 5}});
  const auto expect = [](const zBytes& file, const PcdOptions& options, const char* raws,
                         const zPoint3d64f& halfRange, const zPoint3d64f& offset) {
    SCOPED_TRACE(raws);
    const Loaded loaded = Load(file, options);
    ASSERT_EQ(loaded.status, zOK);
    EXPECT_EQ(loaded.Raws(), raws);
    EXPECT_EQ(loaded.record.kind, ScanKind::cloud);
    EXPECT_EQ(loaded.warning, "");
    const zPoint3d64f& scale = loaded.record.scale;
    const zPoint3d64f& at = loaded.record.offset;
    EXPECT_EQ(std::tie(scale.x, scale.y, scale.z, at.x, at.y, at.z),
              std::tuple(halfRange.x / 32767, halfRange.y / 32767, halfRange.z / 32767, offset.x,
                         offset.y, offset.z));
  };
  expect(square, {}, "--- +-- -+- +++", center, center);
  expect(square, {0, 0, true, {}, {}}, "--- --+ -+- +++", {4, 0.5, 0.5}, {4, 0.5, 0.5});
  expect(square, {0, 0, false, {}, 2}, "--- +-- -+- +++", {1, 1, 8}, {1, 1, 8});
  // One invalid component suffices, after the swap and before the zoom.
  expect(square, {0, 0, true, away, 2}, "--- --+ -+- +++", {8, 1, 1}, {8, 1, 1});
  expect(square, {0, 0, false, zPoint3d64f{}, {}}, "NNN NNN NNN +++", center, center);
  expect(square, {0, 0, false, {{9, 1, 9}}, {}}, "--- +-- NNN NNN", center, center);
  expect(halves, {}, "-00 (1)00 (-1)00 +00", {65534, 0, 0}, {0, 0, 0});
  expect(notFinite, {}, "NNN NNN NNN 000", {0, 0, 0}, {3, 4, 5});
}

TEST(PcdSurface, TakesTheWishedSizeOrASquare) {
  const Points row{{-1, 0, 0}, {1, 0, 0}, {-1, 0, 0}};
  const struct {
    zBytes file;
    z32u width, height;
    const char* raws;
    const char* sizes;  // of the warning
  } cases[] = {
      {Cloud(row), 0, 0, "-00 +00 -00 NNN", "[2, 2] and the input surface's size is [3, 1]"},
      {Cloud(row, 3), 3, 0, "-00 +00 -00 NNN", "[2, 2] and the input surface's size is [1, 3]"},
      {Cloud(row), 0, 3, "-00 +00 -00 NNN", "[2, 2] and the input surface's size is [3, 1]"},
      {Cloud(row), 1, 2, "-00 +00", "[1, 2] and the input surface's size is [3, 1]"},
      {Cloud(row), 1, 3, "-00 +00 -00", ""},
      {Cloud({row[0]}), 0, 0, "000", ""},
      {Cloud({row[0], row[1], row[0], row[1]}), 0, 0, "-00 +00 -00 +00", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << ": " << c.raws);
    const Loaded loaded = Load(c.file, {c.width, c.height, false, {}, {}});
    EXPECT_EQ(loaded.Raws(), c.raws);
    EXPECT_EQ(loaded.warning,
              c.sizes[0] == '\0' ? "" : std::string("The export surface's size is ") + c.sizes);
  }
  for (const z32u side : {z32u{20000}, z32u{1} << 31, ~z32u{0}}) {
    EXPECT_EQ(Load(Cloud(row), {side, side, false, {}, {}}).status, zERROR_MEMORY) << side;
  }
  // The last of repeated fields counts.
  const std::string header = Header("FIELDS x y z x|SIZE 4 4 4 4|COUNT>|WIDTH 1|POINTS 2");
  const std::string records = Records<z32f>({9, 0, 0, 1, 9, 0, 0, 3});
  EXPECT_EQ(Load(ToBytes(header + records), {2, 1, false, {}, {}}).Raws(), "-00 +00");
}

TEST(PcdSurface, TakesIntensitiesFromIntensityAndColor) {
  struct Record {
    zPoint3d32f point;
    z32f intensity;
    z8u color[4];
  };
  const std::string records = Records<Record>({{{0, 0, 0}, 0.5F, {255, 0, 0, 9}},
                                               {{1, 1, 1}, 1, {0, 255, 0, 9}},
                                               {{NAN, 0, 0}, 1.5F, {255, 255, 255, 9}},
                                               {{0, 0, 0}, NAN, {0, 0, 255, 9}}});
  const struct {
    std::string fields;
    z32u width, height;
    std::vector<z8u> intensities;
  } rows[] = {
      {"_ _", 0, 0, {}},
      {"intensity _", 0, 0, {127, 255, 126, 0}},  // 382 keeps its low byte
      {"_ rgb", 0, 0, {76, 149, 255, 29}},
      {"_ rgba", 0, 0, {76, 149, 255, 29}},
      {"intensity rgb", 0, 0, {127, 76, 255, 149}},  // two bytes a point
      {"intensity rgb", 5, 2, {127, 76, 255, 149, 126, 255, 0, 29, 255, 255}},
      {"intensity _", 1, 1, {127}},
      {"intensity _", 20000, 16000, {}},  // too large, unlike the points alone
  };
  for (const auto& row : rows) {
    const std::string header =
        Header("FIELDS x y z " + row.fields + "|SIZE 4 4 4 4 1|COUNT 1 1 1 1 4");
    const Loaded loaded = Load(ToBytes(header + records), {row.width, row.height, false, {}, {}});
    EXPECT_EQ(ItemsOf<z8u>(loaded.record.intensities.Get()), row.intensities)
        << row.fields << ' ' << row.width;
  }
}

}  // namespace
