// SPDX-License-Identifier: MIT
#include "inspect/options.h"

#include "commandline.h"

namespace {

constexpr const char* kRangeForms = "must be auto, full, percentiles as 5,95, or heights as -0.5:2";

}  // namespace

ParsedOptions ParseInspectOptions(int argc, char** argv) {
  ParsedOptions parsed;
  InspectOptions& options = parsed.options;
  CLI::App app("Tells and shows what scan files, recordings and directories of surfaces hold.",
               "trelvane-inspect");
  app.set_version_flag("--version", "trelvane-inspect " TRELVANE_VERSION);
  app.set_help_flag("-h,--help", "Show this help and end");
  app.add_option("FILE", options.files, "What to look at")->required()->type_name("");
  app.add_flag("--json", options.json, "Print one JSON document for each file");
  bool check = false;
  bool quick = false;
  app.add_flag("--check", check,
               "Verify every checksum, size and payload; the exit code is 1 when one is wrong");
  app.add_flag("--quick", quick,
               "Read only the summary and the first frame of recordings, whatever their size");
  const auto* png =
      app.add_option("--png", options.png, "Draw a scan into this file")->type_name("OUT");
  const auto* html = app.add_option("--html", options.html,
                                    "Write a page to explore the scans with into this file")
                         ->type_name("OUT");
  std::string frames;
  auto* frame = app.add_option("--frame", frames,
                               "Frame to tell of in full or to draw, counted from 0; or all from "
                               "the first to the last one")
                    ->type_name("N|FIRST:LAST");
  auto* source =
      app.add_option("--source", options.selection.source, "Source to tell of in full or to draw")
          ->type_name("TAG");
  app.add_flag("--all", options.each, "Tell of each scan in full, however many there are")
      ->excludes(frame)
      ->excludes(source);
  auto* points = app.add_option("--points", options.points, "Points in a page, in all")
                     ->type_name("N")
                     ->check(CLI::Range(z64u{1}, z64u{100'000'000}))
                     ->capture_default_str();
  auto* range =
      app.add_option_function<std::string>(
             "--range",
             [&](const std::string& text) {
               const auto choice = ColourChoice::FromText(text);
               if (!choice) throw CLI::ValidationError("--range", kRangeForms);
               options.range = *choice;
             },
             "Heights that the colours stand for: auto, full, percentiles as 5,95, or heights as "
             "--range=-0.5:2")
          ->type_name("RANGE");
  std::string how = "none";
  auto* level = app.add_option("--level", how, "Level what is drawn")
                    ->type_name("HOW")
                    ->check(CLI::IsMember({"none", "plane", "mean"}));
  app.add_flag("--figures", options.figures,
               "Tell Sa, Sq, Sz and others of each scan, before and after levelling");
  parsed.exitCode = ReadCommandLine(app, [&] {
    app.parse(argc, argv);
    if (check) options.depth = Depth::check;
    if (quick) options.depth = Depth::quick;
    const bool draws = png->count() + html->count() > 0;
    options.each = options.each || options.figures;
    if (how == "plane") options.levelling = Levelling::plane;
    if (how == "mean") options.levelling = Levelling::mean;
    if (frame->count() > 0) {
      options.selection.frames = ParseFrameRange(frames);
      if (!options.selection.frames) {
        throw CLI::ValidationError("--frame", "\"" + frames + "\" is neither N nor FIRST:LAST");
      }
    }
    if (!draws && range->count() + level->count() > 0) {
      throw CLI::RequiresError(range->count() > 0 ? "--range" : "--level", "--png or --html");
    }
    if (check && !draws && !options.json &&
        (!options.selection.IsAll() || options.each || options.figures)) {
      throw CLI::ValidationError("--check", "files are checked whole");
    }
    if (quick && (draws || check || options.figures || frame->count() > 0)) {
      throw CLI::ExcludesError("--quick", "--check, --figures, --png, --html and --frame");
    }
    if (html->count() == 0 && points->count() > 0) throw CLI::RequiresError("--points", "--html");
    for (const auto* output : {png, html}) {
      if (output->count() > 0 && output->as<std::string>().empty()) {
        throw CLI::ValidationError(output->get_name(), "the name of the file is empty");
      }
    }
    if (draws && options.files.size() != 1) {
      throw CLI::ValidationError("FILE", "a picture or a page shows one file");
    }
  });
  return parsed;
}
