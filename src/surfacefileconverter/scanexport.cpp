// SPDX-License-Identifier: MIT
#include "surfacefileconverter/scanexport.h"

#include "outputfile/writefile.h"

bool BecomesScan(FileType from, FileType to) {
  const bool surface = from == SUR || from == SRF;
  return surface && from != to && (to == SUR || to == SRF || to == PCD);
}

void ExportScanAsScan(const ScanFile& file, const std::string& exportName, FileType exportType,
                      zAlloc alloc) {
  WriteFile({"surfacefileconverter", "WriteStream"}, exportName, [&](zStream stream) {
    GetSurfaceDataFileStream(GenerateSurfaceMsgFromBuffer(*file.bytes, file.fileType, alloc),
                             exportType, stream);
  });
}
