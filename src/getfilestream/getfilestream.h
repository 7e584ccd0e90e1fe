// SPDX-License-Identifier: MIT
// The writers of single-scan files (GetSurFileStream, GetProFileStream, GetSrfFileStream,
// GetPcdFileStream, GetAllPointsPcd), and messages from such files.
#pragma once

#include "formats/digitalsurf/writer.h"
#include "formats/filetypes.h"
#include "formats/pcd/writer.h"
#include "formats/srf/srf.h"
#include "loadfilestream/loadfilestream.h"
#include "scan/heightrange.h"
#include "sdk/pipeline.h"

// Writes a message in the format of a file kind. Throws Orv::Exception with the writer's status.
void GetMsgDataFileStream(MxMsg message, FileType fileType, zStream stream, zAlloc alloc);
// The same of a uniform surface, as .srf, .sur or .pcd.
void GetSurfaceDataFileStream(const Plovia::SurfaceStream& surface, FileType fileType,
                              zStream stream);

// The generators build a complete message (box and stamp included) from a scan file; a surface of
// heights one whose points are read from the file while it is written.
// They throw Orv::Exception with the status of the loader or call that failed, and for a scan
// without a valid point; what was built so far then stays in `message`.

// A uniform surface from a .srf or .sur file, which must outlive it.
Plovia::SurfaceStream GenerateSurfaceMsgFromBuffer(const zSource& file, FileType fileType,
                                                   zAlloc alloc);
// A point-cloud surface from a .pcd file.
void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zSource& file,
                                  const PcdOptions& options, zAlloc alloc,
                                  const Listener& listener = {});
// A uniform profile from a .pro file.
void GenerateProfileMsgFromBuffer(Orv::Object<void*>& message, const zSource& file,
                                  FileType fileType, zAlloc alloc);

// Gives a new message of the scan's kind and size its scale and offset, and shares its points and
// intensities. Throws Orv::Exception of the operation.
void SetScan(const Orv::Operation& operation, MxMsg message, const Scan& record);

// Centre and size of the valid points, as FindBox has them. Throws Orv::Exception when no point is
// valid, and for points of another type than z16s and zPoint3d16s.
BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record);
// The same for a uniform surface, from the range of its heights.
BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record, const HeightRange& heights);
// The same for points of type z16s and zPoint16s.
BoundingBox6 GetProfileBoundingBox(const Scan& record);

// The intensity of one cell. Throws Orv::Exception for a cell outside of the surface, or when there
// are no intensities.
z8u GetSurfaceIntensity(MxMsg message, z32s x, z32s y);
