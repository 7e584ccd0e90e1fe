// SPDX-License-Identifier: MIT
#include "loadfilestream/digitalsurf_reader.h"
#include "loadfilestream/loadfilestream.h"

namespace {

zPoint3d64f Widen(z32f x, z32f y, z32f z) {
  return {static_cast<z64f>(x), static_cast<z64f>(y), static_cast<z64f>(z)};
}

}  // namespace

zStatus LoadSurFileBuffer(const zBytes& bytes, SurfaceBuffer& record, zAlloc alloc) {
  DigitalSurfReader file;
  zStatus status = file.Open(bytes, alloc);
  if (status != zOK) return status;

  const SurHeader& header = file.Header();
  status = file.CheckSamples(header.lineCount, header.pointsPerLine);
  if (status != zOK) return status;
  status = zArray2_Construct(record.points.Out(), zType::z16s, header.lineCount,
                             header.pointsPerLine, alloc);
  if (status != zOK) return status;
  status = file.ReadSamples(record.points.Get(), InvalidBelow::headerMinimum);
  if (status != zOK) return status;

  record.width = static_cast<z32u>(header.pointsPerLine);
  record.length = static_cast<z32u>(header.lineCount);
  record.scale = Widen(header.xSpacing, header.ySpacing, header.zSpacing);
  record.offset = Widen(header.xOffset, header.yOffset, header.zOffset);
  record.hasIntensity = 0;
  return zOK;
}
