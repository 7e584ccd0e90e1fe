// SPDX-License-Identifier: MIT
#include "inspect/conversion.h"

#include "surfacefileconverter/frameexport.h"
#include "surfacefileconverter/recordingexport.h"

namespace {

zAllocator* const kAlloc = &zAllocator::Default();

template <class Convert>
std::optional<std::string> Try(const Convert& convert) {
  try {
    convert();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return std::nullopt;
}

// The format of scan files that takes most of the recordings of this type.
FileType FormatOf(DataSourceType dataType) {
  return dataType == UNIFORM_SURFACE ? SRF : dataType == UNIFORM_PROFILE ? PRO : PCD;
}

// Every frame as scan files of one format.
void ExportAll(const std::shared_ptr<const zBytes>& file, FileType fileType, FileType exportType) {
  Recording recording = ReadRecording(fileType, file);
  std::vector<std::string> names;
  const Listener nobody;
  const FrameChoice everyFrame{.all = true, .release = true};
  ExportFrames(recording, everyFrame, {"scan.x", "", exportType, kAlloc, nobody, names, true});
}

std::optional<std::string> RefusalOfRecording(FileType fileType, zBytes bytes) {
  const auto file = std::make_shared<const zBytes>(std::move(bytes));
  FileType exportType = PCD;
  bool inJob = false;
  auto refusal = Try([&] {
    const Recording recording = ReadRecording(fileType, file);
    exportType = FormatOf(recording.dataType);
    // Profiles go into CSV, whatever their heights are.
    inJob = IsProfileType(recording.dataType) && !recording.job.content.empty();
  });
  if (refusal || inJob) return refusal;
  refusal = Try([&] { ExportAll(file, fileType, exportType); });
  if (!refusal || exportType == PCD) return refusal;
  return Try([&] { ExportAll(file, fileType, PCD); }) ? refusal : std::nullopt;
}

}  // namespace

std::optional<std::string> RefusalOf(FileType fileType, zBytes bytes) {
  if (fileType == REC || fileType == REP || fileType == OVREC) {
    return RefusalOfRecording(fileType, std::move(bytes));
  }
  return Try([&] {
    const auto recording = MakeRecording(ScanFile{fileType, std::move(bytes)}, {}, kAlloc, {});
    static_cast<void>(recording.GetReplayStream(false));
  });
}

std::optional<std::string> RefusalOfDirectory(const std::string& path) {
  return Try([&] {
    const auto recording = MakeRecording(OpenSurfaceDirectory(path, kAlloc), kAlloc);
    static_cast<void>(recording.GetReplayStream(false));
  });
}
