// SPDX-License-Identifier: MIT
#include "inspect/measure/plane.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "inspect/measure/span.h"

namespace {

constexpr zSize kParts = 16;  // along each side

// Sums about a place near by, so that they keep their digits.
struct Sums {
  z64f n = 0, u = 0, v = 0, z = 0;
  z64f uu = 0, uv = 0, vv = 0, uz = 0, vz = 0;

  void Add(z64f atU, z64f atV, z64f height) {
    n += 1;
    u += atU;
    v += atV;
    z += height;
    uu += atU * atU;
    uv += atU * atV;
    vv += atV * atV;
    uz += atU * height;
    vz += atV * height;
  }
  void Add(const Sums& other) {
    n += other.n;
    u += other.u;
    v += other.v;
    z += other.z;
    AddProducts(other);
  }
  void AddProducts(const Sums& other) {
    uu += other.uu;
    uv += other.uv;
    vv += other.vv;
    uz += other.uz;
    vz += other.vz;
  }
  // The products about the means.
  Sums Centred() const {
    Sums about;
    about.uu = uu - u * u / n;
    about.uv = uv - u * v / n;
    about.vv = vv - v * v / n;
    about.uz = uz - u * z / n;
    about.vz = vz - v * z / n;
    return about;
  }
};

struct Slope {
  z64f u = 0, v = 0;  // over the whole field
};

z64f Distance(const Slope& a, const Slope& b) { return std::hypot(a.u - b.u, a.v - b.v); }

constexpr z64f kLeast = 1e-9;  // of the larger spread

// Whether centred products spread along u and along v.
struct Spread {
  bool u, v;

