// SPDX-License-Identifier: MIT
#include "inspect/conversion.h"

#include "outputfile/writefile.h"
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
void ExportAll(const Recording& recording, FileType exportType) {
  std::vector<std::string> names;
  const Listener nobody;
  ExportFrames(recording, {.all = true}, {"scan.x", "", exportType, kAlloc, nobody, names, true});
}

std::optional<std::string> RefusalOfRecording(FileType fileType, zSourcePtr file) {
  Recording recording;
  auto refusal = Try([&] { recording = OpenRecording(fileType, std::move(file)); });
  // Profiles go into CSV, whatever their heights are.
  if (refusal || (IsProfileType(recording.dataType) && !recording.job.IsEmpty())) return refusal;
  const FileType exportType = FormatOf(recording.dataType);
  refusal = Try([&] { ExportAll(recording, exportType); });
  if (!refusal || exportType == PCD) return refusal;
  return Try([&] { ExportAll(recording, PCD); }) ? refusal : std::nullopt;
}

}  // namespace

std::optional<std::string> RefusalOf(FileType fileType, zSourcePtr file) {
  if (fileType == REC || fileType == REP || fileType == OVREC) {
    return RefusalOfRecording(fileType, std::move(file));
  }
  const ScanFile scan{fileType, std::move(file)};
  return Try(
      [&] { TryContent([&](zStream nowhere) { WriteRecording(scan, {}, kAlloc, {}, nowhere); }); });
}

std::optional<std::string> RefusalOfDirectory(const std::string& path) {
  return Try([&] {
    const SurfaceDirectory directory = OpenSurfaceDirectory(path, kAlloc);
    TryContent([&](zStream nowhere) { WriteRecording(directory, kAlloc, nowhere); });
  });
}
