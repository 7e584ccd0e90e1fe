// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "getfilestream/getfilestream.h"
#include "support/scans.h"

namespace {

constexpr z32f kNaN = std::numeric_limits<z32f>::quiet_NaN();
constexpr z32f kInfinity = std::numeric_limits<z32f>::infinity();
constexpr z64f kWideNaN = std::numeric_limits<z64f>::quiet_NaN();
constexpr z64f kWideInfinity = std::numeric_limits<z64f>::infinity();

using Points = std::vector<zPoint3d32f>;

// A header with lines that cases replace, add or leave out.
struct Header {
  std::string version = "# comment\n\n# another\nVERSION 0.7\n";
  std::string fields = "FIELDS x y z\n";
  std::string size = "SIZE 4 4 4\n";
  std::string type = "TYPE F F F\n";
  std::string count = "COUNT 1 1 1\n";
  std::string width = "WIDTH 2\n";
  std::string height = "HEIGHT 2\n";
  std::string viewpoint = "VIEWPOINT 0 0 0 1 0 0 0\n";
  std::string points = "POINTS 4\n";
  std::string data = "DATA binary\n";

  std::string Text() const {
    return version + fields + size + type + count + width + height + viewpoint + points + data;
  }
};

// As designated initializers give them.
struct Options {
  z32u width = 0, height = 0;
  bool swapXZ = false;
  std::optional<zPoint3d64f> invalidPoint = {};
  std::optional<z64f> zoom = {};

  operator PcdOptions() const { return {width, height, swapXZ, invalidPoint, zoom}; }
};

struct Loaded {
  zStatus status;
  Scan record;
  std::string warning;

  // The cells, of three coordinates each: "-" for the lowest raw value, "+" for the highest, "N"
  // for the invalid one, 0, and other numbers in brackets.
  std::string Raws() const {
    const auto text = [](z16s raw) -> std::string {
      if (raw == 0) return "0";
      if (raw < -32766) return raw == -32768 ? "N" : "-";
      return raw == 32767 ? "+" : "(" + std::to_string(raw) + ")";
    };
    std::string all;
    for (const zPoint3d16s& p : zArray_Items<zPoint3d16s>(record.points.Get())) {
      all += (all.empty() ? "" : " ") + text(p.x) + text(p.y) + text(p.z);
    }
    return all;
  }
  std::vector<z8u> Intensities() const { return ItemsOf<z8u>(record.intensities.Get()); }
};

Loaded Load(const zBytes& bytes, const Options& options = {}) {
  Loaded loaded;
  loaded.status = LoadPcdFileBuffer(
      bytes, loaded.record, options, DefaultAlloc(), [&](NoticeKind kind, const std::string& text) {
        loaded.warning += (kind == NoticeKind::warning ? "[WARNING] " : "[INFO] ") + text;
      });
  return loaded;
}

std::string Records(const Points& points) {
  return {reinterpret_cast<const char*>(points.data()), points.size() * sizeof(zPoint3d32f)};
}

// Points as one row, or as rows of `width`.
zBytes Cloud(const Points& points, zSize width = 0) {
  Header header;
  if (width == 0) width = points.size();
  header.width = "WIDTH " + std::to_string(width) + "\n";
  header.height = "HEIGHT " + std::to_string(points.size() / width) + "\n";
  header.points = "POINTS " + std::to_string(points.size()) + "\n";
  return ToBytes(header.Text() + Records(points));
}

// Points on the x axis, in rows of two.
zBytes Flat(const std::vector<z32f>& xs) {
  Points points;
  for (const z32f x : xs) points.push_back({x, 0, 0});
  return Cloud(points, xs.size() > 1 ? 2 : 1);
}

const Points kSquare{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 8}};

