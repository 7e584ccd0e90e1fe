// SPDX-License-Identifier: MIT
#include "surfacefileconverter/csvsections.h"

#include <tuple>

namespace {

// A column shows a member of the section's record, or a coordinate of such a member.
template <class Record, class Value>
struct Column {
  const char* name;
  Value Record::*value;

  void Write(CsvText& text, const Record& record) const { text << record.*value; }
};
template <class Record, class Value>
Column(const char*, Value Record::*) -> Column<Record, Value>;

template <class Record>
struct PointColumn {
  const char* name;
  zPoint3d64f Record::*point;
  z64f zPoint3d64f::*coordinate;

  void Write(CsvText& text, const Record& record) const { text << record.*point.*coordinate; }
};
template <class Record>
PointColumn(const char*, zPoint3d64f Record::*, z64f zPoint3d64f::*) -> PointColumn<Record>;

struct ExposureColumn {
  const char* name;
  z32s slot;

  void Write(CsvText& text, const CsvDeviceInfoFields& device) const {
    if (slot < device.exposureCount) {
      text << device.exposures[static_cast<zSize>(slot)];
    } else {
      text << "-";
    }
  }
};

struct DashColumn {
  const char* name;

  static void Write(CsvText& text, const CsvDeviceInfoFields&) { text << "-"; }
};

constexpr std::tuple kInfo{
    Column{"CSV Version", &CsvInfoFields::csvVersion},
    Column{"Sensor Count", &CsvInfoFields::sensorCount},
    Column{"Trigger Mode", &CsvInfoFields::triggerMode},
    Column{"Trigger Rate", &CsvInfoFields::triggerRate},
    Column{"Trigger Delay Domain", &CsvInfoFields::triggerDelayDomain},
    Column{"Trigger Delay", &CsvInfoFields::triggerDelay},
    Column{"Operation Mode", &CsvInfoFields::operationMode},
    PointColumn{"XResolution", &CsvInfoFields::resolution, &zPoint3d64f::x},
    PointColumn{"YResolution", &CsvInfoFields::resolution, &zPoint3d64f::y},
    PointColumn{"ZResolution", &CsvInfoFields::resolution, &zPoint3d64f::z},
    Column{"YSpeed", &CsvInfoFields::ySpeed},
    Column{"Layout", &CsvInfoFields::layout},
};

constexpr std::tuple kDeviceInfo{
    Column{"ID", &CsvDeviceInfoFields::id},
    Column{"Model", &CsvDeviceInfoFields::model},
    Column{"Version", &CsvDeviceInfoFields::version},
    Column{"Exposure Mode", &CsvDeviceInfoFields::exposureMode},
    Column{"Exposure Count", &CsvDeviceInfoFields::exposureCount},
    ExposureColumn{"Exposure 0", 0},
    ExposureColumn{"Exposure 1", 1},
    ExposureColumn{"Exposure 2", 2},
    ExposureColumn{"Exposure 3", 3},
    ExposureColumn{"Exposure 4", 4},
    DashColumn{"Exposure Min"},
    DashColumn{"Exposure Max"},
    PointColumn{"FOV X", &CsvDeviceInfoFields::fieldOfView, &zPoint3d64f::x},
    PointColumn{"FOV Y", &CsvDeviceInfoFields::fieldOfView, &zPoint3d64f::y},
    PointColumn{"FOV Z", &CsvDeviceInfoFields::fieldOfView, &zPoint3d64f::z},
    Column{"FOV Width", &CsvDeviceInfoFields::fieldOfViewWidth},
    Column{"FOV Height", &CsvDeviceInfoFields::fieldOfViewHeight},
    Column{"FOV Depth", &CsvDeviceInfoFields::fieldOfViewDepth},
    PointColumn{"Transform X", &CsvDeviceInfoFields::translation, &zPoint3d64f::x},
    PointColumn{"Transform Y", &CsvDeviceInfoFields::translation, &zPoint3d64f::y},
    PointColumn{"Transform Z", &CsvDeviceInfoFields::translation, &zPoint3d64f::z},
    PointColumn{"Transform X Angle", &CsvDeviceInfoFields::angles, &zPoint3d64f::x},
    PointColumn{"Transform Y Angle", &CsvDeviceInfoFields::angles, &zPoint3d64f::y},
    PointColumn{"Transform Z Angle", &CsvDeviceInfoFields::angles, &zPoint3d64f::z},
};

constexpr std::string_view kRecordingFilter =
    "RecordingFilter\nCondition Combination Type\nAny\n\n"
    "Type,Enabled,Result,Selection ID\nMeasurement,No,Pass,0\n\n"
    "Type,Enabled,Result\nAny Measurement,No,Pass\n\n"
    "Type,Enabled,Threshold Case,Range Count Threshold\nAny Data,No,At or Above, 1\nEnd\n\n";

// Column names, then one row of values.
template <class Columns, class Record>
void WriteSection(CsvText& text, const char* title, const Columns& columns, const Record& record) {
  text << title << "\n";
  std::apply([&](const auto&... column) { text.Row(column.name...); }, columns);
  const auto writeRow = [&](const auto& first, const auto&... others) {
    first.Write(text, record);
    ((text << ",", others.Write(text, record)), ...);
  };
  std::apply(writeRow, columns);
  text << "\nEnd\n\n";
}

}  // namespace

void WriteSections(CsvText& text, const CsvInfoFields& info, const CsvDeviceInfoFields& device) {
  WriteSection(text, "Info", kInfo, info);
  WriteSection(text, "DeviceInfo", kDeviceInfo, device);
  text << kRecordingFilter;
}
