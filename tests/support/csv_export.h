// SPDX-License-Identifier: MIT
// Recordings with a job, exported as CSV in the current directory.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/archives.h"
#include "support/recordings.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

// A scanner's configuration with a value of its own in each field.
inline nlohmann::json MakeScannerConfig() {
  return nlohmann::json::parse(R"({"orv:scanner": {"scanner-0": {
      "parameters": {
        "scanMode": 3,
        "trigger": {"source": 1, "frameRate": 250.5, "delay": 2.25, "schedulingUnits": 4}},
      "orv:sensor": [{
        "serialNumber": "S1", "model": "R4", "version": "6.1",
        "parameters": {
          "exposureMode": 2, "multipleExposures": [10, 20.5],
          "activeArea": {
            "x": -1, "y": -2, "z": -3, "width": 4, "length": 5, "height": 6,
            "transformMatrix": [0.36, 0.48, -0.8, 11, -0.8, 0.6, 0, 12, 0.48, 0.64, 0.6, 13,
                                0, 0, 0, 1]}}}]}}})");
}

inline std::string ToText(const zBytes& bytes) { return {bytes.begin(), bytes.end()}; }

inline Member MakeJob(const std::vector<Member>& members) {
  return {"jobs/live/_live.ovjob", ToText(MakeArchive(members))};
}
inline Member MakeJob(const std::string& document) {
  return MakeJob({{"scan/r4xxx/config.json", document}});
}

// Exports a recording with that job to out.csv; tells the names written, or the error.
inline std::string ExportCsv(const Member& job, const std::vector<ReplaySourceInfo>& sources,
                             const std::vector<Plovia::ReplayFrame>& frames, bool all = false,
                             bool classic = false, std::string* warning = nullptr) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources = sources;
  WriteFile(
      "in.ovrec",
      MakeArchive({job, {"replay/buffer", ToText(WriteRecording(scanner, frames, classic))}}));
  SurfaceFileConverter converter;
  converter.setListener([warning](NoticeKind, const std::string& text) {
    if (warning != nullptr) *warning += text;
  });
  converter.importFile("in.ovrec");
  converter.exportAll = all;
  try {
    const std::string error = Thrown([&] { converter.exportFile("out.csv"); });
    if (!error.empty()) return error;
  } catch (const nlohmann::json::exception& failure) {
    return failure.what();
  }
  std::string names;
  for (const std::string& name : converter.getExportedFileNames()) names += name + " ";
  return names;
}
