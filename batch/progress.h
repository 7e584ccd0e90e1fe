// SPDX-License-Identifier: MIT
// How far a batch is: a line on a terminal that changes, one a minute elsewhere.
#pragma once

#include <chrono>
#include <string>

#include "sdk/core.h"

struct Amount {
  z64u files = 0;
  z64u bytes = 0;  // of inputs
};

class BatchProgress {
 public:
  using Clock = std::chrono::steady_clock;

  BatchProgress(const Amount& all, bool terminal, Clock::time_point start = Clock::now());

  // One more is done. The line to write now, with all that moves the cursor; often empty.
  std::string Done(z64u bytes, bool failed, Clock::time_point now = Clock::now());
  // The same while nothing is done.
  std::string Tick(Clock::time_point now = Clock::now());
  // Makes room for other output.
  std::string Clear();

 private:
  std::string Line(Clock::time_point now) const;

  Amount all_, done_;
  z64u failures_ = 0;
  bool terminal_;
  Clock::time_point start_, next_;
  bool visible_ = false;
};
