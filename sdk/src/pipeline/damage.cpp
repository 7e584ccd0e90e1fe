// SPDX-License-Identifier: MIT
#include "pipeline/damage.h"

namespace sdk::replay {

namespace {

std::string Describe(const Place& place) {
  return place.chunkOffset
             ? Orv::Format("%llu of the records of the compressed chunk at byte offset %llu",
                           place.offset, *place.chunkOffset)
             : Orv::Format("%llu", place.offset);
}

}  // namespace

Damage::Damage(const Place& place, std::string_view what)
    : Orv::Exception(__LINE__, "pipeline", zERROR_FORMAT, "Plovia::ReplaySerializer",
                     "The recording stream is damaged at byte offset %s: %s", Describe(place),
                     what),
      problem_(std::make_shared<Plovia::ReplayProblem>(Plovia::ReplayProblem{
          place.chunkOffset.value_or(place.offset),
          place.chunkOffset ? std::optional(place.offset) : std::nullopt, std::string(what)})) {}

}  // namespace sdk::replay
