// SPDX-License-Identifier: MIT
// Where in a recording stream something is, and the error for what is wrong there.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>

#include "sdk/pipeline.h"

namespace sdk::replay {

// A byte of the stream, or of the uncompressed records of a chunk that was compressed.
struct Place {
  z64u offset = 0;
  std::optional<z64u> chunkOffset = {};  // of the compressed chunk in the stream

  Place operator+(z64u bytes) const { return {offset + bytes, chunkOffset}; }
};

// Says what is wrong and at which byte offset.
class Damage : public Orv::Exception {
 public:
  Damage(const Place& place, std::string_view what);

  const Plovia::ReplayProblem& Problem() const noexcept { return *problem_; }

 private:
  std::shared_ptr<const Plovia::ReplayProblem> problem_;  // shared: copies must not throw
};

template <class... Values>
[[noreturn]] void ThrowDamage(const Place& place, std::string_view format,
                              const Values&... values) {
  throw Damage(place, Orv::Format(format, values...));
}

// Takes note of damage, where the reading goes on after it.
using DamageLog = std::vector<Plovia::ReplayProblem>;

// Runs a step. Its damage is noted in the log, or thrown where there is none or no room. What
// several steps meet counts once.
template <class Step>
void RunStep(DamageLog* log, const Step& step, bool harmless = false) {
  try {
    step();
  } catch (const Damage& damage) {
    if (log == nullptr || log->size() >= Plovia::kMostReplayProblems) throw;
    Plovia::ReplayProblem problem = damage.Problem();
    const auto same = [&](const Plovia::ReplayProblem& other) {
      return other.offset == problem.offset && other.inChunk == problem.inChunk &&
             other.what == problem.what;
    };
    if (std::ranges::any_of(*log, same)) return;
    problem.harmless = harmless;
    log->push_back(std::move(problem));
  }
}

}  // namespace sdk::replay
