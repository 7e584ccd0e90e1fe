// SPDX-License-Identifier: MIT
// Settings out of the job that an archive carries. Errors of the JSON library pass through.
#include "surfacefileconverter/jobconfig.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "console.h"
#include "sdk/geometry.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/recordingarchive.h"
#include "surfacefileconverter/surfacefileconverter.h"

using nlohmann::json;

namespace {

constexpr const char* kInfoFunction = "SurfaceFileConverter::parseCSVInfoFields";
constexpr const char* kDeviceFunction = "SurfaceFileConverter::parseCSVDeviceInfoFields";
constexpr const char* kNotAnArchive = "The import file type is not OVREC";
constexpr const char* kNoScanner = "Failed to find any scanner";

constexpr zStatus kNotFound = 0;

// Model families that may have configured the scanner, in the order in which they are tried.
constexpr const char* kFamilies[] = {"r1xxx",
                                     "r4xxx",
                                     "r7xxx",
                                     "BrenlowLaserLineProfiler",
                                     "BrenlowFringeSnapshot",
                                     "BrenlowConfocalLineProfiler",
                                     "vantel"};

template <class... Values>
[[noreturn]] void Fail(int line, zStatus status, const char* function, const char* message,
                       const Values&... values) {
  throw Orv::Exception(line, kSourceFile, status, function, message, values...);
}

// Cut towards zero; a real number that does not fit is 0.
z32u ReadUnsigned(const json& value) {
  if (!value.is_number_float()) return value.get<z32u>();
  const auto number = value.get<double>();
  const bool fits = number > -1.0 && number < std::numeric_limits<z32u>::max() + 1.0;
  return fits ? static_cast<z32u>(number) : 0;
}

// The JSON library itself takes a boolean for every kind of number but double.
double ReadReal(const json& value) {
  return value.is_boolean() ? value.get<z32u>() : value.get<double>();
}

double ReadSinglePrecision(const json& value) { return static_cast<double>(value.get<float>()); }

// The first member of an object, in the order of its keys, or the first element of an array; a
// scalar stands for itself.
json& FirstOf(json& value) { return *value.begin(); }

// A setting of a group, or of the group's part `part` in jobs of newer firmware.
json& FindSetting(json& group, const char* key, const char* part) {
  const auto found = group.find(key);
  return found != group.end() ? *found : group[part][key];
}

zTransform3d ReadTransform(json& matrix) {
  // Row by row, 4 x 4; the fourth row is always 0 0 0 1.
  if (matrix.size() != 16) {
    Fail(__LINE__, kNotFound, kDeviceFunction, "The transformMatrix is not right");
  }
  zTransform3d transform;
  const zStatus status = zL3dTransform3d_Identity(&transform);
  if (status != zOK) {
    Fail(__LINE__, status, kDeviceFunction,
         "Failed to initialize the transform3d matrix with the identity matrix");
  }
  auto element = matrix.begin();
  for (z64f& coefficient : transform.elements) coefficient = ReadReal(*element++);
  return transform;
}

void ReadPlacement(const zTransform3d& transform, CsvDeviceInfoFields& device) {
  const auto& [xx, xy, xz, xt, yx, yy, yz, yt, zx, zy, zz, zt] = transform.elements;
  device.translation = {xt, yt, zt};
  device.angles = {std::atan2(zy, zz), std::atan2(yx, xx),
                   std::atan2(-zx, std::sqrt(yx * yx + xx * xx))};
}

void ReadExposures(json& exposures, CsvDeviceInfoFields& device) {
  device.exposureCount = static_cast<z32s>(exposures.size());
  zSize slot = 0;
  for (const json& exposure : exposures) {
    const double value = ReadReal(exposure);
    if (slot < device.exposures.size()) device.exposures[slot++] = value;
  }
}

}  // namespace

void SurfaceFileConverter::parseCSVInfoFields(CsvInfoFields& info) {
  if (!imported) Fail(__LINE__, kNotValidHere, kInfoFunction, "No file has been imported yet");
  if (fileType != OVREC) Fail(__LINE__, kBadInput, kInfoFunction, kNotAnArchive);
  zBytes job;
  GetResourceData(*fileBuffer, "jobs/live/_live.ovjob", job, allocator);
  if (job.empty()) Fail(__LINE__, kMissing, kInfoFunction, "Fail to find the job buffer");
  if (std::ranges::none_of(kFamilies, [&](const char* family) {
        return GetScannerConfig(job, family, jobDocument, allocator);
      })) {
    Fail(__LINE__, kNotFound, kInfoFunction, kNoScanner);
  }

  json& scanner = FirstOf(jobDocument);
  info.sensorCount = static_cast<z32s>(scanner["orv:sensor"].size());
  if (info.sensorCount < 1) {
    Fail(__LINE__, kNotFound, kInfoFunction, "Failed to find any sensor");
  }
  json& parameters = scanner["parameters"];
  auto trigger = parameters.find("trigger");
  if (trigger == parameters.end()) trigger = parameters.find("triggerSettings");
  if (trigger == parameters.end()) {
    Fail(__LINE__, kBadInput, kInfoFunction, "Failed to find the trigger parameter group of R1");
  }
  json& group = *trigger;
  info.triggerMode = ReadUnsigned(group["source"]);
  info.triggerRate = ReadSinglePrecision(group["frameRate"]);
  info.triggerDelay = ReadSinglePrecision(group["delay"]);
  try {
    info.triggerDelayDomain = ReadUnsigned(group["schedulingUnits"]);
  } catch (const std::exception& failure) {
    consoleStatus("[WARNING] ", "Fail to find the field \"schedulingUnits\" (%s) ", failure.what());
  }
  info.operationMode = ReadUnsigned(FindSetting(parameters, "scanMode", "scanModeSettings"));
}

void SurfaceFileConverter::parseCSVDeviceInfoFields(CsvDeviceInfoFields& device) {
  if (!imported) Fail(__LINE__, kNotValidHere, kDeviceFunction, "No files have been imported yet");
  if (fileType != OVREC) Fail(__LINE__, kBadInput, kDeviceFunction, kNotAnArchive);
  if (jobDocument.empty()) Fail(__LINE__, kNotFound, kDeviceFunction, kNoScanner);
  json& sensors = FirstOf(jobDocument)["orv:sensor"];
  if (jobInfo.sensorCount < 1) {
    Fail(__LINE__, kNotFound, kDeviceFunction, "Failed to find the sensor-%d", 0);
  }

  json& sensor = FirstOf(sensors);
  device.id = sensor["serialNumber"].get<std::string>();
  device.model = sensor["model"].get<std::string>();
  device.version = sensor["version"].get<std::string>();
  json& parameters = sensor["parameters"];
  device.exposureMode = ReadUnsigned(FindSetting(parameters, "exposureMode", "exposureSettings"));
  ReadExposures(FindSetting(parameters, "multipleExposures", "exposureSettings"), device);
  json& area = FindSetting(parameters, "activeArea", "activeAreaSettings");
  device.fieldOfView.x = ReadReal(area["x"]);
  device.fieldOfView.y = ReadReal(area["y"]);
  device.fieldOfView.z = ReadReal(area["z"]);
  device.fieldOfViewWidth = ReadReal(area["width"]);
  device.fieldOfViewHeight = ReadReal(area["length"]);
  device.fieldOfViewDepth = ReadReal(area["height"]);
  ReadPlacement(ReadTransform(area["transformMatrix"]), device);
}
