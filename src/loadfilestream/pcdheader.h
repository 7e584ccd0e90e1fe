// SPDX-License-Identifier: MIT
// The text header of point cloud files, PCD version 0.7.
// Format: https://pointclouds.org/documentation/tutorials/pcd_file_format.html
#pragma once

#include <optional>
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
};

// Parses a header, strictly line by line, and moves `file` past it; nothing when a line is missing,
// misplaced or wrong. Carriage returns are ignored.
std::optional<PcdCloud> ParsePcdHeader(std::string_view& file);
