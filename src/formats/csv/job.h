// SPDX-License-Identifier: MIT
// What a CSV export tells about the recording's job: its trigger, its sensor.
#pragma once

#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "notices.h"

// The row "Info".
struct CsvInfoFields {
  z32s csvVersion = 2;
  z32s sensorCount = 0;
  z32u triggerMode = 0;
  double triggerRate = 0;
  z32u triggerDelayDomain = 0;
  double triggerDelay = 0;
  z32u operationMode = 0;
  double ySpeed = 100;
  z32u layout = 0;
};

// The row "DeviceInfo": the first sensor.
struct CsvDeviceInfoFields {
  std::string id;
  std::string model;
  std::string version;
  z32u exposureMode = 0;
  z32s exposureCount = 0;  // of the job, which may have more than are kept
  std::array<double, 5> exposures{};
  zPoint3d64f fieldOfView{};
  double fieldOfViewWidth = 0;
  double fieldOfViewHeight = 0;  // along the scan: the job calls it length
  double fieldOfViewDepth = 0;   // the job calls it height
  zPoint3d64f translation{};
  zPoint3d64f angles{};  // radians; y is the turn about the axis of height, z the one about y
};

// The settings of a job, which is a tar archive. Errors are Orv::Exception, or those of the JSON
// library.
class CsvJob {
 public:
  // Reads the scanner's settings; an empty job is an error.
  CsvJob(zSourcePtr job, const Listener& listener);

  const CsvInfoFields& Info() const { return info_; }
  // The sensor's settings, which are read when they are first asked for.
  const CsvDeviceInfoFields& Device();

 private:
  nlohmann::json scanners_;  // what a scanner's configuration tells of scanners
  CsvInfoFields info_;
  std::optional<CsvDeviceInfoFields> device_;
};
