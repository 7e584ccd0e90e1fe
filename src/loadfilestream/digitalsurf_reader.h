// SPDX-License-Identifier: MIT
// What the readers of Digital Surf surfaces and profiles share: the file's header and its samples.
#pragma once

#include "loadfilestream/filereader.h"
#include "loadfilestream/surheader.h"

// Below which value a 32-bit sample is an invalid point.
enum class InvalidBelow {
  headerMinimum,  // the header's z minimum, whatever its special points flag says
  foldedMinimum,  // the lowest value that the fold maps: no point is invalid without the flag
};

// Reads one file: Open, then ReadSamples. Both return 1 or the status of the step that failed.
class DigitalSurfReader {
 public:
  // Reads the header and moves past the comment and private zones. The bytes must outlive the
  // reader. No bytes at all are -999, another signature is 0.
  zStatus Open(const zBytes& bytes, zAlloc alloc);

  const SurHeader& Header() const { return header_; }
  // Where the samples begin, once the file is open, in bytes.
  zSize Position() const { return file_.Position(); }
  // Of the heights, so different before and after the samples are read.
  zPoint3d64f Scale() const;
  zPoint3d64f Offset() const;

  // Fails unless the file holds that many samples, so that what is allocated for them is bounded by
  // the file. A sample size that ReadSamples refuses counts as one byte.
  zStatus CheckSamples(z32s rows, z32s columns) const;

  // Fills an array of z16s with its number of samples. Invalid points become -32768; 32-bit samples
  // are folded into 16 bits, and the header's z spacing and offset are then those of the folded
  // heights. Refuses (0) samples of another size.
  zStatus ReadSamples(zObject points, InvalidBelow rule);

 private:
  zStatus SkipZones();
  zStatus Read16(zObject points);
  zStatus Read32(zObject points, InvalidBelow rule);
  zStatus FindRange(zSize count, z32s& lowest, z32s& highest);
  template <class Use>
  zStatus ForEachBlock(zSize count, Use use);

  FileReader file_;
  SurHeader header_;
};
