// SPDX-License-Identifier: MIT
// Digital Surf surfaces and profiles to scans.
#pragma once

#include "formats/digitalsurf/layout.h"
#include "formats/filereader.h"
#include "formats/heightfile.h"

// Decodes a Digital Surf surface of 16- or 32-bit samples. 32-bit samples are folded into 16 bits
// and the z scale and offset adjusted. Returns 1, or -999 for no bytes at all, 0 for a file of
// another kind or sample size, or the status of the step that failed. A surface of no points
// (either side 0) is read. After a failure the record may hold an unfilled array of points.
zStatus LoadSurFileBuffer(const zSource& source, Scan& record, zAlloc alloc);

// The same for a surface whose heights are still to be read.
zStatus OpenSurFile(const zSource& source, HeightFile& file);

// Decodes a Digital Surf profile into z16s heights, folded like those of a surface. Returns what
// LoadSurFileBuffer returns; throws Orv::Exception for a file of more or less than one line.
zStatus LoadProFileBuffer(const zSource& source, Scan& record, zAlloc alloc);

// The heights of a file of 32-bit samples, as it tells them: spacing and offset of its header,
// valid points only. 0 for both where there is none.
struct UnfoldedHeights {
  z64f lowest = 0, highest = 0;
  zSize points = 0;
  zSize lost = 0;  // of them, whose folded heights are others: they do not fit into 16 bits
};
// Of a file that the loaders above read; returns what they return.
zStatus FindUnfoldedHeights(const zSource& source, bool profile, UnfoldedHeights& heights);

// Reads the header of a file, then moves past the comment and private zones. Another signature is
// 0.
zStatus OpenDigitalSurf(FileReader& file, SurHeader& header);
