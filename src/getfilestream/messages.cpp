// SPDX-License-Identifier: MIT
#include "getfilestream/getfilestream.h"
#include "statuses.h"

namespace {

constexpr const char* kUnit = "getfilestream";

// The setters of one kind of scan.
struct ScanSetters {
  zStatus (*offset)(MxMsg, const zPoint3d64f*) noexcept;
  zStatus (*scale)(MxMsg, const zPoint3d64f*) noexcept;
  zStatus (*points)(MxMsg, zObject) noexcept;
  zStatus (*allocateIntensity)(MxMsg, zType) noexcept;
  zStatus (*intensities)(MxMsg, zObject) noexcept;
};
constexpr ScanSetters kSurface{MxSurfaceMsg_SetOffset, MxSurfaceMsg_SetScale,
                               MxSurfaceMsg_CopyPointsArray, MxSurfaceMsg_AllocateIntensity,
                               MxSurfaceMsg_CopyIntensityArray};
constexpr ScanSetters kProfile{MxProfileMsg_SetOffset, MxProfileMsg_SetScale,
                               MxProfileMsg_CopyPointsArray, MxProfileMsg_AllocateIntensity,
                               MxProfileMsg_CopyIntensityArray};

constexpr Orv::Operation kWrite{kUnit, "GetMsgDataFileStream"};

void RequireWritten(zStatus status, const char* format) {
  if (status != zOK) kWrite.Fail(status, "Failed to get %s file stream", format);
}

// A scan file knows no time: all zero.
void SetStamp(const Orv::Operation& operation, MxMsg message) {
  const MxStamp stamp{};
  operation.Require(MxDataMsg_SetStamp(message, 0, &stamp), "Failed to set stamp");
  operation.Require(MxDataMsg_SetTime(message, stamp.time), "Failed to set time");
  operation.Require(MxDataMsg_SetEncoder(message, stamp.encoder), "Failed to set encoder");
}

}  // namespace

void SetScan(const Orv::Operation& operation, MxMsg message, const Scan& record) {
  const ScanSetters& set = record.IsProfile() ? kProfile : kSurface;
  operation.Require(set.offset(message, &record.offset), "Failed to set offset");
  operation.Require(set.scale(message, &record.scale), "Failed to set scale");
  operation.Require(set.points(message, record.points.Get()), "Failed to copy points array");
  if (!record.intensities) return;
  operation.Require(set.allocateIntensity(message, zType::z8u),
                    "Failed to allocate intensity memory");
  operation.Require(set.intensities(message, record.intensities.Get()),
                    "Failed to copy intensity array");
}

void GetMsgDataFileStream(MxMsg message, FileType fileType, zStream stream, zAlloc alloc) {
  switch (fileType) {
    case SRF:
      return RequireWritten(GetSrfFileStream(message, stream), "srf");
    case SUR:
      return RequireWritten(GetSurFileStream(message, stream), "sur");
    case PRO:
      return RequireWritten(GetProFileStream(message, stream), "pro");
    case PCD:
      return RequireWritten(GetPcdFileStream(message, stream, alloc), "pcd");
    default:
      kWrite.Fail(kNotImplemented, "Unimplemented file type");
  }
}

void GetSurfaceDataFileStream(const Plovia::SurfaceStream& surface, FileType fileType,
                              zStream stream) {
  switch (fileType) {
    case SRF:
      return RequireWritten(GetSrfFileStream(surface, stream), "srf");
    case SUR:
      return RequireWritten(GetSurFileStream(surface, stream), "sur");
    case PCD:
      return RequireWritten(GetPcdFileStream(surface, stream), "pcd");
    default:
      kWrite.Fail(kNotImplemented, "Unimplemented file type");
  }
}

