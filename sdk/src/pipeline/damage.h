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

[[noreturn]] void ThrowDamage(const Place& place, std::string_view what);

template <class... Values>
[[noreturn]] void ThrowDamage(const Place& place, std::string_view format,
                              const Values&... values) {
  ThrowDamage(place, std::string_view(Orv::Format(format, values...)));
}

// Takes note of damage, where the reading goes on after it.
class DamageLog {
 public:
  explicit DamageLog(std::vector<Plovia::ReplayProblem>& problems) : problems_(problems) {}

  bool IsFull() const { return problems_.size() >= Plovia::kMostReplayProblems; }
  // What several steps meet counts once.
  void Add(Plovia::ReplayProblem problem, bool harmless) {
    const auto same = [&](const Plovia::ReplayProblem& other) {
      return other.offset == problem.offset && other.inChunk == problem.inChunk &&
             other.what == problem.what;
    };
    if (std::ranges::any_of(problems_, same)) return;
    problem.harmless = harmless;
    problems_.push_back(std::move(problem));
  }

 private:
  std::vector<Plovia::ReplayProblem>& problems_;
};

// Runs a step. Its damage is noted in the log, or thrown where there is none or no room. False when
// it was noted.
template <class Step>
bool RunStep(DamageLog* log, const Step& step, bool harmless = false) {
  try {
    step();
  } catch (const Damage& damage) {
    if (log == nullptr || log->IsFull()) throw;
    log->Add(damage.Problem(), harmless);
    return false;
  }
  return true;
}

}  // namespace sdk::replay
