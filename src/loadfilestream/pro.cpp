// SPDX-License-Identifier: MIT
#include "loadfilestream/digitalsurf_reader.h"
#include "loadfilestream/loadfilestream.h"

zStatus LoadProFileBuffer(const zBytes& bytes, ProfileBuffer& record, zAlloc alloc) {
  DigitalSurfReader file;
  zStatus status = file.Open(bytes, alloc);
  if (status != zOK) return status;

  const SurHeader& header = file.Header();
  if (header.lineCount != 1) {
    throw Orv::Exception(__LINE__, "loadfilestream", kBadInput, "LoadProFileBuffer",
                         "The pro file contains multiples profiles.");
  }
  status = file.CheckSamples(header.lineCount, header.pointsPerLine);
  if (status != zOK) return status;
  status = zArray1_Construct(record.points.Out(), zType::z16s, header.pointsPerLine, alloc);
  if (status != zOK) return status;
  status = file.ReadSamples(record.points.Get(), InvalidBelow::foldedMinimum);
  if (status != zOK) return status;

  record.count = static_cast<z32u>(header.pointsPerLine);
  record.scale = file.Scale();
  record.offset = file.Offset();
  record.hasIntensity = 0;
  return zOK;
}
