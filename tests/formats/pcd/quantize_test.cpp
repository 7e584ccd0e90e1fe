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

constexpr z64f kNoNumber = std::numeric_limits<z64f>::quiet_NaN();

// The raw values x, y, z of each point; then the bits of scale and offset, axis by axis.
using Quantized = std::vector<z64s>;

void Place(Quantized& result, z64f scale, z64f offset) {
  for (const z64f number : {scale, offset}) {
    result.push_back(std::bit_cast<z64s>(std::isnan(number) ? 0.5 : number));
  }
}

z16s PlainRaw(z64f step) {
  const z64f rounded = std::trunc(step + std::copysign(0.5, step));
  return std::abs(rounded) < 0x1p63 ? static_cast<z16s>(static_cast<z64s>(rounded)) : z16s{0};
}

Quantized Plain(const std::vector<Floats>& points, const PcdOptions& options) {
  const auto finite = [](const Floats& p) {
    return std::ranges::all_of(p, [](z32f value) { return std::isfinite(value); });
  };
  const zPoint3d64f no =
      options.invalidPoint.value_or(zPoint3d64f{kNoNumber, kNoNumber, kNoNumber});
  const auto invalid = [&](const Floats& p) {
    return static_cast<z64f>(p[0]) == no.x || static_cast<z64f>(p[1]) == no.y ||
           static_cast<z64f>(p[2]) == no.z;
  };
  const auto zoom = static_cast<z32f>(*options.zoom);
  Quantized result(3 * points.size(), kInvalidRaw);
  for (zSize axis = 0; axis < 3; ++axis) {
    z32f lowest = Limits::max();
    z32f highest = -Limits::max();
    for (const Floats& p : points) {
      if (!finite(p)) continue;
      lowest = std::min(lowest, p[axis]);
      highest = std::max(highest, p[axis]);
    }
    const z64f offset = static_cast<z64f>(highest * zoom + lowest * zoom) * 0.5;
    const z64f scale = static_cast<z64f>(highest * zoom - lowest * zoom) * 0.5 / 32767;
    Place(result, scale, offset);
    for (zSize i = 0; i < points.size(); ++i) {
      const Floats& p = points[i];
      if (!finite(p) || invalid(p)) continue;
      result[3 * i + axis] = PlainRaw((static_cast<z64f>(p[axis] * zoom) - offset) / scale);
    }
  }
  return result;
}

// Records with bytes around the coordinates, at odd addresses.
Quantized Vectorised(const std::vector<Floats>& points, const PcdOptions& options,
                     zVectors vectors) {
  PcdCloud layout;
  layout.stride = 17;
  layout.x = 1;
  layout.y = 5;
  layout.z = 9;
  std::vector<z8u> bytes(layout.stride * points.size());
  for (zSize i = 0; i < points.size(); ++i) {
    std::memcpy(&bytes[i * layout.stride + layout.x], points[i].data(), 3 * sizeof(z32f));
  }
  Scan scan;
  std::vector<zPoint3d16s> cells(points.size());
  layout.width = static_cast<z32u>(points.size());
  layout.height = 1;
  // Some of the pieces end within a block of points.
  const PiecedSource source(zBytes(bytes.begin(), bytes.end()), 1000);
  PcdRecords records(source, 0, layout);
  QuantizePoints(cells, records, layout, options, scan, {}, vectors);
  Quantized result;
  for (const auto& [x, y, z] : cells) result.insert(result.end(), {x, y, z});
  Place(result, scan.scale.x, scan.offset.x);
  Place(result, scan.scale.y, scan.offset.y);
  Place(result, scan.scale.z, scan.offset.z);
  return result;
}

// Points whose coordinates are drawn from these values, and the values themselves once; each axis
// has a range of its own.
std::vector<Floats> Draw(const Floats& values, zSize count) {
  std::minstd_rand random(1);
  const auto any = [&] { return values[random() % values.size()]; };
  std::vector<Floats> points;
  for (const z32f value : values) points.push_back({value, values.front(), values.back()});
  while (points.size() < count) points.push_back({any(), any(), any()});
  for (Floats& point : points) point = {point[0], point[1] / 2, point[2] / 4};
  return points;
}

TEST(PcdPoints, AreTheSameWithEveryVectorWidth) {
  Floats halves = {-32767, 32767};  // one raw value a unit
  Floats anyBits;
  std::mt19937 random(2);
  for (int i = -2000; i < 2000; ++i) {
    const z32f half = 8 * static_cast<z32f>(i) + 0.5F;
    for (const z32f to : {-1e9F, half, 1e9F}) halves.push_back(std::nextafter(half, to));
    anyBits.push_back(std::bit_cast<z32f>(static_cast<z32u>(random())));
  }
  constexpr z32f tiny = Limits::denorm_min(), huge = Limits::max(), inf = Limits::infinity(),
                 nan = Limits::quiet_NaN();
  const struct {
    const char* what;
    Floats values;
  } cases[] = {
      {"halves", halves},
      {"any bits", anyBits},
      {"not finite", {1, nan, inf, -inf, 2, -nan}},
      {"nothing finite", {nan, inf}},
      {"denormal", {tiny, 2 * tiny, 7 * tiny, -tiny, 0}},
      {"huge", {huge, huge / 2, huge / 3, -huge / 4}},
      {"beyond the range of floats", {huge, -huge, 0, 1}},
      {"zeros, the negative one first", {-0.0F, 0.0F}},
      {"zeros, the positive one first", {0.0F, -0.0F}},
      {"zero as an extreme", {5, 0.0F, -0.0F, 1}},
      {"flat", {3.5F}},
  };
  const std::optional<zPoint3d64f> invalidPoints[] = {
      {}, {{1, 0.5, -1e-320}}, {{0.1, 1e300, 0.25}}};
  for (const auto& c : cases) {
    for (const zSize count : {1U, 511U, 1500U}) {
      const std::vector<Floats> points = Draw(c.values, count);
      for (const z32f zoom : {1.0F, 1.7F, -2.5F, 0.0F, 1e-44F, 1e30F, inf, nan}) {
        for (const auto& invalid : invalidPoints) {
          SCOPED_TRACE(Orv::Format("%s, %u points, zoom %g", c.what, points.size(), zoom));
          const PcdOptions options{0, 0, false, invalid, static_cast<z64f>(zoom)};
          const Quantized plain = Plain(points, options);
          ASSERT_EQ(Vectorised(points, options, zVectors::baseline), plain);
          ASSERT_EQ(Vectorised(points, options, zVectors_Widest()), plain);
        }
      }
    }
  }
}

}  // namespace
