// SPDX-License-Identifier: MIT
// Entry of trelvane-inspect, which tells what files hold and changes none of them.
#include <cstdio>
#include <exception>
#include <iostream>

#include "inspection/inspect.h"
#include "inspection/options.h"
#include "inspection/report.h"
#include "inspection/text.h"

namespace {

constexpr int kWhole = 0;
constexpr int kDamaged = 1;

void Print(const FileFacts& facts, const InspectOptions& options) {
  if (options.json) {
    WriteJson(facts, std::cout);
  } else if (options.check) {
    WriteVerdict(facts, std::cout);
  } else {
    WriteReport(facts, std::cout);
  }
}

int Inspect(const InspectOptions& options) {
  int exitCode = kWhole;
  Progress progress(options.files.size(), zConsole_ErrorsAreSeen());
  for (const std::string& path : options.files) {
    const FileFacts facts = InspectFile(path, options.check, nullptr, progress);
    progress.Clear();
    Print(facts, options);
    if (!facts.problems.empty()) exitCode = kDamaged;
  }
  if (!std::cout.flush()) {
    std::cerr << "trelvane-inspect: Failed to write the report\n";
    return kDamaged;
  }
  return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const ParsedOptions parsed = ParseInspectOptions(argc, argv);
    return parsed.exitCode ? *parsed.exitCode : Inspect(parsed.options);
  } catch (const std::exception& failure) {
    static_cast<void>(std::fprintf(stderr, "trelvane-inspect: %s\n", failure.what()));
  }
  return kDamaged;
}
