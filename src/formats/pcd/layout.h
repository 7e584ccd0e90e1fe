// SPDX-License-Identifier: MIT
// The text header of point cloud files, PCD version 0.7.
// Format: https://pointclouds.org/documentation/tutorials/pcd_file_format.html
#pragma once

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "sdk/core.h"

// How the point records after the header are laid out. All fields that are used are four bytes long
// and lie inside the record: x, y, z and intensity are 32-bit floats, a color is four bytes.
struct PcdCloud {
  z32u width = 0, height = 0;            // points; never 0
  z32u stride = 0;                       // bytes of a record
  z32u x = 0, y = 0, z = 0;              // offsets in a record
  std::optional<z32u> intensity, color;  // likewise
  bool binary = false;                   // otherwise text

  z64u PointCount() const { return z64u{width} * height; }
  // Of one row or column.
  bool IsLine() const { return (width == 1) != (height == 1); }
  // The side of the square grid that a line is put into, in its order.
  z32u SquareSide() const {
    return static_cast<z32u>(std::ceil(std::sqrt(static_cast<z64f>(PointCount()))));
  }
};

// Parses a header, strictly line by line, and moves `file` past it; nothing when a line is missing,
// misplaced or wrong. Carriage returns are ignored.
std::optional<PcdCloud> ParsePcdHeader(std::string_view& file);

// The header of an organised binary cloud of x, y, z and, where there are some, intensities.
std::string FormatPcdHeader(z32u width, z32u height, bool hasIntensities);

// Takes the text up to the next blank off the front; false when nothing is left.
bool TakePcdWord(std::string_view& text, std::string_view& word);