TEST(PcdHeader, IsParsedLineByLine) {
  const std::string plain = Header{}.Text();
  const struct {
    const char* what;
    Header header;
    bool accepted;
  } cases[] = {
      {"plain", {}, true},
      {"short version", {.version = "VERSION .7\n"}, true},
      {"blank after the version", {.version = "VERSION 0.7 \n"}, false},
      {"older version", {.version = "VERSION 0.6\n"}, false},
      {"comment after the version", {.version = "VERSION 0.7\n# x\n"}, false},
      {"no count", {.count = ""}, true},
      {"count of another name", {.count = "xCOUNT1 1 1\n"}, true},
      {"count without numbers", {.count = "COUNT\n"}, false},
      {"too few counts", {.count = "COUNT 1 1\n"}, false},
      {"too many counts", {.count = "COUNT 1 1 1 1\n"}, false},
      {"count that is no number", {.count = "COUNT 1 1 x\n"}, false},
      {"blank at the end", {.fields = "FIELDS x y z \n", .size = "SIZE 4 4 4 \n"}, true},
      {"two blanks", {.fields = "FIELDS x  y z\n"}, false},
      {"no fields", {.fields = "FIELDS \n", .size = "SIZE 4\n"}, false},
      {"no z", {.fields = "FIELDS x y Z\n"}, false},
      {"too few sizes", {.size = "SIZE 4 4\n"}, false},
      {"too many sizes", {.size = "SIZE 4 4 4 4\n"}, false},
      {"negative size", {.size = "SIZE 4 4 -4\n"}, false},
      {"size beyond 32 bits", {.size = "SIZE 4 4 4294967296\n"}, false},
      {"record beyond 32 bits", {.size = "SIZE 4294967295 4 4\n"}, false},
      {"count beyond 64 bits", {.count = "COUNT 1 4294967295 4294967295\n"}, false},
      {"last field cut", {.size = "SIZE 4 4 3\n"}, false},
      {"intensity outside of the record",
       {.fields = "FIELDS x y z intensity\n", .size = "SIZE 4 4 4 0\n", .count = ""},
       false},
      {"last field of three bytes",
       {.fields = "FIELDS x y z rgb\n", .size = "SIZE 4 4 4 3\n", .count = ""},
       false},
      {"no type", {.type = ""}, false},
      {"any type", {.type = "TYPE \n"}, true},
      {"type alone", {.type = "TYPE\n"}, false},
      {"width 0", {.width = "WIDTH 0\n", .points = "POINTS 0\n"}, false},
      {"height 0", {.height = "HEIGHT 0\n", .points = "POINTS 0\n"}, false},
      {"negative width", {.width = "WIDTH -2\n"}, false},
      {"width without a number", {.width = "WIDTH\n"}, false},
      {"width with more", {.width = "WIDTH 2x\n"}, false},
      {"blank after the width", {.width = "WIDTH 2 \n"}, true},
      {"width beyond 32 bits", {.width = "WIDTH 4294967298\n"}, false},
      {"width and height exchanged", {.width = "HEIGHT 2\n", .height = "WIDTH 2\n"}, false},
      {"no viewpoint", {.viewpoint = ""}, false},
      {"empty viewpoint", {.viewpoint = "VIEWPOINT\n"}, true},
      {"longer key", {.viewpoint = "VIEWPOINTS 0\n"}, false},
      {"other number of points", {.points = "POINTS 5\n"}, false},
      {"points of a wrapped product",
       {.width = "WIDTH 65536\n", .height = "HEIGHT 65536\n", .points = "POINTS 0\n"},
       false},
      {"more points than data",
       {.width = "WIDTH 4294967295\n",
        .height = "HEIGHT 4294967295\n",
        .points = "POINTS 18446744065119617025\n"},
       false},
      {"compressed", {.data = "DATA binary_compressed\n"}, false},
      {"data with a blank", {.data = "DATA binary \n"}, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Load(ToBytes(c.header.Text() + Records(kSquare))).status,
              c.accepted ? zOK : kMalformed)
        << c.what;
  }
  EXPECT_EQ(Load({}).status, kRefused);
  for (zSize size = 1; size < plain.size(); ++size) {
    EXPECT_EQ(Load(ToBytes(plain.substr(0, size))).status, kMalformed) << size;
  }
  const std::string records = Records(kSquare);
  EXPECT_EQ(Load(ToBytes(plain + records.substr(1))).status, kMalformed);
  EXPECT_EQ(Load(ToBytes(plain + records + "padding")).status, zOK);
  std::string windows;
  for (const char c : plain) windows += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(Load(ToBytes(windows + records)).Raws(), Load(ToBytes(plain + records)).Raws());
  Header text;
  text.data = "DATA ascii\n";
  EXPECT_EQ(Load(ToBytes(text.Text() + "0 0 0\n")).status, -996);
}

