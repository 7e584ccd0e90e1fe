// SPDX-License-Identifier: MIT
#include "surfacefileconverter/recordingexport.h"

#include "formats/archive/writer.h"
#include "statuses.h"
#include "wholefile.h"

namespace {

using Handle = Orv::Object<void*>;

// A recording built here has one scanner.
Plovia::ReplayScannerInfo MakeScanner(std::vector<ReplaySourceInfo> sources) {
  return {"r4xxx", "Scanner-0", "Scanner 0", std::move(sources)};
}

ReplaySourceInfo MakeSource(const std::string& name, DataSourceType dataType) {
  return {name, name, dataType, 0, 0};
}

DataSourceType MakeMessage(const ScanFile& file, const PcdOptions& options, Handle& message,
                           zAlloc alloc, const Listener& listener) {
  switch (file.fileType) {
    case PRO:
      GenerateProfileMsgFromBuffer(message, file.bytes, PRO, alloc);
      return UNIFORM_PROFILE;
    case PCD:
      GenerateSurfaceMsgFromBuffer(message, file.bytes, options, alloc, listener);
      return SURFACE_POINT_CLOUD;
    default:
      GenerateSurfaceMsgFromBuffer(message, file.bytes, file.fileType, alloc);
      return UNIFORM_SURFACE;
  }
}

void WriteRecording(const Plovia::ReplaySerializer& serializer, const std::string& exportName,
                    FileType exportType, zAlloc alloc) {
  const Plovia::ReplayStream replay = serializer.GetReplayStream(false);
  if (exportType == OVREC) {
    WriteReplayData(replay, "config/config.json", "config/jobs/config.json",
                    "config/jobs/live/_live.ovjob", exportName, alloc);
  } else {
    WriteReplayStream(replay, exportName);
  }
}

}  // namespace

Plovia::ReplaySerializer MakeRecording(const ScanFile& file, const PcdOptions& options,
                                       zAlloc alloc, const Listener& listener) {
  Handle message;
  const DataSourceType dataType = MakeMessage(file, options, message, alloc, listener);
  Plovia::ReplaySerializer serializer;
  serializer.WriteScannerInfo({MakeScanner({MakeSource("Surface.Top", dataType)})});
  serializer.WriteIndexInfo(0);
  serializer.WriteData(std::move(message));
  return serializer;
}

Plovia::ReplaySerializer MakeRecording(const SurfaceDirectory& directory, zAlloc alloc) {
  Plovia::ReplaySerializer serializer;
  std::vector<ReplaySourceInfo> sources;
  for (const std::string& tag : directory.tags) {
    sources.push_back(MakeSource(tag, UNIFORM_SURFACE));
  }
  serializer.WriteScannerInfo({MakeScanner(std::move(sources))});
  zBytes bytes;
  for (const std::vector<std::string>& frame : FilesByFrame(directory)) {
    serializer.WriteIndexInfo(0);
    for (const std::string& path : frame) {
      ReadFileBuffer(path, bytes);
      Handle message;
      GenerateSurfaceMsgFromBuffer(message, bytes, SUR, alloc);
      serializer.WriteData(std::move(message));
    }
  }
  return serializer;
}

void ExportScan(const ScanFile& file, const PcdOptions& options, const std::string& exportName,
                FileType exportType, zAlloc alloc, const Listener& listener) {
  WriteRecording(MakeRecording(file, options, alloc, listener), exportName, exportType, alloc);
}

void ExportDirectory(const SurfaceDirectory& directory, const std::string& exportName,
                     FileType exportType, zAlloc alloc) {
  WriteRecording(MakeRecording(directory, alloc), exportName, exportType, alloc);
}
