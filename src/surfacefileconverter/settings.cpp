// SPDX-License-Identifier: MIT
// What the command line may ask of and set on an import. Each operation checks, in this order,
// that something was imported, that it is of the right kind, then the value.
#include <algorithm>

#include "console.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

constexpr const char* kNothingImported = "No files have been imported yet";

[[noreturn]] void Fail(int line, zStatus status, const char* function, std::string_view message) {
  throw Orv::Exception(line, kSourceFile, status, function, message);
}

}  // namespace

void SurfaceFileConverter::requireImport(int line, const char* function) const {
  if (!imported) Fail(line, kNotValidHere, function, kNothingImported);
}

void SurfaceFileConverter::requireRecording(int importLine, int kindLine,
                                            const char* function) const {
  requireImport(importLine, function);
  if (!recording) {
    Fail(kindLine, kNotValidHere, function, "The imported data is not recording data");
  }
}

void SurfaceFileConverter::requirePcd(int line, const char* function, const char* message) const {
  if (fileType != PCD) Fail(line, kNotValidHere, function, message);
}

void SurfaceFileConverter::setFrameIndex(z32u index) {
  constexpr const char* kFunction = "SurfaceFileConverter::setFrameIndex";
  requireImport(418, kFunction);
  if (!recording) {
    Fail(419, kBadInput, kFunction,
         "Imported data isn't a recording and it doesn't support this option ('-f/--frame')");
  }
  if (multiFileMode) {
    Fail(420, kBadInput, kFunction,
         "You are using the multi-file import mode which doesn't support this option "
         "('-f/--frame')");
  }
  if (index >= frames.size()) {
    Fail(421, kBadInput, kFunction,
         "The frame index should be less than " + std::to_string(frames.size()));
  }
  frameIndex = index;
}

z32u SurfaceFileConverter::getFrameIndex() const {
  constexpr const char* kFunction = "SurfaceFileConverter::getFrameIndex";
  requireImport(427, kFunction);
  if (!recording) {
    Fail(428, kBadInput, kFunction,
         "Imported data isn't a recording data and it doesn't support this option ('-f/--frame')");
  }
  return frameIndex;
}

void SurfaceFileConverter::setPcdWidth(z32u width) {
  constexpr const char* kFunction = "SurfaceFileConverter::setPcdWidth";
  requireImport(434, kFunction);
  requirePcd(435, kFunction, "Configuring surface width is only valid for pcd file imports");
  if (width == 0) {
    Fail(436, kNotValidHere, kFunction, "The input surface with can't be equal to 1");
  }
  pcdWidth = width;
}

void SurfaceFileConverter::setPcdHeight(z32u height) {
  constexpr const char* kFunction = "SurfaceFileConverter::setPcdHeight";
  requireImport(442, kFunction);
  requirePcd(443, kFunction, "Configuring surface height is only valid for the pcd file imports");
  if (height == 0) {
    Fail(444, kNotValidHere, kFunction, "Input surface height can't be equal to 1");
  }
  pcdHeight = height;
}

void SurfaceFileConverter::setPcdFlipXZEnabled(z32u enabled) {
  constexpr const char* kFunction = "SurfaceFileConverter::setPcdFlipXZEnabled";
  requireImport(450, kFunction);
  requirePcd(451, kFunction, "Configuring surface height is only valid for the pcd file imports");
  pcdFlipXZ = enabled;
}

void SurfaceFileConverter::setInvalidPoint(const zPoint3d64f& point) {
  constexpr const char* kFunction = "SurfaceFileConverter::setInvalidPoint";
  if (!imported) Fail(457, kNotValidHere, kFunction, "No files have been imported yet.");
  requirePcd(458, kFunction,
             "Configuring the invalid point is only valid for the pcd file imports.");
  if (invalidPoint == nullptr) invalidPoint = std::make_unique<zPoint3d64f>();
  *invalidPoint = point;
  consoleStatus("[INFO] ", "The point (%f, %f, %f) is configured as the invalid point", point.x,
                point.y, point.z);
}

void SurfaceFileConverter::setPcdZoom(const double& zoom) {
  constexpr const char* kFunction = "SurfaceFileConverter::setPcdZoom";
  requireImport(468, kFunction);
  requirePcd(469, kFunction,
             "Configuring the zooming factor is only valid for the pcd file imports");
  if (pcdZoom == nullptr) pcdZoom = std::make_unique<double>(1.0);
  *pcdZoom = zoom;
  consoleStatus("[INFO] ", "The zooming factor has been set to %f", zoom);
}

bool SurfaceFileConverter::isRecordingData() const {
  requireImport(479, "SurfaceFileConverter::isRecordingData");
  return recording;
}

std::size_t SurfaceFileConverter::getFrameNumber() const {
  requireRecording(490, 491, "SurfaceFileConverter::getFrameNumber");
  return frames.size();
}

DataSourceType SurfaceFileConverter::getDataSourceType() const {
  requireRecording(497, 498, "SurfaceFileConverter::getDataSourceType");
  return dataSourceType;
}

z32u SurfaceFileConverter::getSensorCount() const {
  requireRecording(504, 505, "SurfaceFileConverter::getSensorCount");
  return static_cast<z32u>(
      std::min<zSize>(static_cast<z32u>(jobInfo.sensorCount), scannerInfos.size()));
}
