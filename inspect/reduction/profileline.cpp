// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>

#include "inspect/reduction/mapcells.h"

namespace {

constexpr z64f kUnknown = std::numeric_limits<z64f>::quiet_NaN();

struct LinePoint {
  z64f x, z;
  z8u intensity;
};

// All points in the order of the scan; without a valid one, none.
std::vector<LinePoint> PointsOf(const Scan& scan) {
  const auto intensities = IntensitiesOf(scan);
  const bool pairs = scan.kind == ScanKind::pointProfile;
  std::vector<LinePoint> points(scan.width, {kUnknown, kUnknown, 0});
  bool any = false;
  for (z32u i = 0; i < scan.width; ++i) {
    if (!intensities.empty()) points[i].intensity = intensities[i];
    const z64f x = i * scan.scale.x + scan.offset.x;
    if (!pairs && IsDrawable(x)) points[i].x = x;
  }
  ForEachValidPoint(scan, [&](z32u, z32u column, const zPoint3d64f& point) {
    if (!IsDrawable(point)) return;
    points[column].x = point.x;
    points[column].z = point.z;
    any = true;
  });
  if (!any) points.clear();
  return points;
}

// A gap of unknown place is put on its neighbour.
void PlaceGaps(std::vector<LinePoint>& points) {
  const auto placed = [](const LinePoint& point) { return !std::isnan(point.x); };
  const auto first = std::find_if(points.begin(), points.end(), placed);
  z64f x = first == points.end() ? 0 : first->x;
  for (LinePoint& point : points) {
    if (placed(point)) x = point.x;
    point.x = x;
  }
}

void Append(ProfileLine& line, const LinePoint& point, bool withIntensity) {
  line.x.push_back(point.x);
  line.z.push_back(point.z);
  if (withIntensity) line.intensities.push_back(point.intensity);
}

}  // namespace

ProfileLine MakeProfileLine(const Scan& scan, zSize mostColumns) {
  ProfileLine line;
  const bool pairs = scan.kind == ScanKind::pointProfile;
  if (scan.length != 1 || mostColumns == 0) return line;
  if (pairs ? !HoldsGridOf<zPoint16s>(scan) : !HoldsGridOf<z16s>(scan)) return line;
  std::vector<LinePoint> points = PointsOf(scan);
  if (points.empty()) return line;
  PlaceGaps(points);
  if (points.back().x < points.front().x) std::reverse(points.begin(), points.end());

  const bool withIntensity = !IntensitiesOf(scan).empty();
  const zSize columns = std::min(mostColumns, points.size());
  const auto lower = [](const LinePoint& a, const LinePoint& b) {
    return std::isnan(b.z) ? !std::isnan(a.z) : a.z < b.z;  // gaps are above all
  };
  const auto higher = [](const LinePoint& a, const LinePoint& b) {
    return std::isnan(b.z) ? !std::isnan(a.z) : a.z > b.z;  // gaps are below all
  };
  for (zSize column = 0; column < columns; ++column) {
    const LinePoint* begin = points.data() + column * points.size() / columns;
    const LinePoint* end = points.data() + (column + 1) * points.size() / columns;
    const LinePoint* low = std::min_element(begin, end, lower);
    const LinePoint* high = std::min_element(begin, end, higher);
    Append(line, *std::min(low, high), withIntensity);
    if (low != high) Append(line, *std::max(low, high), withIntensity);
  }
  return line;
}
