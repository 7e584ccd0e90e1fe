// SPDX-License-Identifier: MIT
#include "getfilestream/getfilestream.h"

namespace {

constexpr const char* kFile = "getfilestream";

// Turns a status other than 1 into an exception of one operation.
struct Require {
  const char* function;

  void operator()(int line, zStatus status, const char* message) const {
    if (status != zOK) throw Orv::Exception(line, kFile, status, function, message);
  }
};

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

template <class Record>
void SetScan(const Require& require, const ScanSetters& set, MxMsg message, const Record& record) {
  require(__LINE__, set.offset(message, &record.offset), "Failed to set offset");
  require(__LINE__, set.scale(message, &record.scale), "Failed to set scale");
  require(__LINE__, set.points(message, record.points.Get()), "Failed to copy points array");
  if (record.hasIntensity == 0) return;
  require(__LINE__, set.allocateIntensity(message, zType::z8u),
          "Failed to allocate intensity memory");
  require(__LINE__, set.intensities(message, record.intensities.Get()),
          "Failed to copy intensity array");
}

// A scan file knows no time: all zero.
void SetStamp(const Require& require, MxMsg message) {
  const MxStamp stamp{};
  require(__LINE__, MxDataMsg_SetStamp(message, 0, &stamp), "Failed to set stamp");
  require(__LINE__, MxDataMsg_SetTime(message, stamp.time), "Failed to set time");
  require(__LINE__, MxDataMsg_SetEncoder(message, stamp.encoder), "Failed to set encoder");
}

// Fills a new message of the record's size.
void SetSurface(const Require& require, MxMsg message, const SurfaceBuffer& record,
                bool resampled) {
  SetScan(require, kSurface, message, record);
  require(__LINE__, MxSurfaceMsg_SetIsResampled(message, resampled), "Failed to set resample");
  SetStamp(require, message);
  const BoundingBox6 box = GetSurfaceBoundingBox(record);
  require(__LINE__, MxSurfaceMsg_SetBoundingBox(message, &box),
          "Fail to set the bounding box for the exported surface");
}

}  // namespace

void GetMsgDataFileStream(MxMsg message, FileType fileType, zMemory stream, zAlloc alloc) {
  const Require require{"GetMsgDataFileStream"};
  switch (fileType) {
    case SRF:
      return require(__LINE__, GetSrfFileStream(message, stream), "Failed to get srf file stream");
    case SUR:
      return require(__LINE__, GetSurFileStream(message, stream), "Failed to get sur file stream");
    case PRO:
      return require(__LINE__, GetProFileStream(message, stream), "Failed to get pro file stream");
    case PCD:
      return require(__LINE__, GetPcdFileStream(message, stream, alloc),
                     "Failed to get pcd file stream");
    default:
      require(__LINE__, kNotImplemented, "Unimplemented file type");
  }
}

void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes,
                                  FileType fileType, zAlloc alloc) {
  const Require require{"GenerateSurfaceMsgFromBuffer"};
  SurfaceBuffer record;
  switch (fileType) {
    case SRF:
      require(__LINE__, LoadSrfFileBuffer(bytes, record, alloc), "Failed to load srf file buffer");
      break;
    case SUR:
      require(__LINE__, LoadSurFileBuffer(bytes, record, alloc), "Failed to load sur file buffer");
      break;
    default:
      require(__LINE__, kNotImplemented, "Unimplemented file extension");
  }
  require(__LINE__, MxSurfaceMsg_ConstructSimple(message.Out(), record.width, record.length, alloc),
          "Failed to construct sampled msg.");
  SetSurface(require, message.Get(), record, true);
}

void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes, z32u width,
                                  z32u height, bool swapXZ, const zPoint3d64f* invalidPoint,
                                  const z64f* zoom, zAlloc alloc) {
  const Require require{"GenerateSurfaceMsgFromBuffer"};
  SurfaceBuffer record;
  record.width = width;
  record.length = height;
  require(__LINE__, LoadPcdFileBuffer(bytes, record, swapXZ, invalidPoint, zoom, alloc),
          "Failed to load pcd file buffer");
  require(
      __LINE__,
      MxSurfaceMsg_ConstructUnresampledSimple(message.Out(), record.width, record.length, alloc),
      "Failed to construct unsampled msg");
  SetSurface(require, message.Get(), record, false);
}

void GenerateProfileMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes,
                                  FileType fileType, zAlloc alloc) {
  const Require require{"GenerateProfileMsgFromBuffer"};
  if (fileType != PRO) require(__LINE__, kNotImplemented, "Unimplemented file extension");
  ProfileBuffer record;
  require(__LINE__, LoadProFileBuffer(bytes, record, alloc), "Failed to load pro file buffer");
  require(__LINE__, MxProfileMsg_Construct(message.Out(), zType::z16s, 1, record.count, alloc),
          "Failed to construct a Profile Msg");
  SetScan(require, kProfile, message.Get(), record);
  SetStamp(require, message.Get());
  const BoundingBox6 box = GetProfileBoundingBox(record);
  require(__LINE__, MxProfileMsg_SetBoundingBox(message.Get(), &box),
          "Fail to set the bounding box for the exported surface message");
}

z8u GetSurfaceIntensity(MxMsg message, z32s x, z32s y) {
  const z8u* intensity = nullptr;
  if (x >= 0 && y >= 0) {
    intensity = MxSurfaceMsg_IntensityAt(message, static_cast<zSize>(y), static_cast<zSize>(x));
  }
  if (intensity == nullptr) {
    throw Orv::Exception(__LINE__, kFile, kBadInput, "GetSurfaceIntensity", "Invalid pixel index.");
  }
  return *intensity;
}
