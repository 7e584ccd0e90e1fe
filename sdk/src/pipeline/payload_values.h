// SPDX-License-Identifier: MIT
// The numbers of a payload as those of a message.
#pragma once

#include "scan_message_generated.h"
#include "sdk/message.h"

namespace sdk::replay {

inline zPoint3d64f ToPoint(const trelvane::Vec3* vec, const zPoint3d64f& absent) {
  return vec == nullptr ? absent : zPoint3d64f{vec->x(), vec->y(), vec->z()};
}

inline BoundingBox6 ToBox(const trelvane::Box* box) {
  if (box == nullptr) return {};
  return {ToPoint(&box->center(), {}), ToPoint(&box->size(), {})};
}

inline MxStamp ToStamp(const trelvane::Stamp* stamp) {
  if (stamp == nullptr) return {};
  return {stamp->frame(),   stamp->time(),
          stamp->encoder(), stamp->z_encoder(),
          stamp->inputs(),  {stamp->reserved0(), stamp->reserved1(), stamp->reserved2()}};
}

}  // namespace sdk::replay
