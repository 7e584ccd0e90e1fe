// SPDX-License-Identifier: MIT
// Progress of long work on standard error, where that is a terminal.
#pragma once

#include <chrono>

#include "sdk/core.h"

class Progress {
 public:
  // Nothing is ever shown unless `shown`.
  Progress(zSize files, bool shown) : files_(files), shown_(shown) {}
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // So many more bytes are done. Shows the state, but not more often than people can read.
  void AddBytes(z64u bytes);
  void FileDone() { ++filesDone_; }
  // Makes room for other output.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  zSize files_;
  bool shown_;
  zSize filesDone_ = 0;
  z64u bytes_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::milliseconds(500);
  bool visible_ = false;  // a line stands on the terminal
};
