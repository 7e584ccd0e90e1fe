// SPDX-License-Identifier: MIT
// Writers of single-scan files, and messages from the bytes of such files.
#pragma once

#include "loadfilestream/loadfilestream.h"
#include "sdk/message.h"
#include "surfacefileconverter/filetypes.h"

// Writes a uniform surface message as a Digital Surf surface into a memory stream. Returns 1; 0
// for a null message or stream, another point type, or heights outside -32765..32766; or the
// status of the write that failed. Invalid points of the message itself become the smallest
// height - 2, as they stand in the file.
zStatus GetSurFileStream(MxMsg message, zMemory stream);

// Writes a message in the format of a file kind. Throws Orv::Exception with the writer's status.
void GetMsgDataFileStream(MxMsg message, FileType fileType, zMemory stream, zAlloc alloc);

// Builds a complete surface message (box and stamp included) from the bytes of a .sur file. Throws
// Orv::Exception with the status of the loader or call that failed, and for a surface without a
// valid point; what was built so far then stays in `message`.
void GenerateSurfaceMsgFromBuffer(Orv::Object<void*>& message, const zBytes& bytes,
                                  FileType fileType, zAlloc alloc);

// Centre and size of the valid points in real units. A uniform surface counts whole cells, so a
// surface of one point has the size of one step. Throws Orv::Exception when no point is valid, and
// for points of another type than z16s and zPoint3d16s.
BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record);
