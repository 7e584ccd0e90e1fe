// SPDX-License-Identifier: MIT
// The 512-byte header of Digital Surf files, surfaces and profiles alike.
#pragma once

#include <array>
#include <string_view>

#include "formats/filereader.h"

inline constexpr zSize kSurHeaderSize = 512;
inline constexpr std::string_view kSurSignature = "DIGITAL SURF";
inline constexpr z16s kProfileObject = 1;  // object types
inline constexpr z16s kSurfaceObject = 2;

// Zero-filled text without a terminator of its own, or bytes without a meaning.
template <zSize Size>
using SurText = std::array<char, Size>;

// In file order. A height in length units is sample * zSpacing + zOffset.
struct SurHeader {
  SurText<12> signature;
  z16s format, objectCount, version, objectType;
  SurText<30> objectName, operatorName;
  z16s materialCode, acquisitionType, rangeType;
  z16s specialPoints;  // 1: samples below zMin are invalid points
  z16s absolute;
  z32f gaugeResolution;
  SurText<4> reserved;
  z16s bitsPerPoint;  // 16 or 32, signed
  z32s zMin, zMax;    // smallest and largest valid sample
  z32s pointsPerLine, lineCount, totalPoints;
  z32f xSpacing, ySpacing, zSpacing;
  SurText<16> xAxisName, yAxisName, zAxisName;
  SurText<16> xSpacingUnit, ySpacingUnit, zSpacingUnit;
  SurText<16> xLengthUnit, yLengthUnit, zLengthUnit;
  z32f xUnitRatio, yUnitRatio, zUnitRatio;
  z16s imprint, inversion, levelling;
  SurText<12> obsolete1;
  z16s seconds, minutes, hours, day, month, year, dayOfWeek;
  z32f measurementDuration;
  SurText<4> obsolete2;
  SurText<6> obsolete3;
  z16s commentSize, privateSize;  // bytes of the zones between header and samples
  SurText<128> clientZone;
  z32f xOffset, yOffset, zOffset;
  z32f tSpacing, tOffset;
  SurText<13> tAxisName, tStepUnit;
};

// Where a field stands in the file, in bytes from its start.
zSize SurFieldOffset(z16s SurHeader::*field);
zSize SurFieldOffset(z32s SurHeader::*field);

// Fills in what every written file has in common; all else becomes zero.
void InitSurHeader(SurHeader& header);

// Reads the header up to the first failing read, whose status is returned. Another signature is
// refused (status 0) before anything after it is read.
zStatus ReadSurHeader(FileReader& file, SurHeader& header);
zStatus WriteSurHeader(zStream stream, const SurHeader& header);
