// SPDX-License-Identifier: MIT
#include "formats/csv/sections.h"

namespace {

constexpr std::string_view kInfoHead =
    "Info\n"
    "CSV Version,Sensor Count,Trigger Mode,Trigger Rate,Trigger Delay Domain,Trigger Delay,"
    "Operation Mode,XResolution,YResolution,ZResolution,YSpeed,Layout\n";

constexpr std::string_view kDeviceHead =
    "DeviceInfo\n"
    "ID,Model,Version,Exposure Mode,Exposure Count,Exposure 0,Exposure 1,Exposure 2,Exposure 3,"
    "Exposure 4,Exposure Min,Exposure Max,FOV X,FOV Y,FOV Z,FOV Width,FOV Height,FOV Depth,"
    "Transform X,Transform Y,Transform Z,Transform X Angle,Transform Y Angle,Transform Z Angle\n";

constexpr std::string_view kEnd = "End\n\n";

constexpr std::string_view kRecordingFilter =
    "RecordingFilter\nCondition Combination Type\nAny\n\n"
    "Type,Enabled,Result,Selection ID\nMeasurement,No,Pass,0\n\n"
    "Type,Enabled,Result\nAny Measurement,No,Pass\n\n"
    "Type,Enabled,Threshold Case,Range Count Threshold\nAny Data,No,At or Above, 1\nEnd\n\n";

// The cells of the exposures, each with its comma; the smallest and the largest are never told.
void WriteExposures(CsvText& text, const CsvDeviceInfoFields& device) {
  z32s left = device.exposureCount;
  for (const double exposure : device.exposures) {
    left-- > 0 ? text << exposure << "," : text << "-,";
  }
  text << "-,-,";
}

}  // namespace

void WriteSections(CsvText& text, const CsvInfoFields& info, const CsvDeviceInfoFields& device,
                   const zPoint3d64f& resolution) {
  text << kInfoHead;
  text.Row(info.csvVersion, info.sensorCount, info.triggerMode, info.triggerRate,
           info.triggerDelayDomain, info.triggerDelay, info.operationMode, resolution.x,
           resolution.y, resolution.z, info.ySpeed, info.layout);
  text << kEnd << kDeviceHead;
  text << device.id << "," << device.model << "," << device.version << "," << device.exposureMode
       << "," << device.exposureCount << ",";
  WriteExposures(text, device);
  text.Row(device.fieldOfView.x, device.fieldOfView.y, device.fieldOfView.z,
           device.fieldOfViewWidth, device.fieldOfViewHeight, device.fieldOfViewDepth,
           device.translation.x, device.translation.y, device.translation.z, device.angles.x,
           device.angles.y, device.angles.z);
  text << kEnd << kRecordingFilter;
}
