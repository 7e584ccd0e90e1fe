// SPDX-License-Identifier: MIT
#include "surfacefileconverter/recordingexport.h"

#include "filesource.h"
#include "formats/archive/writer.h"
#include "outputfile/writefile.h"
#include "statuses.h"

Plovia::ReplayScannerInfo MakeScanner(std::vector<ReplaySourceInfo> sources) {
  return {"r4xxx", "Scanner-0", "Scanner 0", std::move(sources)};
}

ReplaySourceInfo MakeSource(const std::string& name, DataSourceType dataType) {
  return {name, name, dataType, 0, 0};
}

namespace {

using Handle = Orv::Object<void*>;

// A recording of one frame and one source.
template <class Scan>
void WriteScan(const Scan& scan, DataSourceType dataType, zStream stream) {
  Plovia::ReplaySerializer serializer;
  serializer.BeginReplay(stream, false);
  serializer.WriteScannerInfo({MakeScanner({MakeSource(kScanSourceName, dataType)})});
  serializer.WriteIndexInfo(0);
  serializer.WriteData(scan);
  serializer.EndReplay();
}

void Export(const FillStream& fill, const std::string& exportName, FileType exportType,
            const std::string& configFolder, zAlloc alloc) {
  if (exportType == OVREC) {
    WriteReplayData(fill, configFolder, exportName, alloc);
  } else {
    WriteFile({"surfacefileconverter", "WriteBuffer"}, exportName, fill);
  }
}

}  // namespace

void WriteRecording(const ScanFile& file, const PcdOptions& options, zAlloc alloc,
                    const Listener& listener, zStream stream) {
  Handle message;
  switch (file.fileType) {
    case PRO:
      GenerateProfileMsgFromBuffer(message, *file.bytes, PRO, alloc);
      return WriteScan(message, UNIFORM_PROFILE, stream);
    case PCD:
      GenerateSurfaceMsgFromBuffer(message, *file.bytes, options, alloc, listener);
      return WriteScan(message, SURFACE_POINT_CLOUD, stream);
    default:
      return WriteScan(GenerateSurfaceMsgFromBuffer(*file.bytes, file.fileType, alloc),
                       UNIFORM_SURFACE, stream);
  }
}

void WriteRecording(const SurfaceDirectory& directory, zAlloc alloc, zStream stream) {
  Plovia::ReplaySerializer serializer;
  serializer.BeginReplay(stream, false);
  std::vector<ReplaySourceInfo> sources;
  for (const std::string& tag : directory.tags) {
    sources.push_back(MakeSource(tag, UNIFORM_SURFACE));
  }
  serializer.WriteScannerInfo({MakeScanner(std::move(sources))});
  for (const std::vector<std::string>& frame : FilesByFrame(directory)) {
    serializer.WriteIndexInfo(0);
    for (const std::string& path : frame) {
      const zSourcePtr file = OpenFile(path);
      serializer.WriteData(GenerateSurfaceMsgFromBuffer(*file, SUR, alloc));
    }
  }
  serializer.EndReplay();
}

void ExportScan(const ScanFile& file, const PcdOptions& options, const std::string& exportName,
                FileType exportType, const std::string& configFolder, zAlloc alloc,
                const Listener& listener) {
  Export([&](zStream stream) { WriteRecording(file, options, alloc, listener, stream); },
         exportName, exportType, configFolder, alloc);
}

void ExportDirectory(const SurfaceDirectory& directory, const std::string& exportName,
                     FileType exportType, const std::string& configFolder, zAlloc alloc) {
  Export([&](zStream stream) { WriteRecording(directory, alloc, stream); }, exportName, exportType,
         configFolder, alloc);
}
