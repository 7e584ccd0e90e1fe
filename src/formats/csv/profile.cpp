// SPDX-License-Identifier: MIT
#include "formats/csv/writer.h"

#include <algorithm>
#include <charconv>

#include "formats/csv/sections.h"
#include "outputfile/writefile.h"
#include "scan/points.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter",
                                    "SurfaceFileConverter::writeProfileMsgsToCsv"};
constexpr Orv::Operation kWriteBuffer{"surfacefileconverter", "WriteBuffer"};

// A short recording whose first profile is long can ask for any number of empty cells.
constexpr z64u kMostMissingPoints = z64u{1} << 24;

[[noreturn]] void FailOfType() { kOperation.Fail(kBadInput, "The message's type is not right"); }

// The profile that an entry of the list is, or holds.
Scan FindProfile(const Orv::Object<void*>& entry, bool inArray) {
  if (!entry) kOperation.Fail(kBadInput, "The input msg is empty");
  if (inArray && MxArrayMsg_Count(entry.Get()) == 0) {
    kOperation.Fail(kRefused, "The arrayed message is empty");
  }
  MxMsg profile = inArray ? MxArrayMsg_At(entry.Get(), 0) : entry.Get();
  if (MxMsg_Kind(profile) != MxKind::profile) FailOfType();
  Scan scan;
  kOperation.Require(GetScan(profile, scan), "There is not enough memory for the points");
  return scan;
}

char* WriteIndex(char* to, zSize index) {
  to = std::to_chars(to, to + kLongestReal, index).ptr;
  return WriteEmptyCells(to, 1);
}

// The data section. Columns, scale and offset of the first profile hold for all of them.
class ProfileSection {
 public:
  ProfileSection(CsvText& text, const Scan& first, double exposure)
      : text_(text),
        kind_(first.kind),
        columns_(first.width),
        xAxis_(first.X()),
        offset_(first.offset),
        x_(first.X()),
        z_(first.Z()),
        exposure_(exposure) {}

  void WriteHead(zSize frameCount) {
    text_ << (IsUniform() ? "Profile\n" : "RawProfile\n");
    text_ << "Frame Count,Column Count,X Offset,Y Offset,Z Offset\n";
    text_.Row(frameCount, columns_, offset_.x, offset_.y, offset_.z);
    text_ << "Frame,Source,Time,Encoder,Z Encoder,Inputs,Exposure,Y,Axis,";
    char* to = text_.OpenCells(columns_ * kLongestCell + 1);
    const char* const line = to;
    for (zSize column = 0; column < columns_; ++column) {
      to = IsUniform() ? WriteCell(to, Real(static_cast<z64f>(column), xAxis_))
                       : WriteIndex(to, column);
    }
    text_.CloseCells(EndCells(line, to));
  }

  void WriteProfile(const Scan& profile) {
    if (profile.kind != kind_) FailOfType();
    zObject array = profile.points.Get();
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
    if (profile.intensities) {
      WriteLine(profile, "I", zArray_Items<z8u>(profile.intensities.Get()),
                [&](char* to, z8u intensity) { return intensity_.Write(to, intensity); });
    }
  }

 private:
  bool IsUniform() const { return kind_ == ScanKind::profile; }

  // What a profile has more than the first one is not shown; what it has less is empty.
  template <class Item, class WriteItem>
  void WriteLine(const Scan& profile, const char* axis, std::span<const Item> items,
                 const WriteItem& writeItem) {
    const MxStamp& stamp = *profile.stamp;
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
  ScanKind kind_;
  zSize columns_;
  Axis xAxis_;
  zPoint3d64f offset_;
  AxisCells x_;
  AxisCells z_;
  AxisCells intensity_{Axis{1, 0}};
  double exposure_;
};

}  // namespace

void WriteProfilesCsv(const ProfileMessages& messages, bool inArrays, CsvJob& job,
                      const std::string& path) {
  if (messages.count == 0) kOperation.Fail(kBadInput, "The input msg is empty");
  const auto profile = [&](zSize frame) { return FindProfile(messages.read(frame), inArrays); };
  const Scan first = profile(0);
  const CsvDeviceInfoFields& device = job.Device();
  zSize missing = 0;
  for (zSize i = 1; i < messages.count; ++i) {
    missing += first.width - std::min(first.width, profile(i).width);
  }
  if (missing > kMostMissingPoints) {
    kOperation.Fail(kBadInput, "The first profile has too many points more than the others");
  }
  const auto write = [&](zStream stream) {
    CsvText text(stream);
    WriteSections(text, job.Info(), device, first.scale);
    ProfileSection section(text, first, device.exposures[0]);
    section.WriteHead(messages.count);
    for (zSize i = 0; i < messages.count; ++i) section.WriteProfile(profile(i));
    text << "End\n\n\n";
    text.Finish();
  };
  WriteFile(kWriteBuffer, path, write,
            kOperation.Error(kRefused, "Failed to create the file - %s", path));
}
