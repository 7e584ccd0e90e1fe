// SPDX-License-Identifier: MIT
#include "scan/surfacestream.h"

Plovia::SurfaceStream StreamOf(const Scan& scan) {
  Plovia::SurfaceStream surface{scan.width,  scan.length, scan.scale,
                                scan.offset, {},          scan.intensities};
  surface.heights = [points = scan.points, box = scan.box](const Plovia::SurfaceStream::Put& put) {
    put({static_cast<const z16s*>(zArray_Data(points.Get())), zArray_Count(points.Get())});
    return box.value_or(BoundingBox6{});
  };
  return surface;
}

Scan ScanOf(const Plovia::SurfaceStream& surface) {
  Scan scan;
  scan.width = surface.width;
  scan.length = surface.length;
  scan.scale = surface.scale;
  scan.offset = surface.offset;
  scan.stamp = surface.stamp;
  scan.intensities = surface.intensities;
  return scan;
}