Plovia::SurfaceStream GenerateSurfaceMsgFromBuffer(const zSource& source, FileType fileType,
                                                   zAlloc alloc) {
  constexpr Orv::Operation kOperation{kUnit, "GenerateSurfaceMsgFromBuffer"};
  HeightFile file;
  const char* failed = "";
  switch (fileType) {
    case SRF:
      failed = "Failed to load srf file buffer";
      kOperation.Require(OpenSrfFile(source, file, alloc), failed);
      break;
    case SUR:
      failed = "Failed to load sur file buffer";
      kOperation.Require(OpenSurFile(source, file), failed);
      break;
    default:
      kOperation.Fail(kNotImplemented, "Unimplemented file extension");
  }
  const Scan& scan = file.scan;
  Plovia::SurfaceStream surface{scan.width, scan.length,      scan.scale, scan.offset,
                                {},         scan.intensities, {}};
  surface.heights = [kOperation, file, failed](const Plovia::SurfaceStream::Put& put) {
    constexpr zSize kBlock = zSize{128} << 10;  // stays in the cache
    const zSize count = zSize{file.scan.width} * file.scan.length;
    const auto read = file.read;  // from the first height on
    std::vector<z16s> block(std::min(count, kBlock));
    HeightRange range;
    for (zSize done = 0; done < count; done += block.size()) {
      block.resize(std::min(block.size(), count - done));
      kOperation.Require(read(block), failed);
      range.Include(FindHeightRange(block));
      put(block);
    }
    return GetSurfaceBoundingBox(file.scan, range);
  };
  return surface;
}

void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zSource& file,
                                  const PcdOptions& options, zAlloc alloc,
                                  const Listener& listener) {
  constexpr Orv::Operation kOperation{kUnit, "GenerateSurfaceMsgFromBuffer"};
  SurfaceBuffer record;
  kOperation.Require(LoadPcdFileBuffer(file, record, options, alloc, listener),
                     "Failed to load pcd file buffer");
  kOperation.Require(
      MxSurfaceMsg_ConstructUnresampledSimple(message.Out(), record.width, record.length, alloc),
      "Failed to construct unsampled msg");
  SetScan(kOperation, message.Get(), record);
  kOperation.Require(MxSurfaceMsg_SetIsResampled(message.Get(), false), "Failed to set resample");
  SetStamp(kOperation, message.Get());
  const BoundingBox6 box = GetSurfaceBoundingBox(record);
  kOperation.Require(MxSurfaceMsg_SetBoundingBox(message.Get(), &box),
                     "Fail to set the bounding box for the exported surface");
}

void GenerateProfileMsgFromBuffer(Orv::Object<void*>& message, const zSource& file,
                                  FileType fileType, zAlloc alloc) {
  constexpr Orv::Operation kOperation{kUnit, "GenerateProfileMsgFromBuffer"};
  if (fileType != PRO) kOperation.Fail(kNotImplemented, "Unimplemented file extension");
  Scan record;
  kOperation.Require(LoadProFileBuffer(file, record, alloc), "Failed to load pro file buffer");
  kOperation.Require(MxProfileMsg_Construct(message.Out(), zType::z16s, 1, record.width, alloc),
                     "Failed to construct a Profile Msg");
  SetScan(kOperation, message.Get(), record);
  SetStamp(kOperation, message.Get());
  const BoundingBox6 box = GetProfileBoundingBox(record);
  kOperation.Require(MxProfileMsg_SetBoundingBox(message.Get(), &box),
                     "Fail to set the bounding box for the exported surface message");
}

z8u GetSurfaceIntensity(MxMsg message, z32s x, z32s y) {
  const z8u* intensity = nullptr;
  if (x >= 0 && y >= 0) {
    intensity = MxSurfaceMsg_IntensityAt(message, static_cast<zSize>(y), static_cast<zSize>(x));
  }
  if (intensity == nullptr) {
    constexpr Orv::Operation kOperation{kUnit, "GetSurfaceIntensity"};
    kOperation.Fail(kBadInput, "Invalid pixel index.");
  }
  return *intensity;
}