  explicit Spread(const Sums& about)
      : u(about.uu > kLeast * about.vv), v(about.vv > kLeast * about.uu) {}
  bool operator==(const Spread&) const = default;
};

// From centred products. Along a line, as of a profile, the slope across it is 0.
std::optional<Slope> SlopeOf(const Sums& about) {
  const Spread spread(about);
  if (!spread.u && !spread.v) return std::nullopt;
  if (!spread.v) return Slope{about.uz / about.uu, 0};
  if (!spread.u) return Slope{0, about.vz / about.vv};
  const z64f determinant = about.uu * about.vv - about.uv * about.uv;
  if (!(determinant > kLeast * about.uu * about.vv)) return std::nullopt;
  return Slope{(about.uz * about.vv - about.vz * about.uv) / determinant,
               (about.vz * about.uu - about.uz * about.uv) / determinant};
}

// One side of the field, as numbers from -1/2 to 1/2.
struct Side : Span {
  z64f Length() const { return high > low ? Size() : 1; }
  z64f Middle() const { return low + Size() / 2; }
  z64f ShareOf(z64f value) const { return (value - Middle()) / Length(); }
  static zSize PartOf(z64f share) {
    return static_cast<zSize>(std::clamp((share + 0.5) * kParts, 0.0, kParts - 1.0));
  }
};

struct Field {
  Side u, v;
};

bool IsKnown(const PlacedHeight& place) {
  return std::isfinite(place.u) && std::isfinite(place.v) && std::isfinite(place.z);
}

Field FieldOf(const Scan& scan) {
  Field field;
  if (IsGrid(scan)) {
    field.u = {{0, static_cast<z64f>(std::max(scan.width, 1U) - 1)}};
    field.v = {{0, static_cast<z64f>(std::max(scan.length, 1U) - 1)}};
    return field;
  }
  ForEachPlace(scan, [&](const PlacedHeight& place) {
    if (!IsKnown(place)) return;
    field.u.Include(place.u);
    field.v.Include(place.v);
  });
  return field;
}

using Parts = std::vector<Sums>;  // row by row

Parts SumsOfPoints(const Scan& scan, const Field& field) {
  Parts parts(kParts * kParts);
  ForEachPlace(scan, [&](const PlacedHeight& place) {
    if (!IsKnown(place)) return;
    const z64f u = field.u.ShareOf(place.u);
    const z64f v = field.v.ShareOf(place.v);
    parts[Side::PartOf(v) * kParts + Side::PartOf(u)].Add(u, v, place.z);
  });
  return parts;
}

// Raw heights of a row that lie in one part, whose columns count from `start`.
Sums SumsOfRow(std::span<const z16s> heights, z64f start, z64f size, z64f v) {
  z64s n = 0;
  z64s column = 0;
  z64s columns = 0;
  z64s height = 0;
  z64s products = 0;
  for (z64s i = 0; i < std::ssize(heights); ++i) {
    const bool valid = IsValid(heights[static_cast<zSize>(i)]);
    const z64s at = valid ? i : 0;
    const z64s raw = valid ? heights[static_cast<zSize>(i)] : 0;
    n += valid ? 1 : 0;
    column += at;
    columns += at * at;
    height += raw;
    products += at * raw;
  }
  Sums sums;
  const auto real = [](z64s sum) { return static_cast<z64f>(sum); };
  sums.n = real(n);
  sums.u = (real(column) + start * sums.n) / size;
  sums.v = v * sums.n;
  sums.z = real(height);
  sums.uu = (real(columns) + 2 * start * real(column) + start * start * sums.n) / (size * size);
  sums.uv = sums.u * v;
  sums.vv = v * v * sums.n;
  sums.uz = (real(products) + start * sums.z) / size;
  sums.vz = v * sums.z;
  return sums;
}

// Of raw heights.
Parts SumsOfGrid(const Scan& scan, const Field& field) {
  Parts parts(kParts * kParts);
  const auto heights = zArray_Items<z16s>(scan.points.Get());
  const zSize width = scan.width;
  if (heights.size() != width * scan.length) return parts;
  for (zSize row = 0; row < scan.length; ++row) {
    const z64f v = field.v.ShareOf(static_cast<z64f>(row));
    for (zSize part = 0; part < kParts; ++part) {
      const zSize begin = width * part / kParts;
      const zSize count = width * (part + 1) / kParts - begin;
      const z64f start = static_cast<z64f>(begin) - field.u.Middle();
      parts[Side::PartOf(v) * kParts + part].Add(
          SumsOfRow(heights.subspan(row * width + begin, count), start, field.u.Length(), v));
    }
  }
  return parts;
}

// The slope that the most alike 55 of 100 parts have in common, where the slope of all
// is far from it. Parts that are lines, unless all are one, tell none.
std::optional<Slope> AgreedSlope(const Parts& parts, const Slope& all, const Spread& spread) {
  constexpr z64f kFewest = 6;  // points that tell a slope
  constexpr z64f kFar = 3;
  std::vector<Sums> products;
  std::vector<Slope> slopes;
  zSize count = 0;
  for (const Sums& part : parts) {
    if (part.n == 0) continue;
    ++count;
    const Sums about = part.Centred();
    const std::optional<Slope> slope = SlopeOf(about);
    if (part.n < kFewest || !slope || Spread(about) != spread) continue;
    products.push_back(about);
    slopes.push_back(*slope);
  }
  const zSize agreeing = count * 11 / 20;
  if (slopes.size() < 4 || slopes.size() <= agreeing) return std::nullopt;
  z64f least = std::numeric_limits<z64f>::infinity();
  Slope centre;
  for (const Slope& candidate : slopes) {
    std::vector<z64f> distances;
    distances.reserve(slopes.size());
    for (const Slope& slope : slopes) distances.push_back(Distance(candidate, slope));
    const auto most = distances.begin() + static_cast<std::ptrdiff_t>(agreeing);
    std::nth_element(distances.begin(), most, distances.end());
    if (*most < least) {
      least = *most;
      centre = candidate;
    }
  }
  if (!(Distance(all, centre) > kFar * least)) return std::nullopt;
  Sums agreed;
  for (zSize i = 0; i < slopes.size(); ++i) {
    if (Distance(slopes[i], centre) <= kFar * least) agreed.AddProducts(products[i]);
  }
  return SlopeOf(agreed);
}

}  // namespace

Plane FitPlane(const Scan& scan) {
  const Field field = FieldOf(scan);
  const bool grid = IsGrid(scan);
  const Axis raw = grid ? scan.Z() : Axis{1, 0};
  const Parts parts = grid ? SumsOfGrid(scan, field) : SumsOfPoints(scan, field);
  Sums all;
  for (const Sums& part : parts) all.Add(part);
  Plane plane;
  if (all.n == 0 || !std::isfinite(Real(all.z / all.n, raw))) return plane;
  plane.u = field.u.Middle() + all.u / all.n * field.u.Length();
  plane.v = field.v.Middle() + all.v / all.n * field.v.Length();
  plane.height = Real(all.z / all.n, raw);
  const Sums about = all.Centred();
  if (const std::optional<Slope> slope = SlopeOf(about)) {
    const Slope chosen = AgreedSlope(parts, *slope, Spread(about)).value_or(*slope);
    plane.perU = chosen.u / field.u.Length() * raw.scale;
    plane.perV = chosen.v / field.v.Length() * raw.scale;
    if (!std::isfinite(plane.perU + plane.perV)) plane.perU = plane.perV = 0;
  }
  return plane;
}

Plane PlaneFor(Levelling levelling, const Scan& scan) {
  if (levelling == Levelling::none) return {};
  Plane plane = FitPlane(scan);
  if (levelling == Levelling::mean) plane.perU = plane.perV = 0;
  return plane;
}
