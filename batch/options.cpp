// SPDX-License-Identifier: MIT
#include "batch/options.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <thread>

#include "batch/namelist.h"
#include "commandargsoperator/commandargsoperator.h"
#include "commandline.h"

namespace {

constexpr const char* kStandardInput = "-";

std::vector<std::string> ReadNames(const std::string& list, NameEnd end) {
  std::ifstream file;
  if (list != kStandardInput) file.open(list, std::ios::binary);
  std::istream& stream = list == kStandardInput ? std::cin : file;
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad() || (list != kStandardInput && !file.is_open())) {
    throw CLI::ValidationError("--from-file", "Failed to read " + list);
  }
  return ParseNameList(text, end);
}

// What a conversion to an option's value refuses.
template <class Parse>
auto Parsed(const char* option, const Parse& parse) {
  try {
    return parse();
  } catch (const std::exception& failure) {
    throw CLI::ValidationError(option, failure.what());
  }
}

void ReadOptions(CLI::App& app, int argc, char** argv, BatchOptions& options) {
  ConversionOptions& conversion = options.conversion;
  std::string kind;
  std::string name;
  std::string shard;
  std::string point;
  std::vector<std::string> lists;
  bool endsWithNul = false;
  z32u swap = 0;
  options.jobs = std::max(1U, std::thread::hardware_concurrency());

  app.set_version_flag("--version", "trelvane-batch " TRELVANE_VERSION);
  app.set_help_flag("--help", "Show this help and end");
  const auto text = [&](const char* names, std::string& value, const char* what, const char* type) {
    return app.add_option(names, value, what)->type_name(type);
  };
  app.add_option("INPUT", options.inputs,
                 "Files and folders, which are searched with all below them; - is a list on "
                 "standard input")
      ->type_name("");
  text("--to", kind, "Kind of the outputs: sur, srf, pro, pcd, csv, rep or ovrec", "KIND")
      ->required()
      ->check(CLI::IsMember({"sur", "srf", "pro", "pcd", "csv", "rep", "ovrec"}));
  text("--out", options.outputFolder, "Folder of the outputs, which keep the inputs' paths in it",
       "FOLDER")
      ->required();
  app.add_option("--from-file", lists, "File with names of inputs, one a line; - is standard input")
      ->type_name("LIST")
      ->allow_extra_args(false);
  app.add_flag("-0,--null", endsWithNul, "Names in lists end with a zero byte, not with a line");
  app.add_flag("--folders-are-recordings", options.foldersAreRecordings,
               "A folder with .sur files is one recording");
  text("--name", name, "Names of outputs, of {folder}, {stem}, {frame} and {source}", "TEMPLATE");
  text("--config", conversion.configFolder, "Folder with the configuration of archives", "FOLDER")
      ->capture_default_str();
  app.add_flag("-a,--all", conversion.allFrames, "Convert all frames of recordings");
  app.add_option("-f,--frame", conversion.frame, "Frame of recordings to convert, counted from 0")
      ->type_name("N");
  const auto cells = CLI::Range(1, 2'147'483'647);
  app.add_option("-w,--width", conversion.pcd.width, "Points in a row of what a cloud becomes")
      ->type_name("N")
      ->check(cells);
  app.add_option("--height", conversion.pcd.height, "Rows of what a cloud becomes")
      ->type_name("N")
      ->check(cells);
  app.add_option("-s,--swap", swap, "1: x and z of a cloud change places")
      ->type_name("0|1")
      ->check(CLI::Range(0, 1));
  text("-r,--remove", point, "Point of a cloud that means that nothing was seen", "\"(X, Y, Z)\"");
  app.add_option("-z,--zoom", conversion.pcd.zoom, "Multiplies all coordinates of a cloud")
      ->type_name("FACTOR");
  app.add_option("-j,--jobs", options.jobs, "Conversions at the same time")
      ->type_name("N")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  text("--report", options.report, "File that gains a JSON line for each input when it is done",
       "FILE");
  app.add_flag("--resume", options.resume, "Leave out what the report says is done")
      ->needs("--report");
  app.add_flag("--fail-fast", options.failFast, "Begin nothing more after the first failure");
  app.add_flag("-n,--dry-run", options.dryRun, "Print what would be done, and do nothing");
  // It is the height in Trelvane, so that help, with exit code 0, would pass for a conversion.
  app.add_flag_callback("-h",
                        [] {
                          throw CLI::ValidationError(
                              "-h", "--help shows the options, --height N the rows of a cloud");
                        })
      ->group("");
  text("--shard", shard, "Take the I-th of N parts of the inputs", "I/N");

  app.parse(argc, argv);

  conversion.extension = "." + kind;
  conversion.to = *ExportType(conversion.extension);
  conversion.pcd.swapXZ = swap != 0;
  if (conversion.pcd.zoom && *conversion.pcd.zoom <= 0) {
    throw CLI::ValidationError("--zoom", "The zooming factor is not greater than 0");
  }
  if (!point.empty()) {
    conversion.pcd.invalidPoint = Parsed("--remove", [&] { return parsePoint(point); });
  }
  if (!name.empty()) options.name = Parsed("--name", [&] { return NameTemplate(name); });
  if (options.name.NamesScans() && (conversion.to == REP || conversion.to == OVREC)) {
    throw CLI::ValidationError("--name", "A recording holds all frames and sources");
  }
  if (!shard.empty()) options.shard = Parsed("--shard", [&] { return Shard::Parse(shard); });
  if (std::erase(options.inputs, kStandardInput) > 0) lists.emplace_back(kStandardInput);
  if (options.inputs.empty() && lists.empty()) throw CLI::RequiredError("INPUT");
  for (const std::string& list : lists) {
    std::ranges::move(ReadNames(list, endsWithNul ? NameEnd::nul : NameEnd::line),
                      std::back_inserter(options.inputs));
  }
}

}  // namespace

Shard Shard::Parse(const std::string& text) {
  constexpr z32u kMost = 1'000'000;
  const std::size_t slash = text.find('/');
  const auto number = [&](std::string_view digits) {
    if (digits.empty() || digits.size() > 7 ||
        digits.find_first_not_of("0123456789") != std::string_view::npos) {
      return z32u{0};
    }
    return static_cast<z32u>(std::stoul(std::string(digits)));
  };
  const std::string_view all = text;
  if (slash != std::string::npos) {
    const Shard shard{number(all.substr(0, slash)), number(all.substr(slash + 1))};
    if (shard.number >= 1 && shard.number <= shard.count && shard.count <= kMost) return shard;
  }
  throw std::invalid_argument("\"" + text + "\" is not I/N with I from 1 to N");
}

ParsedBatchOptions ParseBatchOptions(int argc, char** argv) {
  ParsedBatchOptions parsed;
  CLI::App app("Converts many scan files, recordings and folders of surfaces.", "trelvane-batch");
  parsed.exitCode = ReadCommandLine(app, [&] { ReadOptions(app, argc, argv, parsed.options); });
  return parsed;
}
