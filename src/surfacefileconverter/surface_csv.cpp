// SPDX-License-Identifier: MIT
// A surface as CSV.
#include "surfacefileconverter/csvsections.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/surfacefileconverter.h"
#include "surfacefileconverter/wholefile.h"

namespace {

constexpr const char* kFunction = "SurfaceFileConverter::writeMsgToCsv";

// Without points a few bytes can claim four thousand million columns, or rows, to be written.
constexpr z64u kMostLinesWithoutPoints = z64u{1} << 20;

[[noreturn]] void Fail(int line, zStatus status, const char* message) {
  throw Orv::Exception(line, kSourceFile, status, kFunction, message);
}

struct Grid {
  explicit Grid(MxMsg surface)
      : scale(*MxSurfaceMsg_Scale(surface)),
        offset(*MxSurfaceMsg_Offset(surface)),
        width(MxSurfaceMsg_Width(surface)),
        length(MxSurfaceMsg_Length(surface)),
        stamp(*MxDataMsg_Stamp(surface)) {}

  double X(zSize column) const { return static_cast<double>(column) * scale.x + offset.x; }
  double Y(zSize row) const { return static_cast<double>(row) * scale.y + offset.y; }

  // The columns that both kinds of surfaces begin with, and those that describe the grid.
  template <class... Rest>
  void WriteRow(CsvText& text, const Rest&... rest) const {
    text.Row(static_cast<z32s>(stamp.frame), 0, stamp.time, stamp.encoder,
             static_cast<z64u>(stamp.zEncoder), static_cast<z16u>(stamp.inputs), length, width,
             rest...);
  }

  zPoint3d64f scale;
  zPoint3d64f offset;
  zSize width;
  zSize length;
  MxStamp stamp;
};

// The first line has the x of each column; the others have the y of their row, then heights.
void WriteHeights(CsvText& text, const Grid& grid, std::span<const z16s> heights) {
  text << "Part\n"
          "Frame,Source,Time,Encoder,Z Encoder,Inputs,Row Count,Column Count,"
          "X Offset,Y Offset,Z Offset\n";
  grid.WriteRow(text, grid.offset.x, grid.offset.y, grid.offset.z);
  text << "Y\\X,";
  const zSize cells = grid.width + heights.size() + grid.length;
  char* to = text.OpenCells(cells * kLongestCell + grid.length + 1);
  const char* line = to;
  for (zSize column = 0; column < grid.width; ++column) to = WriteCell(to, grid.X(column));
  to = EndCells(line, to);
  AxisCells z(grid.scale.z, grid.offset.z);
  for (zSize row = 0; row < grid.length; ++row) {
    to = WriteCell(to, grid.Y(row));
    line = to;
    for (const z16s height : heights.subspan(row * grid.width, grid.width)) {
      to = z.Write(to, height);
    }
    to = EndCells(line, to);
  }
  text.CloseCells(to);
}

bool IsValid(const zPoint3d16s& point) {
  return point.x != kInvalidRaw && point.y != kInvalidRaw && point.z != kInvalidRaw;
}

// A line for each row, with three cells for each of its points.
void WritePoints(CsvText& text, const Grid& grid, std::span<const zPoint3d16s> points) {
  text << "SurfacePointCloud\n"
          "Frame,Source,Time,Encoder,Z Encoder,Inputs,Row Count,Column Count,"
          "X Resolution,Y Resolution,Z Resolution,X Offset,Y Offset,Z Offset\n";
  grid.WriteRow(text, grid.scale.x, grid.scale.y, grid.scale.z, grid.offset.x, grid.offset.y,
                grid.offset.z);
  text << "X, Y, Z\n";
  AxisCells x(grid.scale.x, grid.offset.x);
  AxisCells y(grid.scale.y, grid.offset.y);
  AxisCells z(grid.scale.z, grid.offset.z);
  char* to = text.OpenCells(points.size() * 3 * kLongestCell + grid.length);
  for (zSize row = 0; row < grid.length; ++row) {
    const char* const line = to;
    for (const zPoint3d16s& point : points.subspan(row * grid.width, grid.width)) {
      if (IsValid(point)) {
        to = z.Write(y.Write(x.Write(to, point.x), point.y), point.z);
      } else {
        to = WriteEmptyCells(to, 3);
      }
    }
    to = EndCells(line, to);
  }
  text.CloseCells(to);
}

}  // namespace

void SurfaceFileConverter::writeMsgToCsv(const Orv::Object<void*>& message, z32s /*index*/,
                                         const std::string& path) {
  if (!message) Fail(__LINE__, kBadInput, "The inputted msg is Null");
  CsvDeviceInfoFields device;
  parseCSVDeviceInfoFields(device);
  if ((dataSourceType != UNIFORM_SURFACE && dataSourceType != SURFACE_POINT_CLOUD) ||
      MxMsg_Kind(message.Get()) != MxKind::surface) {
    Fail(__LINE__, kNotImplemented, "Unimplemented conversion");
  }
  const Grid grid(message.Get());
  const zArray2 points = MxSurfaceMsg_PointsArray(message.Get(), 0);
  if (points == nullptr) Fail(__LINE__, zERROR_MEMORY, "There is not enough memory for the points");
  if (zArray_Count(points) == 0 && grid.width + grid.length > kMostLinesWithoutPoints) {
    Fail(__LINE__, kBadInput, "The surface has too many rows or columns without points");
  }

  jobInfo.resolution = grid.scale;
  CsvText text;
  WriteSections(text, jobInfo, device);
  // The recording's data type is that of its last source; the others may differ.
  if (zArray_ItemType(points) == zType::z16s) {
    WriteHeights(text, grid, zArray_Items<z16s>(points));
  } else {
    WritePoints(text, grid, zArray_Items<zPoint3d16s>(points));
  }
  text << "End\n";
  WriteBuffer(text.Bytes(), path,
              {__LINE__, kSourceFile, 0, kFunction, "Failed to create the file - %s", path});
}
