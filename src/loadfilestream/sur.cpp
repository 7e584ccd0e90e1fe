// SPDX-License-Identifier: MIT
#include "loadfilestream/digitalsurf_reader.h"
#include "loadfilestream/loadfilestream.h"

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
  record.scale = file.Scale();
  record.offset = file.Offset();
  record.hasIntensity = 0;
  return zOK;
}
