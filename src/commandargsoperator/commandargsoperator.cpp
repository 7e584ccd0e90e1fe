// SPDX-License-Identifier: MIT
#include <sstream>
#include <stdexcept>

#include "commandargsoperator/commandargsoperator.h"
#include "console.h"
#include "numbers.h"
#include "statuses.h"

namespace {

constexpr const char* kInfo = "[INFO] ";

constexpr Orv::Operation kOperation{"commandargsoperator", "CommandArgsOperator::process"};

// The value of an option, or null when neither form is present. The short form goes first.
const std::string* Find(const ParsedArgs& args, const char* shortForm, const char* longForm) {
  auto found = args.find(shortForm);
  if (found == args.end()) found = args.find(longForm);
  return found == args.end() ? nullptr : &found->second;
}

// Pieces between delimiters; an empty piece at the end does not count.
std::vector<std::string> splitString(const std::string& text, char delimiter) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, delimiter);) pieces.push_back(piece);
  return pieces;
}

}  // namespace

zPoint3d64f parsePoint(const std::string& text) {
  constexpr const char* kMessage = "The input invalid point is not right";
  if (text.size() < 7 && !text.starts_with('(') && !text.ends_with(')'))
    kOperation.Fail(kBadInput, {kMessage, 316});
  const std::string inner = text.size() < 2 ? "" : text.substr(1, text.size() - 2);
  const std::vector<std::string> pieces = splitString(inner, ',');
  if (pieces.size() != 3) kOperation.Fail(kBadInput, {kMessage, 319});
  const double x = parseReal(pieces[0]);
  const double y = parseReal(pieces[1]);
  return {x, y, parseReal(pieces[2])};
}

void CommandArgsOperator::process(const ParsedArgs& args) {
  const std::string* input = Find(args, "-i", "--input");
  const std::string* output = Find(args, "-o", "--output");
  converter.exportAll = Find(args, "-a", "--all") != nullptr;

  if (args.contains("--help")) {
    printUsage();
    if (input == nullptr && output == nullptr && Find(args, "-f", "--frame") == nullptr) return;
  }
  if (input == nullptr) {
    kOperation.Fail(kNotStarted,
                    {"No file was exported because no file has been imported yet", 274});
  }
  if (input->empty()) {
    kOperation.Fail(
        kBadInput,
        {"No file was exported because the input file/directory name wasn't specified.", 236});
  }

  importInput(*input);
  configure(args);
  const std::string exportName = output == nullptr ? "" : *output;
  if (converter.isRecordingData()) reportFrames(exportName);
  if (output == nullptr && (converter.isRecordingData() || converter.isMultiFileMode())) {
    kOperation.Fail(kBadInput,
                    {"No file was exported because the export file name wasn't specified", 358});
  }
  converter.exportFile(exportName);
  reportExports();
}

// All lines or, when there is no memory for them, none: what is reported is the last thing done.
void CommandArgsOperator::reportExports() const {
  std::string report;
  for (const std::string& name : converter.getExportedFileNames()) {
    report += kInfo + Orv::Format("Successfully exported '" + name + "'") + ".\n";
  }
  consoleWrite(report);
}

// A name that does not exist is no error here: the first question to the converter is.
void CommandArgsOperator::importInput(const std::string& input) {
  if (zFile_Exists(input.c_str())) {
    converter.importFile(input);
    consoleStatus(kInfo, "Successfully imported '" + input + "'");
    if (converter.isRecordingData()) reportRecording();
  } else if (zDirectory_Exists(input.c_str())) {
    converter.importFiles(input);
    consoleStatus(kInfo, "Successfully imported all the files in the directory (" + input + ").\n");
  }
}

void CommandArgsOperator::reportRecording() {
  const z32u sensors = converter.getSensorCount();
  consoleStatus(kInfo, "The replay data is captured from " + std::to_string(sensors) +
                           (sensors > 1 ? " sensors" : " sensor"));
  consoleStatus(kInfo, "The data type in the replay data is " +
                           std::string(DataSourceTypeName(converter.getDataSourceType())));
  const std::size_t frames = converter.getFrameNumber();
  consoleStatus(kInfo, "The imported recording data has " + std::to_string(frames) +
                           (frames == 1 ? " frame" : " frames"));
}

void CommandArgsOperator::configure(const ParsedArgs& args) {
  if (const std::string* frame = Find(args, "-f", "--frame")) {
    if (!converter.isRecordingData()) {
      kOperation.Fail(kBadInput,
                      {"The imported data isn't a recording data and it doesn't support this "
                       "option('-f/--frame').",
                       278});
    }
    converter.setFrameIndex(static_cast<z32u>(parseInteger(*frame)));
  }
  if (const std::string* width = Find(args, "-w", "--width")) {
    const int points = parseInteger(*width);
    if (points < 1)
      kOperation.Fail(kBadInput, {"The input surface width should be greater than 1", 294});
    converter.setPcdWidth(static_cast<z32u>(points));
  }
  if (const std::string* height = Find(args, "-h", "--height")) {
    const int rows = parseInteger(*height);
    if (rows < 1)
      kOperation.Fail(kBadInput, {"The input surface height should be greater than 1", 301});
    converter.setPcdHeight(static_cast<z32u>(rows));
  }
  if (const std::string* swap = Find(args, "-s", "--swap")) {
    const auto enabled = static_cast<z32u>(parseInteger(*swap));
    if (enabled > 1) kOperation.Fail(kBadInput, {"The input swap should be equal to 0/1", 308});
    converter.setPcdFlipXZEnabled(enabled);
  }
  if (const std::string* point = Find(args, "-r", "--remove")) {
    converter.setInvalidPoint(parsePoint(*point));
  }
  if (const std::string* zoom = Find(args, "-z", "--zoom")) {
    const double factor = parseReal(*zoom);
    if (factor <= 0)
      kOperation.Fail(kBadInput,
                      {"The input zoom factor is less than 0", 331});  // not-a-number passes
    converter.setPcdZoom(factor);
  }
}

void CommandArgsOperator::reportFrames(const std::string& output) {
  const std::size_t dot = output.rfind('.');
  if (dot == std::string::npos) throw std::out_of_range("invalid string position");
  const std::string extension = output.substr(dot);
  const DataSourceType dataType = converter.getDataSourceType();
  const bool csvProfile = (extension == ".csv" || extension == ".CSV") &&
                          (dataType == UNIFORM_PROFILE || dataType == PROFILE_POINT_CLOUD);
  if (converter.exportAll || csvProfile) {
    consoleStatus(kInfo, "All the frames are being exported");
  } else {
    consoleStatus(kInfo,
                  "The frame " + std::to_string(converter.getFrameIndex()) + " is being exported");
  }
}