TEST(PcdSurface, QuantisesEachAxisBetweenItsExtremes) {
  const zPoint3d64f origin{0, 0, 0};
  const zPoint3d64f away{9, 9, 8};
  const zPoint3d64f onlyY{9, 1, 9};
  const zPoint3d64f tenth{0.1, 9, 9};
  const z64f zoom = 2;
  const z64f odd = 1.7;
  const zPoint3d64f zoomed{2.5500001907348633, 0, 0};
  const z64f notANumber = kWideNaN;
  const zBytes square = Cloud(kSquare, 2);
  const Options swapAndZoom{.swapXZ = true, .invalidPoint = away, .zoom = zoom};
  const zBytes notFinite =
      Cloud({{kNaN, 1, 1}, {1, kInfinity, 1}, {1, 1, -kInfinity}, {3, 4, 5}}, 2);
  const zBytes farOff = Flat({1e6F, 1e6F + 0.0625F, 1e6F + 0.125F, 1e6F + 0.1875F});
  const zPoint3d64f center{0.5, 0.5, 4};
  const struct {
    zBytes file;
    Options options;
    const char* raws;
    zPoint3d64f halfRange, offset;
  } cases[] = {
      {square, {}, "--- +-- -+- +++", center, center},
      {square, {.swapXZ = true}, "--- --+ -+- +++", {4, 0.5, 0.5}, {4, 0.5, 0.5}},
      {square, {.zoom = zoom}, "--- +-- -+- +++", {1, 1, 8}, {1, 1, 8}},
      // One invalid component suffices, after the swap and before the zoom.
      {square, swapAndZoom, "--- --+ -+- +++", {8, 1, 1}, {8, 1, 1}},
      {square, {.invalidPoint = origin}, "NNN NNN NNN +++", center, center},
      {square, {.invalidPoint = onlyY}, "--- +-- NNN NNN", center, center},
      // Compared in 64 bits: no 32-bit float is 0.1.
      {Flat({0.1F}), {.invalidPoint = tenth}, "000", {0, 0, 0}, {static_cast<z64f>(0.1F), 0, 0}},
      // Halves round away from zero.
      {Flat({-65534, 1, -1, 65534}), {}, "-00 (1)00 (-1)00 +00", {65534, 0, 0}, {0, 0, 0}},
      // The zoom is applied in 32 bits.
      {Flat({0, 3, 1, 2}), {.zoom = odd}, "-00 +00 (-10922)00 (10922)00", zoomed, zoomed},
      // Few steps far from zero, whose middle is rounded in 32 bits.
      {farOff, {}, "(21847)00 (-21845)00 000 (21845)00", {0.09375, 0, 0}, {1000000.125, 0, 0}},
      {notFinite, {}, "NNN NNN NNN 000", {0, 0, 0}, {3, 4, 5}},
      {Cloud({{1, 2, 3}}),
       {.zoom = notANumber},
       "000",
       {kWideNaN, kWideNaN, kWideNaN},
       {kWideNaN, kWideNaN, kWideNaN}},
      // A range beyond 32-bit floats.
      {Flat({-3e38F, 3e38F, 0, 0}), {}, "000 000 000 000", {kWideInfinity, 0, 0}, {0, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.raws);
    const Loaded loaded = Load(c.file, c.options);
    ASSERT_EQ(loaded.status, zOK);
    EXPECT_EQ(loaded.Raws(), c.raws);
    EXPECT_EQ(loaded.warning, "");
    EXPECT_EQ(static_cast<bool>(loaded.record.intensities), false);
    const auto text = [](const zPoint3d64f& p, z64f divisor) {
      return Orv::Format("%.17g %.17g %.17g", p.x / divisor, p.y / divisor, p.z / divisor);
    };
    EXPECT_EQ(text(loaded.record.scale, 1), text(c.halfRange, 32767));
    EXPECT_EQ(text(loaded.record.offset, 1), text(c.offset, 1));
  }
}

TEST(PcdSurface, TakesTheWishedSizeOrASquare) {
  const Points row{{-1, 0, 0}, {1, 0, 0}, {-1, 0, 0}};
  const struct {
    zBytes file;
    Options options;
    const char* raws;
    std::string sizes;  // of the warning
  } cases[] = {
      {Cloud(row), {}, "-00 +00 -00 NNN", "[2, 2]"},
      {Cloud(row, 1), {}, "-00 +00 -00 NNN", "[2, 2]"},
      {Cloud(row), {.width = 3}, "-00 +00 -00 NNN", "[2, 2]"},
      {Cloud(row), {.width = 1, .height = 2}, "-00 +00", "[1, 2]"},
      {Cloud(row), {.width = 1, .height = 4}, "-00 +00 -00 NNN", "[1, 4]"},
      {Cloud(row), {.width = 1, .height = 3}, "-00 +00 -00", ""},
      {Cloud({row[0]}), {}, "000", ""},
      {Cloud({row[0], row[1], row[0], row[1]}), {}, "-00 +00 -00 +00", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sizes);
    const Loaded loaded = Load(c.file, c.options);
    ASSERT_EQ(loaded.status, zOK);
    EXPECT_EQ(loaded.Raws(), c.raws);
    const std::string warning = "[WARNING] The export surface's size is " + c.sizes + " and the ";
    EXPECT_EQ(loaded.warning.substr(0, warning.size()), c.sizes.empty() ? "" : warning);
  }
  EXPECT_EQ(Load(Cloud(Points(1000, row[0]))).warning,
            "[WARNING] The export surface's size is [32, 32] and the input surface's size is "
            "[1000, 1]");
  for (const z32u side : {z32u{20000}, z32u{1} << 31, ~z32u{0}}) {
    EXPECT_EQ(Load(Cloud(row), {.width = side, .height = side}).status, zERROR_MEMORY) << side;
  }
}

TEST(PcdSurface, TakesTheLastOfRepeatedFields) {
  Header header;
  header.fields = "FIELDS x y z x\n";
  header.size = "SIZE 4 4 4 4\n";
  header.count = "";
  header.width = "WIDTH 1\n";
  header.points = "POINTS 2\n";
  const z32f records[] = {9, 0, 0, 1, 9, 0, 0, 3};
  const std::string data(reinterpret_cast<const char*>(records), sizeof records);
  const Loaded loaded = Load(ToBytes(header.Text() + data), {.width = 2, .height = 1});
  EXPECT_EQ(loaded.Raws(), "-00 +00");
}

TEST(PcdSurface, TakesIntensitiesFromIntensityAndColor) {
  struct Record {
    zPoint3d32f point;
    z32f intensity;
    z8u color[4];
  };
  const Record records[] = {{{0, 0, 0}, 0.5F, {255, 0, 0, 9}},
                            {{1, 1, 1}, 1, {0, 255, 0, 9}},
                            {{kNaN, 0, 0}, 1.5F, {255, 255, 255, 9}},
                            {{0, 0, 0}, kNaN, {0, 0, 255, 9}}};
  const std::string data(reinterpret_cast<const char*>(records), sizeof records);
  const auto load = [&](const char* fields, const Options& options = {}) {
    Header header;
    header.fields = std::string("FIELDS x y z ") + fields + "\n";
    header.size = "SIZE 4 4 4 4 1\n";
    header.type = "TYPE F F F F U\n";
    header.count = "COUNT 1 1 1 1 4\n";
    return Load(ToBytes(header.Text() + data), options).Intensities();
  };
  using Bytes = std::vector<z8u>;
  EXPECT_EQ(load("_ _"), Bytes{});
  EXPECT_EQ(load("intensity _"), (Bytes{127, 255, 126, 0}));  // 382 keeps its low byte
  EXPECT_EQ(load("_ rgb"), (Bytes{76, 149, 255, 29}));
  EXPECT_EQ(load("_ rgba"), (Bytes{76, 149, 255, 29}));
  EXPECT_EQ(load("intensity rgb"), (Bytes{127, 76, 255, 149}));  // two bytes a point
  EXPECT_EQ(load("intensity _", {.width = 2, .height = 3}), (Bytes{127, 255, 126, 0, 255, 255}));
  EXPECT_EQ(load("intensity rgb", {.width = 5, .height = 2}),
            (Bytes{127, 76, 255, 149, 126, 255, 0, 29, 255, 255}));
  EXPECT_EQ(load("intensity _", {.width = 1, .height = 1}), (Bytes{127}));
}

}  // namespace
