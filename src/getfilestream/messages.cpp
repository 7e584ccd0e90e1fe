// SPDX-License-Identifier: MIT
#include "getfilestream/getfilestream.h"

namespace {

constexpr const char* kFile = "getfilestream";
constexpr zStatus kNotImplemented = -996;

// Turns a status other than 1 into an exception.
void Require(zStatus status, int line, const char* function, const char* message) {
  if (status != zOK) throw Orv::Exception(line, kFile, status, function, message);
}

}  // namespace

void GetMsgDataFileStream(MxMsg message, FileType fileType, zMemory stream, zAlloc) {
  constexpr const char* kFunction = "GetMsgDataFileStream";
  switch (fileType) {
    case SUR:
      return Require(GetSurFileStream(message, stream), __LINE__, kFunction,
                     "Failed to get sur file stream");
    case SRF:
    case PRO:
    case PCD:
      throw Orv::Exception(__LINE__, kFile, kNotImplemented, kFunction,
                           "Writing this file type hasn't been implemented");
    default:
      throw Orv::Exception(__LINE__, kFile, kNotImplemented, kFunction, "Unimplemented file type");
  }
}

void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes,
                                  FileType fileType, zAlloc alloc) {
  const auto require = [](int line, zStatus status, const char* text) {
    Require(status, line, "GenerateSurfaceMsgFromBuffer", text);
  };

  SurfaceBuffer record;
  switch (fileType) {
    case SUR:
      require(__LINE__, LoadSurFileBuffer(bytes, record, alloc), "Failed to load sur file buffer");
      break;
    case SRF:
      require(__LINE__, kNotImplemented, "Reading this file type hasn't been implemented");
      break;
    default:
      require(__LINE__, kNotImplemented, "Unimplemented file extension");
  }
  require(__LINE__, MxSurfaceMsg_ConstructSimple(message.Out(), record.width, record.length, alloc),
          "Failed to construct sampled msg.");

  const MxMsg surface = message.Get();
  const MxStamp stamp{};
  require(__LINE__, MxSurfaceMsg_SetOffset(surface, &record.offset), "Failed to set offset");
  require(__LINE__, MxSurfaceMsg_SetScale(surface, &record.scale), "Failed to set scale");
  require(__LINE__, MxSurfaceMsg_CopyPointsArray(surface, record.points.Get()),
          "Failed to copy points array");
  if (record.hasIntensity != 0) {
    require(__LINE__, MxSurfaceMsg_AllocateIntensity(surface, zType::z8u),
            "Failed to allocate intensity memory");
    require(__LINE__, MxSurfaceMsg_CopyIntensityArray(surface, record.intensities.Get()),
            "Failed to copy intensity array");
  }
  require(__LINE__, MxSurfaceMsg_SetIsResampled(surface, true), "Failed to set resample");
  require(__LINE__, MxDataMsg_SetStamp(surface, 0, &stamp), "Failed to set stamp");
  require(__LINE__, MxDataMsg_SetTime(surface, stamp.time), "Failed to set time");
  require(__LINE__, MxDataMsg_SetEncoder(surface, stamp.encoder), "Failed to set encoder");
  const BoundingBox6 box = GetSurfaceBoundingBox(record);
  require(__LINE__, MxSurfaceMsg_SetBoundingBox(surface, &box),
          "Fail to set the bounding box for the exported surface");
}
