// SPDX-License-Identifier: MIT
#include "formats/csv/writer.h"

#include "formats/csv/sections.h"
#include "outputfile/writefile.h"
#include "scan/points.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "SurfaceFileConverter::writeMsgToCsv"};
constexpr Orv::Operation kWriteBuffer{"surfacefileconverter", "WriteBuffer"};

// Without points a few bytes can claim four thousand million columns, or rows, to be written.
constexpr z64u kMostLinesWithoutPoints = z64u{1} << 16;

// The columns that both kinds of surfaces begin with, and those that describe the grid.
template <class... Rest>
void WriteRow(CsvText& text, const Scan& scan, const Rest&... rest) {
  const MxStamp& stamp = *scan.stamp;
  text.Row(static_cast<z32s>(stamp.frame), 0, stamp.time, stamp.encoder,
           static_cast<z64u>(stamp.zEncoder), static_cast<z16u>(stamp.inputs), scan.length,
           scan.width, rest...);
}

// The first line has the x of each column; the others have the y of their row, then heights.
void WriteHeights(CsvText& text, const Scan& scan, std::span<const z16s> heights) {
  text << "Part\n"
          "Frame,Source,Time,Encoder,Z Encoder,Inputs,Row Count,Column Count,"
          "X Offset,Y Offset,Z Offset\n";
  WriteRow(text, scan, scan.offset.x, scan.offset.y, scan.offset.z);
  text << "Y\\X,";
  const zSize room = (zSize{scan.width} + 1) * kLongestCell + 1;
  char* to = text.OpenCells(room);
  const char* line = to;
  for (zSize column = 0; column < scan.width; ++column)
    to = WriteCell(to, Real(static_cast<z64f>(column), scan.X()));
  text.CloseCells(EndCells(line, to));
  AxisCells z(scan.Z());
  for (zSize row = 0; row < scan.length; ++row) {
    to = WriteCell(text.OpenCells(room), Real(static_cast<z64f>(row), scan.Y()));
    line = to;
    for (const z16s height : heights.subspan(row * scan.width, scan.width)) {
      to = z.Write(to, height);
    }
    text.CloseCells(EndCells(line, to));
  }
}

// A line for each row, with three cells for each of its points.
void WritePoints(CsvText& text, const Scan& scan, std::span<const zPoint3d16s> points) {
  text << "SurfacePointCloud\n"
          "Frame,Source,Time,Encoder,Z Encoder,Inputs,Row Count,Column Count,"
          "X Resolution,Y Resolution,Z Resolution,X Offset,Y Offset,Z Offset\n";
  WriteRow(text, scan, scan.scale.x, scan.scale.y, scan.scale.z, scan.offset.x, scan.offset.y,
           scan.offset.z);
  text << "X, Y, Z\n";
  AxisCells x(scan.X());
  AxisCells y(scan.Y());
  AxisCells z(scan.Z());
  for (zSize row = 0; row < scan.length; ++row) {
    char* to = text.OpenCells(zSize{scan.width} * 3 * kLongestCell + 1);
    const char* const line = to;
    for (const zPoint3d16s& point : points.subspan(row * scan.width, scan.width)) {
      if (IsValid(point)) {
        to = z.Write(y.Write(x.Write(to, point.x), point.y), point.z);
      } else {
        to = WriteEmptyCells(to, 3);
      }
    }
    text.CloseCells(EndCells(line, to));
  }
}

}  // namespace

void WriteSurfaceCsv(MxMsg message, DataSourceType dataType, CsvJob& job, const std::string& path) {
  if (message == nullptr) kOperation.Fail(kBadInput, "The inputted msg is Null");
  const CsvDeviceInfoFields& device = job.Device();
  if (IsProfileType(dataType) || MxMsg_Kind(message) != MxKind::surface) {
    kOperation.Fail(kNotImplemented, "Unimplemented conversion");
  }
  Scan scan;
  kOperation.Require(GetScan(message, scan), "There is not enough memory for the points");
  if (scan.Count() == 0 && z64u{scan.width} + scan.length > kMostLinesWithoutPoints) {
    kOperation.Fail(kBadInput, "The surface has too many rows or columns without points");
  }

  const auto write = [&](zStream stream) {
    CsvText text(stream);
    WriteSections(text, job.Info(), device, scan.scale);
    // The recording's data type is that of its last source; the others may differ.
    if (scan.kind == ScanKind::surface) {
      WriteHeights(text, scan, zArray_Items<z16s>(scan.points.Get()));
    } else {
      WritePoints(text, scan, zArray_Items<zPoint3d16s>(scan.points.Get()));
    }
    text << "End\n";
    text.Finish();
  };
  WriteFile(kWriteBuffer, path, write,
            kOperation.Error(kRefused, "Failed to create the file - %s", path));
}
