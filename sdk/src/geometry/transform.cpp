// SPDX-License-Identifier: MIT
#include "sdk/geometry.h"

zStatus zL3dTransform3d_Identity(zTransform3d* transform) noexcept {
  if (transform == nullptr) return zERROR_PARAMETER;
  *transform = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}};
  return zOK;
}
