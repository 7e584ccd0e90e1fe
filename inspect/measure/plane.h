// SPDX-License-Identifier: MIT
// Levelling: the plane that a scan lies on, as far as its heights tell.
#pragma once

#include "scan/points.h"

enum class Levelling : z8u { none, plane, mean };

// A valid height and where it lies: at a column and a row of a grid or profile, or at the x and y
// of a point that tells its own.
struct PlacedHeight {
  z64f u, v;
  z64f z;
};

// Heights at places: `height` at (u, v), and so much more for each step along u and v.
struct Plane {
  z64f u = 0, v = 0;
  z64f height = 0;
  z64f perU = 0, perV = 0;

  z64f At(z64f atU, z64f atV) const { return height + perU * (atU - u) + perV * (atV - v); }
  z64f At(const PlacedHeight& place) const { return At(place.u, place.v); }
};

inline bool IsGrid(const Scan& scan) {
  return scan.kind == ScanKind::surface || scan.kind == ScanKind::profile;
}

template <class Use>
void ForEachPlace(const Scan& scan, Use use) {
  const bool grid = IsGrid(scan);
  ForEachValidPoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    use(grid ? PlacedHeight{static_cast<z64f>(column), static_cast<z64f>(row), point.z}
             : PlacedHeight{point.x, point.y, point.z});
  });
}

// The plane of least squares through all valid heights. Where steps turn it, that is where at least
// 55 of 100 of the 256 equal parts of the field have slopes that agree much better with each other
// than with it, the slope is that of these parts, each with a height of its own, by least squares.
// Their centre is the slope with the least distance that holds so many of the others (P. J.
// Rousseeuw and A. M. Leroy, "Robust Regression and Outlier Detection", 1987: least quantile of
// squares). Goes through the mean of all heights either way. Level where no more is known.
Plane FitPlane(const Scan& scan);

// The plane that levels in this way: level and at 0 for none, level and at the mean for the mean.
Plane PlaneFor(Levelling levelling, const Scan& scan);
