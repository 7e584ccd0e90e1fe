// SPDX-License-Identifier: MIT
// The vectorised loops against a plain one, point by point.
#include "formats/pcd/quantize.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "support/scans.h"

namespace {

using Limits = std::numeric_limits<z32f>;
using Floats = std::vector<z32f>;

struct Quantized {
  std::vector<z16s> raws;      // x, y, z of each point
  std::vector<z64u> placings;  // bits of scale and offset, axis by axis

  void Place(z64f scale, z64f offset) {
    placings.push_back(std::bit_cast<z64u>(std::isnan(scale) ? 0.5 : scale));
    placings.push_back(std::bit_cast<z64u>(std::isnan(offset) ? 0.5 : offset));
  }
  bool operator==(const Quantized&) const = default;
};

z16s PlainRaw(z64f step) {
  const z64f rounded = std::trunc(step + std::copysign(0.5, step));
  if (!(std::abs(rounded) < 0x1p63)) return 0;
  return std::bit_cast<z16s>(static_cast<z16u>(static_cast<z64u>(static_cast<z64s>(rounded))));
}

Quantized Plain(const std::vector<Floats>& points, const zPoint3d64f* invalid, z32f zoom) {
  const auto finite = [](const Floats& p) {
    return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
  };
  Quantized result{std::vector<z16s>(3 * points.size(), kInvalidRaw), {}};
  for (zSize axis = 0; axis < 3; ++axis) {
    z32f lowest = Limits::max();
    z32f highest = -Limits::max();
    for (const Floats& p : points) {
      if (!finite(p)) continue;
      lowest = std::min(lowest, p[axis]);
      highest = std::max(highest, p[axis]);
    }
    const z32f sum = highest * zoom + lowest * zoom;
    const z32f difference = highest * zoom - lowest * zoom;
    const z64f offset = static_cast<z64f>(sum) * 0.5;
    const z64f scale = static_cast<z64f>(difference) * 0.5 / 32767;
    result.Place(scale, offset);
    for (zSize i = 0; i < points.size(); ++i) {
      const Floats& p = points[i];
      const auto same = [](z32f value, z64f other) { return static_cast<z64f>(value) == other; };
      if (!finite(p) || (invalid != nullptr && (same(p[0], invalid->x) || same(p[1], invalid->y) ||
                                                same(p[2], invalid->z)))) {
        continue;
      }
      result.raws[3 * i + axis] = PlainRaw((static_cast<z64f>(p[axis] * zoom) - offset) / scale);
    }
  }
  return result;
}

// Records with bytes around the coordinates, at odd addresses.
Quantized Vectorised(const std::vector<Floats>& points, const zPoint3d64f* invalid, z64f zoom,
                     zVectors vectors) {
  PcdCloud layout;
  layout.stride = 17;
  layout.x = 5;
  layout.y = 13;
  layout.z = 1;
  std::vector<z8u> bytes(layout.stride * points.size());
  for (zSize i = 0; i < points.size(); ++i) {
    z8u* const record = bytes.data() + i * layout.stride;
    std::memcpy(record + layout.x, &points[i][0], sizeof(z32f));
    std::memcpy(record + layout.y, &points[i][1], sizeof(z32f));
    std::memcpy(record + layout.z, &points[i][2], sizeof(z32f));
  }
  Scan record;
  PcdOptions options;
  if (invalid != nullptr) options.invalidPoint = *invalid;
  options.zoom = zoom;
  std::vector<zPoint3d16s> cells(points.size());
  QuantizePoints(cells, PcdRecords(bytes.data(), layout, false), options, record, vectors);
  Quantized result;
  for (const zPoint3d16s& cell : cells) {
    result.raws.insert(result.raws.end(), {cell.x, cell.y, cell.z});
  }
  result.Place(record.scale.x, record.offset.x);
  result.Place(record.scale.y, record.offset.y);
  result.Place(record.scale.z, record.offset.z);
  return result;
}

// Points whose coordinates are drawn from these values, and the values themselves once.
std::vector<Floats> Draw(const Floats& values, zSize count) {
  std::minstd_rand random(1);
  std::uniform_int_distribution<zSize> any(0, values.size() - 1);
  std::vector<Floats> points;
  for (const z32f value : values) points.push_back({value, values.front(), values.back()});
  while (points.size() < count) {
    points.push_back({values[any(random)], values[any(random)], values[any(random)]});
  }
  return points;
}

TEST(PcdPoints, AreTheSameWithEveryVectorWidth) {
  Floats halves = {-32767, 32767};  // one raw value a unit
  for (int i = -2000; i < 2000; ++i) {
    const z32f half = 8 * static_cast<z32f>(i) + 0.5F;
    for (const z32f to : {-Limits::infinity(), half, Limits::infinity()}) {
      halves.push_back(std::nextafter(half, to));
    }
  }
  Floats uniform, anyBits;
  std::minstd_rand random(2);
  std::uniform_real_distribution<z32f> unit(-1, 1);
  std::uniform_int_distribution<z32u> bits;
  for (int i = 0; i < 3000; ++i) uniform.push_back(unit(random));
  for (int i = 0; i < 3000; ++i) anyBits.push_back(std::bit_cast<z32f>(bits(random)));
  const z32f tiny = Limits::denorm_min();
  const z32f huge = Limits::max();
  const z32f infinity = Limits::infinity();
  const z32f nan = Limits::quiet_NaN();
  const struct {
    const char* what;
    Floats values;
  } cases[] = {
      {"halves", halves},
      {"uniform", uniform},
      {"any bits", anyBits},
      {"not finite", {1, nan, infinity, -infinity, 2, -nan}},
      {"nothing finite", {nan, infinity}},
      {"denormal", {tiny, 2 * tiny, 7 * tiny, -tiny, 0}},
      {"huge", {huge, huge / 2, huge / 3, -huge / 4}},
      {"beyond the range of floats", {huge, -huge, 0, 1}},
      {"zeros, the negative one first", {-0.0F, 0.0F}},
      {"zeros, the positive one first", {0.0F, -0.0F}},
      {"zero as an extreme", {5, 0.0F, -0.0F, 1}},
      {"flat", {3.5F}},
      {"far from zero", {1e6F, 1e6F + 0.0625F, 1e6F + 0.125F}},
  };
  const zPoint3d64f one{1, 0.1, std::numeric_limits<z64f>::quiet_NaN()};
  const zPoint3d64f never{0.1, 1e300, -1e-320};
  for (const auto& c : cases) {
    for (const zSize count : {zSize{1}, zSize{511}, zSize{1500}}) {
      const std::vector<Floats> points = Draw(c.values, count);
      for (const z32f zoom : {1.0F, 1.7F, -2.5F, 0.0F, 1e-44F, 1e30F, infinity, nan}) {
        for (const zPoint3d64f* invalid :
             {static_cast<const zPoint3d64f*>(nullptr), &one, &never}) {
          SCOPED_TRACE(testing::Message()
                       << c.what << ", " << points.size() << " points, zoom " << zoom);
          const Quantized plain = Plain(points, invalid, zoom);
          const z64f factor = static_cast<z64f>(zoom);
          ASSERT_EQ(Vectorised(points, invalid, factor, zVectors::baseline).raws, plain.raws);
          ASSERT_TRUE(Vectorised(points, invalid, factor, zVectors::baseline) == plain);
          ASSERT_TRUE(Vectorised(points, invalid, factor, zVectors_Widest()) == plain);
        }
      }
    }
  }
}

}  // namespace
