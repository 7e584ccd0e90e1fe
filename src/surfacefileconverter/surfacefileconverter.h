// SPDX-License-Identifier: MIT
// The converter: what was imported, what was configured, and which conversions exist.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "statuses.h"
#include "surfacefileconverter/frameexport.h"
#include "surfacefileconverter/scanexport.h"

// Holds one import and exports it. Every failure is an Orv::Exception, or an error of the JSON
// library where a job is read.
class SurfaceFileConverter {
 public:
  // Takes what the operations below say beside their results.
  void setListener(Listener takesNotices) { listener = std::move(takesNotices); }

  // Loads one file; its extension tells its kind. After a failure nothing is imported, unless the
  // name alone was refused.
  void importFile(std::string fileName);
  // Takes a directory of surfaces as one recording; its files are read by the export. After a
  // failure nothing is imported.
  void importFiles(std::string directory);

  // Writes the import to a file; the name's extension tells the kind. An empty name stands for a
  // recording archive beside a single scan, under the scan's name.
  void exportFile(std::string exportName);
  void exportFile(std::string exportName, FileType exportType);
  // Writes a single scan as another kind of scan file, in one step: what comes of it through a
  // recording.
  void exportScan(std::string exportName, FileType exportType);

  // Frame of a recording to export, below getFrameNumber().
  void setFrameIndex(z32u index);
  z32u getFrameIndex() const;
  // Size of the surface that a point cloud is put into, in points.
  void setPcdWidth(z32u width);
  void setPcdHeight(z32u height);
  // Whether x and z of a point cloud change places: 0 or 1.
  void setPcdFlipXZEnabled(z32u enabled);
  // The point of a point cloud that means "nothing was seen".
  void setInvalidPoint(const zPoint3d64f& point);
  void setPcdZoom(const double& zoom);

  bool isRecordingData() const;
  bool isMultiFileMode() const { return std::holds_alternative<SurfaceDirectory>(import); }
  std::size_t getFrameNumber() const;
  DataSourceType getDataSourceType() const;
  // Sensors that both the job configuration and the recording know. The job configuration is read
  // during a CSV export only, so this is 0 before.
  z32u getSensorCount() const;
  // Files that the last export wrote.
  std::vector<std::string> getExportedFileNames() const { return exportedFileNames; }

  // Set by whoever converts:
  bool exportAll = false;  // export every frame of a recording
  // Where an archive's configuration comes from.
  std::string configFolder = "config";
  FileNaming naming;

 private:
  bool isImported() const { return !std::holds_alternative<std::monostate>(import); }
  void requireImport(int line, const char* function,
                     const char* otherwise = "No files have been imported yet") const;
  const Recording& requireRecording(
      int line, const char* function,
      const char* otherwise = "The imported data is not recording data",
      zStatus status = kNotValidHere) const;
  PcdOptions& requirePcd(int line, const char* function, const char* otherwise,
                         const char* nothingImported = "No files have been imported yet");

  void exportRecording(const Recording& recording, const std::string& exportName,
                       FileType exportType);

  std::variant<std::monostate, ScanFile, SurfaceDirectory, Recording> import;
  std::string inputName;  // as it was imported
  z32u frameIndex = 0;
  PcdOptions pcdOptions;
  z32s sensorCount = 0;  // of the job that the last CSV export read
  std::vector<std::string> exportedFileNames;
  Listener listener;
  zAlloc allocator = &zAllocator::Default();
};
