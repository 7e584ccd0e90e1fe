// SPDX-License-Identifier: MIT
#include "pipeline/damage.h"

namespace sdk::replay {

void ThrowDamage(const Place& place, std::string_view what) {
  const std::string where =
      place.chunkOffset
          ? Orv::Format("%llu of the records of the compressed chunk at byte offset %llu",
                        place.offset, *place.chunkOffset)
          : Orv::Format("%llu", place.offset);
  throw Orv::Exception(__LINE__, "pipeline", zERROR_FORMAT, "Plovia::ReplaySerializer",
                       "The recording stream is damaged at byte offset %s: %s", where, what);
}

}  // namespace sdk::replay
