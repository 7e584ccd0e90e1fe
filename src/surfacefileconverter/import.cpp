// SPDX-License-Identifier: MIT
#include <algorithm>

#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/recording.h"
#include "surfacefileconverter/recordingarchive.h"
#include "surfacefileconverter/surfacefileconverter.h"
#include "surfacefileconverter/wholefile.h"

namespace {

constexpr const char* kFunction = "SurfaceFileConverter::importFile";

// Exactly these forms are accepted.
constexpr std::pair<std::string_view, FileType> kImportExtensions[] = {
    {".rec", REC}, {".rep", REP}, {".srf", SRF}, {".sur", SUR},     {".SUR", SUR},
    {".pro", PRO}, {".PRO", PRO}, {".pcd", PCD}, {".ovrec", OVREC},
};

[[noreturn]] void Fail(int line, const char* message) {
  throw Orv::Exception(line, kSourceFile, kBadInput, kFunction, message);
}

FileType ParseImportType(std::string_view extension) {
  const auto* known = std::ranges::find(kImportExtensions, extension,
                                        &std::pair<std::string_view, FileType>::first);
  if (known == std::end(kImportExtensions)) {
    Fail(137, "The extension of the input filename is not supported");
  }
  return known->second;
}

}  // namespace

void SurfaceFileConverter::importFile(std::string fileName) {
  const std::size_t dot = fileName.rfind('.');
  if (dot == std::string::npos) Fail(120, "Failed to parse the extension of the input filename");
  fileType = ParseImportType(std::string_view(fileName).substr(dot));
  inputBaseName = fileName.substr(0, dot);
  imported = false;
  frameIndex = 0;
  replayBuffer = {};
  frames.clear();
  fileBuffer = std::make_shared<zBytes>();
  ReadFileBuffer(fileName, *fileBuffer);
  switch (fileType) {
    case SRF:
    case SUR:
    case PRO:
    case PCD:
      recording = false;
      imported = true;
      break;
    case REC:
    case REP:
      replayBuffer = *fileBuffer;
      importRecording();
      break;
    case OVREC:
      replayBuffer = GetReplayData(*fileBuffer, allocator);
      importRecording();
      break;
    default:
      Fail(113, "Unsupported file extension");
  }
}

void SurfaceFileConverter::importRecording() {
  Plovia::ReplaySerializer serializer;
  serializer.LoadBuffer(replayBuffer, fileBuffer);
  GetCloudsInfoFromRecordingData(serializer, scannerInfos, dataSourceType, arrayed, frames);
  sanitizeScannerNames();
  imported = true;
  recording = true;
}

// The names become parts of file names, so they lose what no file name may hold.
void SurfaceFileConverter::sanitizeScannerNames() {
  constexpr std::string_view kNotInFileNames = "*/:<>?\\|";
  scannerFileTags.clear();
  for (const ReplaySourceInfo& source : scannerInfos) {
    std::string& tag = scannerFileTags.emplace_back(source.displayName);
    std::erase_if(tag, [&](char c) { return kNotInFileNames.find(c) != std::string_view::npos; });
  }
}
