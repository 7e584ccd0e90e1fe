// SPDX-License-Identifier: MIT
#include "batch/conversion.h"

#include <chrono>

#include "surfacefileconverter/surfacefileconverter.h"

namespace fs = std::filesystem;

namespace {

void MakeFolderOf(const std::string& output) {
  const fs::path folder = fs::path(output).parent_path();
  if (!folder.empty()) fs::create_directories(folder);
}

void SetPcdOptions(SurfaceFileConverter& converter, const PcdOptions& options) {
  if (options.width != 0) converter.setPcdWidth(options.width);
  if (options.height != 0) converter.setPcdHeight(options.height);
  if (options.swapXZ) converter.setPcdFlipXZEnabled(1);
  if (options.invalidPoint) converter.setInvalidPoint(*options.invalidPoint);
  if (options.zoom) converter.setPcdZoom(*options.zoom);
}

void Export(SurfaceFileConverter& converter, const Task& task, const BatchOptions& options) {
  const ConversionOptions& conversion = options.conversion;
  const std::optional<FileType> type = task.input.type;
  if (type && BecomesScan(*type, conversion.to)) {
    return converter.exportScan(task.output, conversion.to);
  }
  if (converter.isRecordingData()) {
    converter.exportAll = conversion.allFrames;
    if (!conversion.allFrames) converter.setFrameIndex(conversion.frame);
  } else if (type == PCD) {
    SetPcdOptions(converter, conversion.pcd);
  }
  converter.exportFile(task.output, conversion.to);
}

}  // namespace

Entry Convert(const Task& task, const BatchOptions& options, const ClaimNames& claim) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  Entry entry{.input = task.input.path, .state = task.input.state};
  SurfaceFileConverter converter;
  converter.configFolder = options.conversion.configFolder;
  converter.setListener([&](NoticeKind kind, const std::string& text) {
    entry.messages.push_back((kind == NoticeKind::info ? "[INFO] " : "[WARNING] ") + text);
  });
  if (options.name.NamesScans()) {
    converter.naming.name = [&](std::optional<z32u> frame, const std::string& tag) {
      NameParts parts = task.parts;
      parts.frame = frame ? FrameText(*frame) : "all";
      parts.source = tag;
      return OutputPath(options, parts);
    };
  }
  converter.naming.claim = [&](const std::vector<std::string>& names) {
    claim(task, names);
    for (const std::string& name : names) MakeFolderOf(name);
  };
  try {
    if (!task.input.refusal.empty()) throw std::runtime_error(task.input.refusal);
    entry.state = StateOf(task.input.path);
    if (task.input.type) {
      converter.importFile(task.input.path);
    } else {
      converter.importFiles(task.input.path);
    }
    Export(converter, task, options);
    entry.done = true;
  } catch (const std::exception& failure) {
    entry.messages.push_back(std::string("[ERROR] ") + failure.what());
  }
  try {
    entry.outputs = converter.getExportedFileNames();
    entry.LookAtOutputs();
  } catch (const std::exception& failure) {
    // Somebody took them away.
    entry.done = false;
    entry.messages.push_back(std::string("[ERROR] ") + failure.what());
  }
  entry.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  return entry;
}
