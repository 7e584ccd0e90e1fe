// SPDX-License-Identifier: MIT
#pragma once

#include <libdeflate.h>

#include "pipeline/damage.h"
#include "pipeline/records.h"

namespace sdk::replay {

// Throws Orv::Exception when the bytes have another CRC-32. A stored checksum of 0 means "not
// computed".
inline void CheckCrc(Bytes bytes, z32u stored, const Place& place, std::string_view what) {
  if (stored == 0) return;
  const z32u computed = libdeflate_crc32(0, bytes.data(), bytes.size());
  if (computed == stored) return;
  ThrowDamage(place, "the checksum of the %s is %08x, its bytes give %08x", what, stored, computed);
}

}  // namespace sdk::replay
