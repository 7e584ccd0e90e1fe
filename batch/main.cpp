// SPDX-License-Identifier: MIT
// Entry of trelvane-batch, which converts many inputs.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <thread>

#include "batch/progress.h"
#include "batch/run.h"
#include "outputfile/partialfile.h"
#include "text.h"

namespace {

constexpr int kNone = 1;
constexpr int kUsage = 2;
constexpr int kInterrupted = 130;

std::atomic<int> interruptions = 0;
static_assert(std::atomic<int>::is_always_lock_free);

// The first lets the conversions end that run, a second one nothing.
extern "C" void Interrupt(int) {
  if (interruptions++ == 0) return;
  RemovePartialFiles();
  // Other threads may be creating one at this moment.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  RemovePartialFiles();
  std::_Exit(kInterrupted);
}

void Complain(std::string_view text) { std::cerr << "trelvane-batch: " << Printable(text) << '\n'; }

Amount AmountOf(const std::vector<Task>& tasks) {
  Amount amount{.files = tasks.size()};
  for (const Task& task : tasks) amount.bytes += task.input.state.bytes;
  return amount;
}

void PrintPlan(const std::vector<Task>& tasks) {
  for (const Task& task : tasks) {
    if (task.input.refusal.empty()) {
      std::cout << Printable(task.input.path) << " -> " << Printable(task.output) << '\n';
    }
  }
}

void PrintSummary(const BatchOutcome& outcome, zSize earlier, double seconds) {
  std::cout << Orv::Format("%llu converted", outcome.done - earlier);
  if (earlier > 0) std::cout << Orv::Format(", %zu were done before", earlier);
  if (outcome.left > 0) std::cout << Orv::Format(", %llu not begun", outcome.left);
  std::cout << Orv::Format(", %zu failed, in %.1f s\n", outcome.failures.size(), seconds);
  for (const auto& [input, why] : outcome.failures) {
    std::cout << "failed: " << Printable(input) << ": " << Printable(why) << '\n';
  }
}

// Runs the tasks, with progress on standard error.
BatchOutcome Run(const std::vector<Task>& tasks, const BatchOptions& options,
                 const std::vector<Entry>& earlier) {
  Record record(options.report);
  BatchProgress progress(AmountOf(tasks), zConsole_ErrorsAreSeen());
  std::mutex showing;
  const auto show = [](const std::string& text) { std::cerr << text << std::flush; };
  // Long conversions do not stop the clock.
  std::condition_variable_any wake;
  const std::jthread ticks([&](const std::stop_token& ended) {
    std::unique_lock lock(showing);
    while (!wake.wait_for(lock, ended, std::chrono::seconds(1), [] { return false; }) &&
           !ended.stop_requested()) {
      show(progress.Tick());
    }
  });
  BatchOutcome outcome = RunTasks(tasks, options, earlier, interruptions, [&](const Entry& entry) {
    record.Append(entry);
    const std::lock_guard lock(showing);
    show(progress.Done(entry.state.bytes, !entry.done));
  });
  const std::lock_guard lock(showing);
  show(progress.Clear());
  return outcome;
}

int Batch(const BatchOptions& options) {
  const auto start = std::chrono::steady_clock::now();
  std::vector<Input> inputs =
      FindInputs(options.inputs, {options.foldersAreRecordings, options.outputFolder});
  std::vector<Task> plan = TakeShard(MakePlan(std::move(inputs), options), options.shard);
  Resumed resumed{.left = {}, .done = {}};
  if (options.resume) {
    resumed = LeaveOutDone(std::move(plan), options);
  } else {
    resumed.left = std::move(plan);
  }
  for (const Task& task : resumed.left) {
    const Input& input = task.input;
    if (!input.refusal.empty()) Complain(input.path + ": " + input.refusal);
  }
  if (options.dryRun) {
    PrintPlan(resumed.left);
    return std::cout.flush() ? 0 : kNone;
  }
  static_cast<void>(std::signal(SIGINT, Interrupt));
  static_cast<void>(std::signal(SIGTERM, Interrupt));
  const BatchOutcome outcome = Run(resumed.left, options, resumed.done);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  PrintSummary(outcome, resumed.done.size(), seconds);
  if (!std::cout.flush()) return kNone;
  return interruptions > 0 ? kInterrupted : outcome.ExitCode();
}

}  // namespace

int main(int argc, char** argv) {
  GuardPartialFiles();
  try {
    const ParsedBatchOptions parsed = ParseBatchOptions(argc, argv);
    return parsed.exitCode ? *parsed.exitCode : Batch(parsed.options);
  } catch (const BadPlan& failure) {
    Complain(failure.what());
    return kUsage;
  } catch (const std::exception& failure) {
    static_cast<void>(std::fprintf(stderr, "trelvane-batch: %s\n", failure.what()));
  }
  return kNone;
}
