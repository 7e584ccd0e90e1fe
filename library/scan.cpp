// SPDX-License-Identifier: MIT
#include <cstring>

#include "handles.h"
#include "message.h"
#include "options.h"
#include "scan/box.h"
#include "scan/heights.h"
#include "surfacefileconverter/frameexport.h"

namespace {

constexpr Orv::Operation kCreate{"library", "trelvane_scan_create"};

// In the order of the kinds.
constexpr zType kPointTypes[] = {zType::z16s, zType::zPoint3d16s, zType::z16s, zType::zPoint16s};

zType PointType(ScanKind kind) { return kPointTypes[static_cast<zSize>(kind)]; }

trelvane_scan_kind ToKind(ScanKind kind) {
  return static_cast<trelvane_scan_kind>(static_cast<int>(kind) + 1);
}

void CopyPoint(const zPoint3d64f& from, double* to) {
  to[0] = from.x;
  to[1] = from.y;
  to[2] = from.z;
}

zPoint3d64f ToPoint(const double* from) { return {from[0], from[1], from[2]}; }

static_assert(sizeof(trelvane_stamp) == sizeof(MxStamp));

template <class To, class From>
To CopyStamp(const From& from) {
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

// All but the arrays.
Scan ScanGiven(const trelvane_scan_info& info) {
  if (info.kind < TRELVANE_SCAN_SURFACE || info.kind > TRELVANE_SCAN_POINT_PROFILE) {
    Refuse("There is no such kind of scan");
  }
  if (info.width == 0 || info.length == 0) Refuse("A scan has at least one point");
  Scan scan;
  scan.kind = static_cast<ScanKind>(info.kind - 1);
  if (scan.IsProfile() && info.length != 1) Refuse("A profile has one row");
  scan.width = info.width;
  scan.length = info.length;
  scan.scale = ToPoint(info.scale);
  scan.offset = ToPoint(info.offset);
  scan.resampled = FlagGiven(info.resampled, "resampled");
  if (FlagGiven(info.has_box, "has_box")) {
    scan.box = {ToPoint(info.box_center), ToPoint(info.box_size)};
  }
  if (FlagGiven(info.has_stamp, "has_stamp")) scan.stamp = CopyStamp<MxStamp>(info.stamp);
  return scan;
}

// An array of one item a point. `values` counts the values of `valueSize` bytes that are given.
Orv::Object<void*> CopyArray(const Scan& scan, zType type, const void* items, zSize values,
                             zSize valueSize) {
  const zSize valuesInItem = zType_Size(type) / valueSize;
  if (values % valuesInItem != 0 || values / valuesInItem != z64u{scan.width} * scan.length) {
    Refuse("The values given are not those of width x length points");
  }
  Orv::Object<void*> array;
  zAlloc alloc = &zAllocator::Default();
  kCreate.Require(scan.IsProfile()
                      ? zArray1_Construct(array.Out(), type, scan.width, alloc)
                      : zArray2_Construct(array.Out(), type, scan.length, scan.width, alloc),
                  "There is not enough memory for the scan");
  std::memcpy(zArray_EditableData(array.Get()), items, values * valueSize);
  return array;
}

template <class Item>
const Item* ItemsOf(const Orv::Object<void*>& array, std::size_t valuesInItem, std::size_t* count) {
  const std::size_t values = array ? zArray_Count(array.Get()) * valuesInItem : 0;
  if (count != nullptr) *count = values;
  return values == 0 ? nullptr : static_cast<const Item*>(zArray_Data(array.Get()));
}

template <class Number>
trelvane_status Heights(const trelvane_scan* scan, Number* heights, std::size_t capacity,
                        trelvane_error* error) {
  return Run(error, [&] {
    const zSize count = Given(scan, "scan").scan.Count();
    if (capacity < count) Refuse("There is no room for all heights");
    if (count > 0) FillHeights(scan->scan, &Given(heights, "heights"));
  });
}

FileType TypeToSave(const Scan& scan, const std::string& path) {
  const std::size_t dot = std::min(path.rfind('.'), path.size());
  const std::optional<FileType> type = ExportType(std::string_view(path).substr(dot));
  bool fits = false;
  switch (type.value_or(CSV)) {
    case SUR:
    case SRF:
      fits = scan.kind == ScanKind::surface;
      break;
    case PRO:
      fits = scan.kind == ScanKind::profile;
      break;
    case PCD:
      fits = !scan.IsProfile();
      break;
    default:
      break;
  }
  if (!fits) Refuse("This kind of scan cannot be saved as " + path);
  return *type;
}

}  // namespace

trelvane_status trelvane_scan_create(const trelvane_scan_info* info, const std::int16_t* points,
                                     std::size_t point_values, const std::uint8_t* intensities,
                                     std::size_t intensity_values, trelvane_scan** scan,
                                     trelvane_error* error) {
  return RunToMake(scan, "scan", error, [&] {
    Scan made = ScanGiven(Sized(info, "info"));
    made.points = CopyArray(made, PointType(made.kind), &Given(points, "points"), point_values,
                            sizeof *points);
    if (intensities != nullptr) {
      made.intensities = CopyArray(made, zType::z8u, intensities, intensity_values, 1);
    } else if (intensity_values != 0) {
      Refuse("intensities is NULL");
    }
    return std::make_unique<trelvane_scan>(trelvane_scan{std::move(made)});
  });
}

void trelvane_scan_free(trelvane_scan* scan) { delete scan; }

trelvane_status trelvane_scan_get_info(const trelvane_scan* handle, trelvane_scan_info* info,
                                       trelvane_error* error) {
  return Run(error, [&] {
    const Scan& scan = Given(handle, "scan").scan;
    trelvane_scan_info& told = Sized(info, "info");
    told = {};
    told.size = sizeof told;
    told.kind = ToKind(scan.kind);
    told.width = scan.width;
    told.length = scan.length;
    told.resampled = scan.resampled ? 1 : 0;
    CopyPoint(scan.scale, told.scale);
    CopyPoint(scan.offset, told.offset);
    if (scan.box) {
      told.has_box = 1;
      CopyPoint(scan.box->center, told.box_center);
      CopyPoint(scan.box->size, told.box_size);
    }
    if (scan.stamp) {
      told.has_stamp = 1;
      told.stamp = CopyStamp<trelvane_stamp>(*scan.stamp);
    }
  });
}

const std::int16_t* trelvane_scan_points(const trelvane_scan* scan, std::size_t* count) {
  if (count != nullptr) *count = 0;
  if (scan == nullptr) return nullptr;
  return ItemsOf<std::int16_t>(
      scan->scan.points, zType_Size(PointType(scan->scan.kind)) / sizeof(std::int16_t), count);
}

const std::uint8_t* trelvane_scan_intensities(const trelvane_scan* scan, std::size_t* count) {
  if (count != nullptr) *count = 0;
  return scan == nullptr ? nullptr : ItemsOf<std::uint8_t>(scan->scan.intensities, 1, count);
}

trelvane_status trelvane_scan_heights_f32(const trelvane_scan* scan, float* heights,
                                          std::size_t capacity, trelvane_error* error) {
  return Heights(scan, heights, capacity, error);
}

trelvane_status trelvane_scan_heights_f64(const trelvane_scan* scan, double* heights,
                                          std::size_t capacity, trelvane_error* error) {
  return Heights(scan, heights, capacity, error);
}

trelvane_status trelvane_scan_find_box(const trelvane_scan* scan, double* center, double* extent,
                                       trelvane_error* error) {
  return Run(error, [&] {
    const std::optional<BoundingBox6> box = FindBox(Given(scan, "scan").scan);
    double* const centerGiven = &Given(center, "center");
    double* const extentGiven = &Given(extent, "extent");
    if (!box) throw Failure(TRELVANE_ERROR_NOT_FOUND, "No point of the scan is valid");
    CopyPoint(box->center, centerGiven);
    CopyPoint(box->size, extentGiven);
  });
}

trelvane_status trelvane_scan_save(const trelvane_scan* scan, const char* path,
                                   trelvane_error* error) {
  return Run(error, [&] {
    const Scan& saved = Given(scan, "scan").scan;
    const std::string name = TextGiven(path, "path");
    const FileType type = TypeToSave(saved, name);
    WriteMsg(MakeMessage(saved), name, type, &zAllocator::Default());
  });
}
