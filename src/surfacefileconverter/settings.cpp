// SPDX-License-Identifier: MIT
// What the command line may ask of and set on an import. Each operation checks, in this order,
// that something was imported, that it is of the right kind, then the value.
#include <algorithm>

#include "statuses.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

[[noreturn]] void Fail(int line, zStatus status, const char* function, std::string_view message) {
  Orv::Operation{"surfacefileconverter", function}.Fail(status, {message, line});
}

}  // namespace

// The lines of both checks follow each other.
const Recording& SurfaceFileConverter::requireRecording(int line, const char* function,
                                                        const char* otherwise,
                                                        zStatus status) const {
  requireImport(line, function);
  const auto* recording = std::get_if<Recording>(&import);
  if (recording == nullptr) Fail(line + 1, status, function, otherwise);
  return *recording;
}

PcdOptions& SurfaceFileConverter::requirePcd(int line, const char* function, const char* otherwise,
                                             const char* nothingImported) {
  requireImport(line, function, nothingImported);
  const auto* file = std::get_if<ScanFile>(&import);
  if (file == nullptr || file->fileType != PCD) {
    Fail(line + 1, kNotValidHere, function, otherwise);
  }
  return pcdOptions;
}

void SurfaceFileConverter::requireImport(int line, const char* function,
                                         const char* otherwise) const {
  if (!isImported()) Fail(line, kNotValidHere, function, otherwise);
}

void SurfaceFileConverter::setFrameIndex(z32u index) {
  constexpr const char* kFunction = "SurfaceFileConverter::setFrameIndex";
  const zSize frames =
      requireRecording(
          418, kFunction,
          "Imported data isn't a recording and it doesn't support this option ('-f/--frame')",
          kBadInput)
          .frames.size();
  if (index >= frames) {
    Fail(421, kBadInput, kFunction,
         "The frame index should be less than " + std::to_string(frames));
  }
  frameIndex = index;
}

z32u SurfaceFileConverter::getFrameIndex() const {
  requireRecording(
      427, "SurfaceFileConverter::getFrameIndex",
      "Imported data isn't a recording data and it doesn't support this option ('-f/--frame')",
      kBadInput);
  return frameIndex;
}

void SurfaceFileConverter::setPcdWidth(z32u width) {
  constexpr const char* kFunction = "SurfaceFileConverter::setPcdWidth";
  PcdOptions& options =
      requirePcd(434, kFunction, "Configuring surface width is only valid for pcd file imports");
  if (width == 0) {
    Fail(436, kNotValidHere, kFunction, "The input surface with can't be equal to 1");
  }
  options.width = width;
}

void SurfaceFileConverter::setPcdHeight(z32u height) {
  constexpr const char* kFunction = "SurfaceFileConverter::setPcdHeight";
  PcdOptions& options = requirePcd(
      442, kFunction, "Configuring surface height is only valid for the pcd file imports");
  if (height == 0) {
    Fail(444, kNotValidHere, kFunction, "Input surface height can't be equal to 1");
  }
  options.height = height;
}

void SurfaceFileConverter::setPcdFlipXZEnabled(z32u enabled) {
  requirePcd(450, "SurfaceFileConverter::setPcdFlipXZEnabled",
             "Configuring surface height is only valid for the pcd file imports")
      .swapXZ = enabled != 0;
}

void SurfaceFileConverter::setInvalidPoint(const zPoint3d64f& point) {
  requirePcd(457, "SurfaceFileConverter::setInvalidPoint",
             "Configuring the invalid point is only valid for the pcd file imports.",
             "No files have been imported yet.")
      .invalidPoint = point;
  Tell(listener, NoticeKind::info, "The point (%f, %f, %f) is configured as the invalid point",
       point.x, point.y, point.z);
}

void SurfaceFileConverter::setPcdZoom(const double& zoom) {
  requirePcd(468, "SurfaceFileConverter::setPcdZoom",
             "Configuring the zooming factor is only valid for the pcd file imports")
      .zoom = zoom;
  Tell(listener, NoticeKind::info, "The zooming factor has been set to %f", zoom);
}

bool SurfaceFileConverter::isRecordingData() const {
  requireImport(479, "SurfaceFileConverter::isRecordingData");
  return std::holds_alternative<Recording>(import);
}

std::size_t SurfaceFileConverter::getFrameNumber() const {
  return requireRecording(490, "SurfaceFileConverter::getFrameNumber").frames.size();
}

DataSourceType SurfaceFileConverter::getDataSourceType() const {
  return requireRecording(497, "SurfaceFileConverter::getDataSourceType").dataType;
}

z32u SurfaceFileConverter::getSensorCount() const {
  const Recording& recording = requireRecording(504, "SurfaceFileConverter::getSensorCount");
  return static_cast<z32u>(
      std::min<zSize>(static_cast<z32u>(sensorCount), recording.sources.size()));
}
