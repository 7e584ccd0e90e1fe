// SPDX-License-Identifier: MIT
// Geometry library.
#pragma once

#include "sdk/core.h"

// A 3 x 4 transform, row by row: rotation and scale in the first three columns, translation in
// the last.
struct zTransform3d {
  z64f elements[12];
};

// Fills `transform` with the identity.
zStatus zL3dTransform3d_Identity(zTransform3d* transform) noexcept;
