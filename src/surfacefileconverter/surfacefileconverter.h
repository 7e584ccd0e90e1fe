// SPDX-License-Identifier: MIT
// The converter: what was imported, what was configured, and the export.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "sdk/pipeline.h"
#include "surfacefileconverter/filetypes.h"
#include "surfacefileconverter/jobconfig.h"

// Holds one import and exports it. Every failure is an Orv::Exception.
class SurfaceFileConverter {
 public:
  // Loads one file; its extension tells its kind.
  void importFile(std::string fileName);
  // Loads a directory of surfaces as one recording.
  void importFiles(std::string directory);

  // Reads and decodes the files of a directory import, frame by frame, into `frameList`, which is
  // returned. A source whose tag begins with another source's tag is also found under that one.
  std::vector<Plovia::ReplayFrame>& GenerateSurfaceMsgsFromMultiFiles(
      std::vector<Plovia::ReplayFrame>& frameList);

  // Writes the import to a file; the name's extension tells the kind. An empty name stands for a
  // recording archive beside a single scan, under the scan's name.
  void exportFile(std::string exportName);
  void exportFile(std::string exportName, FileType exportType);

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
  bool isMultiFileMode() const { return multiFileMode; }
  std::size_t getFrameNumber() const;
  DataSourceType getDataSourceType() const;
  // Sensors that both the job configuration and the recording know. The job configuration is read
  // during a CSV export only, so this is 0 before.
  z32u getSensorCount() const;
  // Files that the last export wrote.
  std::vector<std::string> getExportedFileNames() const { return exportedFileNames; }

  // Set by the command line:
  bool exportAll = false;      // export every frame of a recording
  bool releaseFrames = false;  // give a frame's points up once they are written; it is empty then

 private:
  void requireImport(int line, const char* function) const;
  void requireRecording(int importLine, int kindLine, const char* function) const;
  void requirePcd(int line, const char* function, const char* message) const;
  void importRecording();
  void sanitizeScannerNames();

  void exportScan(const std::string& exportName, FileType exportType);
  void writeScan(Plovia::ReplaySerializer& serializer);
  void writeDirectory(Plovia::ReplaySerializer& serializer);
  void exportRecording(const std::string& exportName, FileType exportType);
  void exportCsv(const std::string& exportName);
  void exportFrames(const std::string& exportName, FileType exportType);
  void writeMsgs(const std::vector<Plovia::ReplayFrame>& frameList, z32s index,
                 const std::string& exportName, FileType exportType, bool single);

  // Read the settings of the archive's job; the first one also keeps what the second one reads.
  // Errors of the JSON library pass through.
  void parseCSVInfoFields(CsvInfoFields& info);
  void parseCSVDeviceInfoFields(CsvDeviceInfoFields& device);
  // Writes one surface. `index` is not used.
  void writeMsgToCsv(const Orv::Object<void*>& message, z32s index, const std::string& path);
  // Writes every frame of a recording of profiles, one file for each source.
  void exportProfiles(const std::string& exportName);
  // Writes one source's profiles: one for each frame, as the first item of an array when
  // `inArrays`.
  void writeProfileMsgsToCsv(const std::vector<Orv::Object<void*>>& messages, bool inArrays,
                             const std::string& path);

  bool imported = false;
  bool recording = false;
  FileType fileType = SRF;
  // The whole imported file. Messages of a recording share it, so an import makes a new one.
  std::shared_ptr<zBytes> fileBuffer = std::make_shared<zBytes>();
  std::span<const z8u> replayBuffer;  // the recording's replay stream, a part of fileBuffer
  std::vector<ReplaySourceInfo> scannerInfos;
  std::vector<std::string> scannerFileTags;  // one per entry of scannerInfos
  DataSourceType dataSourceType = UNKNOWN_DATA_SOURCE;
  z8u arrayed = 0;
  z32u frameIndex = 0;
  z32u pcdWidth = 0;  // 0: not set
  z32u pcdHeight = 0;
  z32u pcdFlipXZ = 0;
  std::unique_ptr<zPoint3d64f> invalidPoint;
  std::unique_ptr<double> pcdZoom;
  zAlloc allocator = &zAllocator::Default();
  std::vector<Plovia::ReplayFrame> frames;
  std::string inputBaseName;  // the input name without its extension
  std::vector<std::string> exportedFileNames;
  CsvInfoFields jobInfo;
  nlohmann::json jobDocument;
  bool multiFileMode = false;
  std::string inputDirectory;
  z32s multiFrameCount = 0;
  std::vector<std::string> inputFiles;
};
