// SPDX-License-Identifier: MIT
// Runs the conversions of a batch, several at a time.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "batch/conversion.h"
#include "batch/plan.h"

struct BatchOutcome {
  z64u done = 0;
  std::vector<std::pair<std::string, std::string>> failures;  // input and why
  z64u left = 0;                                              // were not begun

  int ExitCode() const;
};

// What is already done.
struct Resumed {
  std::vector<Task> left;
  std::vector<Entry> done;
};

// Parts a plan by what a record says.
Resumed LeaveOutDone(std::vector<Task> plan, const BatchOptions& options);

// Converts; begins nothing more once `stop` is not 0, and tells no failures once it is more than 1.
// `tell` takes each entry when it is done, one at a time, and may throw, which ends the run: the
// first such error is thrown on. `earlier` are entries whose outputs must not be written again.
BatchOutcome RunTasks(const std::vector<Task>& tasks, const BatchOptions& options,
                      const std::vector<Entry>& earlier, const std::atomic<int>& stop,
                      const std::function<void(const Entry&)>& tell);
