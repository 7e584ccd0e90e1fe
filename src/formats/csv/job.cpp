// SPDX-License-Identifier: MIT
#include "formats/csv/job.h"

#include <cmath>
#include <limits>

#include "formats/archive/reader.h"
#include "sdk/geometry.h"
#include "statuses.h"

using nlohmann::json;

namespace {

constexpr const char* kUnit = "surfacefileconverter";
constexpr Orv::Operation kInfo{kUnit, "SurfaceFileConverter::parseCSVInfoFields"};
constexpr Orv::Operation kDevice{kUnit, "SurfaceFileConverter::parseCSVDeviceInfoFields"};

constexpr zStatus kNotFound = 0;

// Model families that may have configured the scanner, in the order in which they are tried.
constexpr const char* kFamilies[] = {"r1xxx",
                                     "r4xxx",
                                     "r7xxx",
                                     "BrenlowLaserLineProfiler",
                                     "BrenlowFringeSnapshot",
                                     "BrenlowConfocalLineProfiler",
                                     "vantel"};

// Cut towards zero; a real number that does not fit is 0.
z32u ReadUnsigned(const json& value) {
  if (!value.is_number_float()) return value.get<z32u>();
  const auto number = value.get<double>();
  const bool fits = number >= 0.0 && number < std::numeric_limits<z32u>::max() + 1.0;
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
    kDevice.Fail(kNotFound, "The transformMatrix is not right");
  }
  zTransform3d transform;
  kDevice.Require(zL3dTransform3d_Identity(&transform),
                  "Failed to initialize the transform3d matrix with the identity matrix");
  auto element = matrix.begin();
  for (z64f& coefficient : transform.elements) coefficient = ReadReal(*element++);
  return transform;
}

void ReadPlacement(const zTransform3d& transform, CsvDeviceInfoFields& device) {
  const auto& [xx, xy, xz, xt, yx, yy, yz, yt, zx, zy, zz, zt] = transform.elements;
  device.translation = {xt, yt, zt};
  // A zero has no sign: a negative one becomes positive by adding zero.
  device.angles = {std::atan2(zy, zz) + 0, std::atan2(yx, xx) + 0,
                   std::atan2(-zx, std::sqrt(yx * yx + xx * xx)) + 0};
}

void ReadExposures(json& exposures, CsvDeviceInfoFields& device) {
  device.exposureCount = static_cast<z32s>(exposures.size());
  zSize slot = 0;
  for (const json& exposure : exposures) {
    const double value = ReadReal(exposure);
    if (slot < device.exposures.size()) device.exposures[slot++] = value;
  }
}

CsvInfoFields ReadInfo(json& scanner, const Listener& listener) {
  CsvInfoFields info;
  info.sensorCount = static_cast<z32s>(scanner["orv:sensor"].size());
  if (info.sensorCount < 1) kInfo.Fail(kNotFound, "Failed to find any sensor");
  json& parameters = scanner["parameters"];
  auto trigger = parameters.find("trigger");
  if (trigger == parameters.end()) trigger = parameters.find("triggerSettings");
  if (trigger == parameters.end()) {
    kInfo.Fail(kBadInput, "Failed to find the trigger parameter group of R1");
  }
  json& group = *trigger;
  info.triggerMode = ReadUnsigned(group["source"]);
  info.triggerRate = ReadSinglePrecision(group["frameRate"]);
  info.triggerDelay = ReadSinglePrecision(group["delay"]);
  try {
    info.triggerDelayDomain = ReadUnsigned(group["schedulingUnits"]);
  } catch (const std::exception& failure) {
    Tell(listener, NoticeKind::warning, "Fail to find the field \"schedulingUnits\" (%s) ",
         failure.what());
  }
  info.operationMode = ReadUnsigned(FindSetting(parameters, "scanMode", "scanModeSettings"));
  return info;
}

CsvDeviceInfoFields ReadDevice(json& sensor) {
  CsvDeviceInfoFields device;
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
  return device;
}

}  // namespace

CsvJob::CsvJob(zSourcePtr job, const Listener& listener) {
  if (job == nullptr || job->Size() == 0) kInfo.Fail(kMissing, "Fail to find the job buffer");
  scanners_ = GetScannerConfig(std::move(job), kFamilies);
  if (scanners_.empty()) kInfo.Fail(kNotFound, "Failed to find any scanner");
  info_ = ReadInfo(FirstOf(scanners_), listener);
}

const CsvDeviceInfoFields& CsvJob::Device() {
  if (!device_) device_ = ReadDevice(FirstOf(FirstOf(scanners_)["orv:sensor"]));
  return *device_;
}
