// SPDX-License-Identifier: MIT
// Recordings of profiles as CSV, all frames in one file.
#include <algorithm>
#include <charconv>

#include "surfacefileconverter/csvsections.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/filenames.h"
#include "surfacefileconverter/surfacefileconverter.h"
#include "surfacefileconverter/wholefile.h"

using Messages = std::vector<Orv::Object<void*>>;

namespace {

constexpr const char* kFunction = "SurfaceFileConverter::writeProfileMsgsToCsv";

// A short recording whose first profile is long can ask for any number of empty cells.
constexpr z64u kMostMissingPoints = z64u{1} << 28;

[[noreturn]] void Fail(int line, zStatus status, const char* message) {
  throw Orv::Exception(line, kSourceFile, status, kFunction, message);
}

bool IsProfile(z16u dataType) {
  return dataType == UNIFORM_PROFILE || dataType == PROFILE_POINT_CLOUD;
}

bool IsValid(const zPoint16s& point) { return point.x != kInvalidRaw && point.z != kInvalidRaw; }

// The profile that an entry of the list is, or holds.
MxMsg FindProfile(const Orv::Object<void*>& entry, bool inArray) {
  if (!entry) Fail(__LINE__, kBadInput, "The input msg is empty");
  if (inArray && MxArrayMsg_Count(entry.Get()) == 0) {
    Fail(__LINE__, 0, "The arrayed message is empty");
  }
  const MxMsg profile = inArray ? MxArrayMsg_At(entry.Get(), 0) : entry.Get();
  if (MxMsg_Kind(profile) != MxKind::profile) {
    Fail(__LINE__, kBadInput, "The message's type is not right");
  }
  if (MxProfileMsg_PointsArray(profile, 0) == nullptr ||
      (MxProfileMsg_HasIntensity(profile) && MxProfileMsg_IntensityArray(profile, 0) == nullptr)) {
    Fail(__LINE__, zERROR_MEMORY, "There is not enough memory for the points");
  }
  return profile;
}

char* WriteIndex(char* to, zSize index) {
  to = std::to_chars(to, to + kLongestReal, index).ptr;
  return WriteEmptyCells(to, 1);
}

// The data section. Columns, scale and offset of the first profile hold for all of them.
class ProfileSection {
 public:
  ProfileSection(CsvText& text, MxMsg first, double exposure)
      : text_(text),
        type_(MxProfileMsg_PointType(first)),
        columns_(MxProfileMsg_PointCount(first)),
        scale_(*MxProfileMsg_Scale(first)),
        offset_(*MxProfileMsg_Offset(first)),
        x_(scale_.x, offset_.x),
        z_(scale_.z, offset_.z),
        exposure_(exposure) {}

  // Makes room for the lines of some profiles, so that the text is not moved while it grows.
  void Reserve(const Messages& messages, bool inArrays) {
    constexpr zSize kLongestStamp = 160;
    const zSize lines = IsUniform() ? 2 : 3;
    zSize points = 0;
    for (const auto& message : messages) points += CountShown(FindProfile(message, inArrays));
    const zSize missing = messages.size() * columns_ - points;
    if (missing > kMostMissingPoints) {
      Fail(__LINE__, kBadInput, "The first profile has too many points more than the others");
    }
    text_.Reserve((messages.size() * kLongestStamp + points * kLongestCell + missing) * lines +
                  (columns_ + 1) * kLongestCell);
  }

  void WriteHead(zSize frameCount) {
    text_ << (IsUniform() ? "Profile\n" : "RawProfile\n");
    text_ << "Frame Count,Column Count,X Offset,Y Offset,Z Offset\n";
    text_.Row(frameCount, columns_, offset_.x, offset_.y, offset_.z);
    text_ << "Frame,Source,Time,Encoder,Z Encoder,Inputs,Exposure,Y,Axis,";
    char* to = text_.OpenCells(columns_ * kLongestCell + 1);
    const char* const line = to;
    for (zSize column = 0; column < columns_; ++column) {
      to = IsUniform() ? WriteCell(to, static_cast<double>(column) * scale_.x + offset_.x)
                       : WriteIndex(to, column);
    }
    text_.CloseCells(EndCells(line, to));
  }

