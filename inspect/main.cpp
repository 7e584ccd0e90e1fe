// SPDX-License-Identifier: MIT
// Entry of trelvane-inspect, which tells what files hold and changes none of them.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

#include "inspect/drawing.h"
#include "inspect/inspect.h"
#include "inspect/options.h"
#include "inspect/report.h"
#include "outputfile/partialfile.h"
#include "text.h"

namespace {

constexpr int kWhole = 0;
constexpr int kDamaged = 1;

void Complain(std::string_view text) {
  std::cout.flush();
  std::cerr << "trelvane-inspect: " << Printable(text) << '\n';
}

bool Draws(const InspectOptions& options) { return !options.png.empty() || !options.html.empty(); }

// A picture or a page stands for the report.
void Print(const FileFacts& facts, const InspectOptions& options) {
  if (options.json) {
    WriteJson(facts, std::cout);
  } else if (options.depth == Depth::check) {
    WriteVerdict(facts, std::cout);
  } else if (!Draws(options)) {
    const ScanDetails details = options.each                ? ScanDetails::all
                                : options.selection.IsAll() ? ScanDetails::ofFew
                                                            : ScanDetails::chosen;
    WriteReport(facts, details, std::cout);
  } else {
    for (const Problem& problem : facts.problems) Complain(facts.path + ": " + problem.text);
  }
}

FileFacts Look(const std::string& path, const InspectOptions& options, Progress& progress) {
  ScanVisitor visitor;
  visitor.figures = options.figures;
  if (options.figures) {
    visitor.wants = [&](zSize frame, const std::string& source) {
      return options.selection.Wants(frame, source);
    };
  }
  FileFacts facts = Draws(options) ? DrawFile(path, options, progress)
                                   : InspectFile(path, options.depth, visitor, progress);
  options.selection.Keep(facts);
  return facts;
}

int Inspect(const InspectOptions& options) {
  int exitCode = kWhole;
  Progress progress(options.files.size(), zConsole_ErrorsAreSeen());
  for (const std::string& path : options.files) {
    const auto giveUp = [&](const std::string& why) {
      progress.Clear();
      Complain(Orv::Format("%s: %s", path, why));
      exitCode = kDamaged;
    };
    try {
      const FileFacts facts = Look(path, options, progress);
      progress.Clear();
      Print(facts, options);
      if (!facts.problems.empty()) exitCode = kDamaged;
    } catch (const std::bad_alloc&) {
      giveUp("There is not enough memory");
    } catch (const Orv::Exception& failure) {
      giveUp(failure.what());
    }
  }
  if (!std::cout.flush()) {
    Complain("Failed to write the report");
    return kDamaged;
  }
  return exitCode;
}

// Where there is not even memory for an exception. Constants of other files, which are made later,
// take memory too.
[[noreturn]] void EndWithoutMemory() {
  static_cast<void>(std::fputs("trelvane-inspect: There is not enough memory\n", stderr));
  std::_Exit(kDamaged);
}
[[maybe_unused]] const std::terminate_handler kUsual = std::set_terminate(EndWithoutMemory);

}  // namespace

int main(int argc, char** argv) {
  GuardPartialFiles();
  try {
    const ParsedOptions parsed = ParseInspectOptions(argc, argv);
    return parsed.exitCode ? *parsed.exitCode : Inspect(parsed.options);
  } catch (const std::exception& failure) {
    static_cast<void>(std::fprintf(stderr, "trelvane-inspect: %s\n", failure.what()));
  }
  return kDamaged;
}
