// SPDX-License-Identifier: MIT
// Which conversions exist, and the recordings built from scans.
#include <algorithm>

#include "getfilestream/getfilestream.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/recordingarchive.h"
#include "surfacefileconverter/surfacefileconverter.h"
#include "surfacefileconverter/wholefile.h"

namespace {

constexpr const char* kFunction = "SurfaceFileConverter::exportFile";

// Exactly these forms are accepted.
constexpr std::pair<std::string_view, FileType> kExportExtensions[] = {
    {".rep", REP}, {".srf", SRF}, {".sur", SUR},     {".SUR", SUR}, {".pro", PRO},
    {".PRO", PRO}, {".pcd", PCD}, {".ovrec", OVREC}, {".csv", CSV}, {".CSV", CSV},
};

[[noreturn]] void Fail(int line, zStatus status, std::string_view message) {
  throw Orv::Exception(line, kSourceFile, status, kFunction, message);
}

FileType ParseExportType(const std::string& exportName) {
  const std::size_t dot = exportName.rfind('.');
  if (dot == std::string::npos) {
    Fail(__LINE__, kBadInput, "Failed to parse the extension of the export file name");
  }
  const std::string extension = exportName.substr(dot);
  const auto* known = std::ranges::find(kExportExtensions, extension,
                                        &std::pair<std::string_view, FileType>::first);
  if (known == std::end(kExportExtensions)) {
    Fail(__LINE__, kBadInput,
         "Extension " + extension + " of the export file name is not supported");
  }
  return known->second;
}

// A recording built here has one scanner.
Plovia::ReplayScannerInfo MakeScanner(std::vector<ReplaySourceInfo> sources) {
  return {"r4xxx", "Scanner-0", "Scanner 0", std::move(sources)};
}

ReplaySourceInfo MakeSource(const std::string& name, DataSourceType dataType) {
  return {name, name, dataType, 0, 0};
}

}  // namespace

void SurfaceFileConverter::exportFile(std::string exportName) {
  FileType exportType = OVREC;
  if (!exportName.empty()) {
    exportType = ParseExportType(exportName);
  } else if (isRecordingData()) {
    Fail(__LINE__, kBadInput, "No file was exported because the export file name isn't specified");
  } else {
    exportName = inputBaseName + ".ovrec";
  }
  exportFile(std::move(exportName), exportType);
}

void SurfaceFileConverter::exportFile(std::string exportName, FileType exportType) {
  requireImport(__LINE__, kFunction);
  if (fileType == exportType) {
    Fail(__LINE__, kBadInput, "The import file type is same as the export file type");
  }
  switch (fileType) {
    case SRF:
    case SUR:
    case PRO:
    case PCD:
      exportScan(exportName, exportType);
      break;
    case REC:
    case REP:
    case OVREC:
      exportRecording(exportName, exportType);
      break;
    default:
      Fail(__LINE__, kBadInput, "Unsupported file extension");
  }
}

void SurfaceFileConverter::exportScan(const std::string& exportName, FileType exportType) {
  if (exportType != REP && exportType != OVREC) {
    Fail(__LINE__, kBadInput, "Only .rep and .ovrec file extension are supported");
  }
  Plovia::ReplaySerializer serializer;
  if (multiFileMode && fileType != PRO) {
    writeDirectory(serializer);
  } else {
    writeScan(serializer);
  }
  const Plovia::ReplayStream replay = serializer.GetReplayStream(false);
  if (exportType == OVREC) {
    WriteReplayData(replay, "config/config.json", "config/jobs/config.json",
                    "config/jobs/live/_live.ovjob", exportName, allocator);
  } else {
    WriteReplayStream(replay, exportName);
  }
  exportedFileNames = {exportName};
}

void SurfaceFileConverter::writeScan(Plovia::ReplaySerializer& serializer) {
  Orv::Object<void*> message;
  DataSourceType dataType = UNIFORM_SURFACE;
  switch (fileType) {
    case SRF:
    case SUR:
      GenerateSurfaceMsgFromBuffer(message, *fileBuffer, fileType, allocator);
      break;
    case PRO:
      GenerateProfileMsgFromBuffer(message, *fileBuffer, fileType, allocator);
      dataType = UNIFORM_PROFILE;
      break;
    case PCD:
      GenerateSurfaceMsgFromBuffer(message, *fileBuffer, pcdWidth, pcdHeight, pcdFlipXZ != 0,
                                   invalidPoint.get(), pcdZoom.get(), allocator);
      dataType = SURFACE_POINT_CLOUD;
      break;
    default:
      Fail(__LINE__, kNotImplemented, "Unimplemented export file extension");
  }
  serializer.WriteScannerInfo({MakeScanner({MakeSource("Surface.Top", dataType)})});
  serializer.WriteIndexInfo(0);
  serializer.WriteData(std::move(message));
}

void SurfaceFileConverter::writeDirectory(Plovia::ReplaySerializer& serializer) {
  std::vector<Plovia::ReplayFrame> frameList;
  GenerateSurfaceMsgsFromMultiFiles(frameList);
  std::vector<ReplaySourceInfo> sources;
  for (const std::string& tag : scannerFileTags) {
    sources.push_back(MakeSource(tag, UNIFORM_SURFACE));
  }
  serializer.WriteScannerInfo({MakeScanner(std::move(sources))});
  for (const Plovia::ReplayFrame& frame : frameList) {
    serializer.WriteIndexInfo(0);
    for (const Orv::Object<void*>& message : frame) serializer.WriteData(message);
  }
}

void SurfaceFileConverter::exportRecording(const std::string& exportName, FileType exportType) {
  if (exportType == REP || exportType == OVREC) {
    Fail(__LINE__, kNotImplemented, "This conversion hasn't been implemented");
  }
  if (exportType == REC) Fail(__LINE__, kNotSupported, "This conversion is not supported");
  if ((exportType == SRF || exportType == SUR) && dataSourceType != UNIFORM_SURFACE) {
    Fail(__LINE__, kBadInput,
         "The imported replay data doesn't belong to UNIFORM_SURFACE type, which can't be exported "
         "to a file whose extension is .sur/.srf");
  }
  if (exportType == PRO && dataSourceType != UNIFORM_PROFILE) {
    Fail(__LINE__, kBadInput,
         "The imported replay data doesn't belong to UNIFORM_PROFILE type, which can't be exported "
         "to a file whose extension is .pro");
  }
  if (exportType == CSV) return exportCsv(exportName);
  exportFrames(exportName, exportType);
}

void SurfaceFileConverter::exportCsv(const std::string& exportName) {
  parseCSVInfoFields(jobInfo);
  if (dataSourceType == UNIFORM_PROFILE || dataSourceType == PROFILE_POINT_CLOUD) {
    exportProfiles(exportName);
  } else {
    exportFrames(exportName, CSV);
  }
  // Destroying a JSON document takes memory and so may fail, which must not happen any more once
  // the export has been reported.
  jobDocument = nullptr;
}