  void WriteProfile(MxMsg profile) {
    if (MxProfileMsg_PointType(profile) != type_) {
      Fail(__LINE__, kBadInput, "The message's type is not right");
    }
    const zArray1 array = MxProfileMsg_PointsArray(profile, 0);
    if (IsUniform()) {
      WriteLine(profile, "Z", zArray_Items<z16s>(array),
                [&](char* to, z16s height) { return z_.Write(to, height); });
    } else {
      const auto points = zArray_Items<zPoint16s>(array);
      WriteLine(profile, "X", points, [&](char* to, const zPoint16s& point) {
        return x_.Write(to, IsValid(point) ? point.x : kInvalidRaw);
      });
      WriteLine(profile, "Z", points, [&](char* to, const zPoint16s& point) {
        return z_.Write(to, IsValid(point) ? point.z : kInvalidRaw);
      });
    }
    if (MxProfileMsg_HasIntensity(profile)) {
      WriteLine(profile, "I", zArray_Items<z8u>(MxProfileMsg_IntensityArray(profile, 0)),
                [&](char* to, z8u intensity) { return intensity_.Write(to, intensity); });
    }
  }

 private:
  bool IsUniform() const { return type_ == zType::z16s; }

  zSize CountShown(MxMsg profile) const {
    return std::min<zSize>(MxProfileMsg_PointCount(profile), columns_);
  }

  // What a profile has more than the first one is not shown; what it has less is empty.
  template <class Item, class WriteItem>
  void WriteLine(MxMsg profile, const char* axis, std::span<const Item> items,
                 const WriteItem& writeItem) {
    const MxStamp& stamp = *MxDataMsg_Stamp(profile);
    text_ << stamp.frame << "," << 0 << "," << stamp.time << "," << stamp.encoder << ","
          << stamp.zEncoder << "," << static_cast<z16u>(stamp.inputs) << "," << exposure_ << ","
          << 0 << "," << axis << ",";
    const zSize shown = std::min(items.size(), columns_);
    char* to = text_.OpenCells(shown * kLongestCell + (columns_ - shown) + 1);
    const char* const line = to;
    for (const Item& item : items.first(shown)) to = writeItem(to, item);
    to = WriteEmptyCells(to, columns_ - shown);
    text_.CloseCells(EndCells(line, to));
  }

  CsvText& text_;
  zType type_;
  zSize columns_;
  zPoint3d64f scale_;
  zPoint3d64f offset_;
  AxisCells x_;
  AxisCells z_;
  AxisCells intensity_{1, 0};
  double exposure_;
};

}  // namespace

void SurfaceFileConverter::exportProfiles(const std::string& exportName) {
  std::vector<std::string> tags = scannerFileTags;
  tags.resize(scannerInfos.size());  // a directory import that failed may have emptied them
  const std::vector<std::string> names =
      tags.size() == 1 ? std::vector{exportName} : GetAppendedFileNames(exportName, tags);
  exportedFileNames.clear();
  for (zSize j = 0; j < scannerInfos.size(); ++j) {
    if (!IsProfile(scannerInfos[j].dataType)) continue;
    Messages messages;
    messages.reserve(frames.size());
    // A frame may be shorter than others; what is missing is an empty handle.
    for (const Plovia::ReplayFrame& frame : frames) {
      messages.push_back(j < frame.size() ? frame[j] : Orv::Object<void*>());
    }
    writeProfileMsgsToCsv(messages, scannerInfos[j].arrayed != 0, names[j]);
    exportedFileNames.push_back(names[j]);
  }
}

void SurfaceFileConverter::writeProfileMsgsToCsv(const Messages& messages, bool inArrays,
                                                 const std::string& path) {
  if (messages.empty()) Fail(__LINE__, kBadInput, "The input msg is empty");
  if (!IsProfile(dataSourceType)) Fail(__LINE__, kBadInput, "The message's type is not right");
  const MxMsg first = FindProfile(messages.front(), inArrays);
  CsvDeviceInfoFields device;
  parseCSVDeviceInfoFields(device);
  jobInfo.resolution = *MxDataMsg_Scale(first);

  CsvText text;
  WriteSections(text, jobInfo, device);
  ProfileSection section(text, first, device.exposures[0]);
  section.Reserve(messages, inArrays);
  section.WriteHead(messages.size());
  for (const auto& message : messages) section.WriteProfile(FindProfile(message, inArrays));
  text << "End\n\n\n";
  WriteBuffer(text.Bytes(), path,
              {__LINE__, kSourceFile, 0, kFunction, "Failed to create the file - %s", path});
}
