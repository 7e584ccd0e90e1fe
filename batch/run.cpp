// SPDX-License-Identifier: MIT
#include "batch/run.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace fs = std::filesystem;

namespace {

std::string Normal(const std::string& path) {
  return fs::absolute(path).lexically_normal().string();
}

// The outputs of one batch, and who writes them: frames and sources have names that are known only
// when their recording is open.
class Claims {
 public:
  explicit Claims(const std::vector<Entry>& earlier) {
    for (const Entry& entry : earlier) {
      for (const std::string& output : entry.outputs) owners_.emplace(Normal(output), entry.input);
    }
  }

  void Claim(const Task& task, const std::vector<std::string>& names) {
    const std::lock_guard lock(mutex_);
    for (const std::string& name : names) {
      const auto [owner, isNew] = owners_.emplace(Normal(name), task.input.path);
      if (!isNew && owner->second != task.input.path) {
        throw BadName(owner->second + " becomes " + name + " already");
      }
    }
  }

 private:
  std::mutex mutex_;
  std::unordered_map<std::string, std::string> owners_;
};

// Whether the outputs have the names that this batch would give them: a record may be of another
// one.
bool IsOf(const Entry& entry, const Task& task, const BatchOptions& options) {
  const std::string& extension = options.conversion.extension;
  const std::string common = options.name.NamesScans()
                                 ? (fs::path(options.outputFolder) / "").string()
                                 : task.output.substr(0, task.output.size() - extension.size());
  return std::ranges::all_of(entry.outputs, [&](const std::string& output) {
    return output.starts_with(common) && output.ends_with(extension);
  });
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
    if (entry != entries.end() && task.input.refusal.empty() &&
        IsOf(entry->second, task, options) && entry->second.Holds(task.input.state)) {
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
