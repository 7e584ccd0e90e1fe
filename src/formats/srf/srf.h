// SPDX-License-Identifier: MIT
// The tool's own compact surface files.
#pragma once

#include "formats/description.h"
#include "formats/heightfile.h"
#include "sdk/pipeline.h"

// Decodes one of the tool's own compact surface files into z16s heights and, where the file has
// them, intensities. Returns 1, -999 for no bytes at all, -989 for another version, -984 for a flag
// that is neither 0 nor 1, or the status of the step that failed; the record may then be partly
// filled.
zStatus LoadSrfFileBuffer(const zSource& file, Scan& record, zAlloc alloc);

// The same for a file whose heights are still to be read; intensities are.
zStatus OpenSrfFile(const zSource& file, HeightFile& opened, zAlloc alloc);

// Append a surface as one of the tool's own compact surface files to a stream: heights as they are,
// and intensities. Of a point cloud, as many bytes are written as if it had heights. Return 1; 0
// for a null stream or another kind of message; or the status of the step that failed, when the
// stream holds a part.
zStatus GetSrfFileStream(const Plovia::SurfaceStream& surface, zStream stream);
zStatus GetSrfFileStream(MxMsg message, zStream stream);

// Looks at a whole compact surface file.
void DescribeSrf(const zSource& file, ScanFileDescription& description);
