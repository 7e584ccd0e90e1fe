// SPDX-License-Identifier: MIT
// Recordings with a job, exported as CSV in the current directory.
#pragma once

#include <nlohmann/json.hpp>

#include "support/archives.h"
#include "support/recordings.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

// A scanner's configuration with a value of its own in each field.
inline nlohmann::json MakeScannerConfig() {
  return nlohmann::json::parse(ReadFile(TEST_DATA_DIR "/scanner.json"));
}

inline std::string ToText(const zBytes& bytes) { return {bytes.begin(), bytes.end()}; }

inline Member MakeJob(const std::vector<Member>& members) {
  return {"jobs/live/_live.ovjob", ToText(MakeArchive(members))};
}
inline Member MakeJob(const std::string& document) {
  return MakeJob({{"scan/r4xxx/config.json", document}});
}

// Exports a recording with that job to out.csv; tells the warnings and the names written, or the
// error.
inline std::string ExportCsv(const Member& job, const std::vector<ReplaySourceInfo>& sources,
                             const std::vector<Frame>& frames, bool classic = false) {
  const zBytes replay = WriteRecording({"f", "i", "n", sources}, frames, classic);
  WriteFile("in.ovrec", MakeArchive({job, {"replay/buffer", ToText(replay)}}));
  std::string told;
  SurfaceFileConverter converter;
  converter.setListener([&](NoticeKind, const std::string& text) { told += text + "\n"; });
  converter.importFile("in.ovrec");
  try {
    const std::string error = Thrown([&] { converter.exportFile("out.csv"); });
    if (!error.empty()) return error;
  } catch (const nlohmann::json::exception& failure) {
    return failure.what();
  }
  for (const std::string& name : converter.getExportedFileNames()) told += name + " ";
  return told;
}
