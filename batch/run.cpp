// SPDX-License-Identifier: MIT
#include "batch/run.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace fs = std::filesystem;

namespace {

// The outputs of one batch, and who writes them: frames and sources have names that are known only
// when their recording is open.
class Claims {
 public:
  explicit Claims(const std::vector<Entry>& earlier) {
    for (const Entry& entry : earlier) {
      for (const std::string& output : entry.outputs)
        owners_.emplace(NormalPath(output), entry.input);
    }
  }

  void Claim(const Task& task, const std::vector<std::string>& names) {
    const std::lock_guard lock(mutex_);
    for (const std::string& name : names) {
      const auto [owner, isNew] = owners_.emplace(NormalPath(name), task.input.path);
      if (!isNew && owner->second != task.input.path) {
        throw BadName(owner->second + " becomes " + name + " already");
      }
    }
  }

 private:
  std::mutex mutex_;
  std::unordered_map<std::string, std::string> owners_;
};

// Whether an output has a name that this batch would give it: a record may be of another one.
bool IsOf(const std::string& output, const Task& task, const BatchOptions& options) {
  if (options.name.NamesScans()) {
    return output.starts_with((fs::path(options.outputFolder) / "").string()) &&
           output.ends_with(options.conversion.extension);
  }
  if (output == task.output) return true;
  // Frames and sources of a recording stand behind the name.
  const fs::path planned(task.output);
  const fs::path path(output);
  const std::string stem = planned.stem().string();
  const std::string own = path.stem().string();
  return IsRecording(task.input.type) && path.parent_path() == planned.parent_path() &&
         path.extension() == planned.extension() &&
         (own.starts_with(stem + "-") || own.starts_with(stem + "_"));
}

std::string WhyFailed(const Entry& entry) {
  return entry.messages.empty() ? std::string() : entry.messages.back();
}

}  // namespace

int BatchOutcome::ExitCode() const {
  constexpr int kAll = 0;
  constexpr int kNone = 1;
  constexpr int kSome = 3;
  if (failures.empty() && left == 0) return kAll;
  return done == 0 ? kNone : kSome;
}

Resumed LeaveOutDone(std::vector<Task> plan, const BatchOptions& options) {
  Resumed resumed;
  std::map<std::string, Entry> entries = ReadRecord(options.report);
  for (Task& task : plan) {
    const auto entry = entries.find(task.input.path);
    const auto isOwn = [&](const std::string& output) { return IsOf(output, task, options); };
    if (entry != entries.end() && task.input.refusal.empty() &&
        std::ranges::all_of(entry->second.outputs, isOwn) &&
        entry->second.Holds(task.input.state)) {
      resumed.done.push_back(std::move(entry->second));
    } else {
      resumed.left.push_back(std::move(task));
    }
  }
  return resumed;
}

BatchOutcome RunTasks(const std::vector<Task>& tasks, const BatchOptions& options,
                      const std::vector<Entry>& earlier, const std::atomic<int>& stop,
                      const std::function<void(const Entry&)>& tell) {
  Claims claims(earlier);
  BatchOutcome outcome{.done = earlier.size(), .failures = {}};
  std::exception_ptr broken;
  std::atomic<bool> ended = false;
  std::atomic<zSize> next = 0;
  std::mutex telling;

  const auto work = [&] {
    while (!ended && stop == 0) {
      const zSize i = next++;
      if (i >= tasks.size()) return;
      const Entry entry = Convert(tasks[i], options, [&](const Task& task, const auto& names) {
        claims.Claim(task, names);
      });
      // A second interruption takes away what is being written, and means no failure.
      if (!entry.done && stop > 1) return;
      const std::lock_guard lock(telling);
      if (entry.done) {
        ++outcome.done;
      } else {
        outcome.failures.emplace_back(entry.input, WhyFailed(entry));
        if (options.failFast) ended = true;
      }
      try {
        if (broken == nullptr) tell(entry);
      } catch (...) {
        broken = std::current_exception();
        ended = true;
      }
    }
  };
  {
    std::vector<std::jthread> threads;
    for (zSize i = 0; i < std::min<zSize>(options.jobs, tasks.size()); ++i) {
      threads.emplace_back(work);
    }
  }
  if (broken != nullptr) std::rethrow_exception(broken);
  std::ranges::sort(outcome.failures);
  outcome.left = earlier.size() + tasks.size() - outcome.done - outcome.failures.size();
  return outcome;
}
