// SPDX-License-Identifier: MIT
// Writers of single-scan files, and messages from the bytes of such files.
#pragma once

#include "loadfilestream/loadfilestream.h"
#include "sdk/message.h"
#include "surfacefileconverter/filetypes.h"

// The writers return 1; 0 for a null message or stream, another kind of message, or points that the
// format cannot hold; or the status of the write that failed, when the stream holds a part.

// A uniform surface or profile message as a Digital Surf file. Heights outside -32765..32766 are
// refused. Invalid points of the message itself become the smallest height - 2, as they stand in
// the file.
zStatus GetSurFileStream(MxMsg message, zMemory stream);
zStatus GetProFileStream(MxMsg message, zMemory stream);

// A surface message as one of the tool's own compact surface files: heights as they are, and
// intensities. Of a point cloud, the first two bytes for each point are written.
zStatus GetSrfFileStream(MxMsg message, zMemory stream);

// A surface message as an organised binary point cloud of PCD version 0.7: x, y and z of each cell
// and, where there are some, intensities from 0 to 1. Invalid points are three quiet NaN.
// Throws what GetAllPointsPcd throws for points of an unknown type.
zStatus GetPcdFileStream(MxMsg message, zMemory stream, zAlloc alloc);

// Appends the real coordinates of each cell of a surface message, row by row, to a list of
// zPoint3d32f, which is made when the handle is empty. Throws Orv::Exception without a text: -996
// for points of an unknown type, -984 for a list of another type, or a failing status of the list.
void GetAllPointsPcd(MxMsg message, Orv::Object<void*>& list, zAlloc alloc);

// Writes a message in the format of a file kind. Throws Orv::Exception with the writer's status.
void GetMsgDataFileStream(MxMsg message, FileType fileType, zMemory stream, zAlloc alloc);

// The generators build a complete message (box and stamp included) from the bytes of a scan file.
// They throw Orv::Exception with the status of the loader or call that failed, and for a scan
// without a valid point; what was built so far then stays in `message`.

// A uniform surface from a .srf or .sur file.
void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes,
                                  FileType fileType, zAlloc alloc);
// A point-cloud surface from a .pcd file. `width` and `height` may be 0 and `invalidPoint` and
// `zoom` null: see PcdPointsToSurface.
void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes, z32u width,
                                  z32u height, bool swapXZ, const zPoint3d64f* invalidPoint,
                                  const z64f* zoom, zAlloc alloc);
// A uniform profile from a .pro file.
void GenerateProfileMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes,
                                  FileType fileType, zAlloc alloc);

// Centre and size of the valid points in real units. A uniform surface counts whole cells, so a
// surface of one point has the size of one step. Throws Orv::Exception when no point is valid, and
// for points of another type than z16s and zPoint3d16s.
BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record);
// The same for points of type z16s and zPoint16s; y is 0. The centre x of a uniform profile is its
// offset, where the scan starts.
BoundingBox6 GetProfileBoundingBox(const ProfileBuffer& record);

// The intensity of one cell. Throws Orv::Exception for a cell outside of the surface, or when there
// are no intensities.
z8u GetSurfaceIntensity(MxMsg message, z32s x, z32s y);
