// SPDX-License-Identifier: MIT
#include "surfacefileconverter/surfacefileconverter.h"

#include <filesystem>

#include "filesource.h"
#include "statuses.h"

namespace {

constexpr const char* kUnit = "surfacefileconverter";
constexpr Orv::Operation kImport{kUnit, "SurfaceFileConverter::importFile"};
constexpr Orv::Operation kExport{kUnit, "SurfaceFileConverter::exportFile"};

FileType ParseExportType(const std::string& exportName) {
  const std::size_t dot = exportName.rfind('.');
  if (dot == std::string::npos) {
    kExport.Fail(kBadInput, "Failed to parse the extension of the export file name");
  }
  const std::string extension = exportName.substr(dot);
  const std::optional<FileType> type = ExportType(extension);
  if (!type) {
    kExport.Fail(kBadInput, "Extension " + extension + " of the export file name is not supported");
  }
  return *type;
}

bool IsRecordingType(FileType type) { return type == REC || type == REP || type == OVREC; }

// "scans" for "scans/", so that what is named after the directory stands beside it.
std::string WithoutEndingSeparators(std::string path) {
  constexpr char kSeparator = static_cast<char>(std::filesystem::path::preferred_separator);
  while (path.size() > 1 && (path.back() == '/' || path.back() == kSeparator)) path.pop_back();
  return path;
}

// The kind of file that an import stands for.
struct TypeOfImport {
  FileType operator()(const std::monostate&) const { return SRF; }
  FileType operator()(const ScanFile& file) const { return file.fileType; }
  FileType operator()(const SurfaceDirectory&) const { return SUR; }
  FileType operator()(const Recording& recording) const { return recording.fileType; }
};

}  // namespace

void SurfaceFileConverter::importFile(std::string fileName) {
  const std::size_t dot = fileName.rfind('.');
  if (dot == std::string::npos) {
    kImport.Fail(kBadInput, {"Failed to parse the extension of the input filename", 120});
  }
  const std::optional<FileType> type = ImportType(std::string_view(fileName).substr(dot));
  if (!type) kImport.Fail(kBadInput, {"The extension of the input filename is not supported", 137});
  import = {};
  frameIndex = 0;
  inputName = fileName;
  zSourcePtr file = OpenFile(fileName);
  if (IsRecordingType(*type)) {
    import = OpenRecording(*type, std::move(file));
  } else {
    import = ScanFile{*type, std::move(file)};
  }
}

void SurfaceFileConverter::importFiles(std::string directory) {
  import = {};
  import = OpenSurfaceDirectory(directory, allocator);
  inputName = std::move(directory);
}

void SurfaceFileConverter::exportFile(std::string exportName) {
  FileType exportType = OVREC;
  if (!exportName.empty()) {
    exportType = ParseExportType(exportName);
  } else if (isRecordingData()) {
    kExport.Fail(kBadInput, "No file was exported because the export file name isn't specified");
  } else {
    exportName = (isMultiFileMode() ? WithoutEndingSeparators(inputName)
                                    : inputName.substr(0, inputName.rfind('.'))) +
                 ".ovrec";
  }
  exportFile(std::move(exportName), exportType);
}

void SurfaceFileConverter::exportFile(std::string exportName, FileType exportType) {
  if (!isImported()) kExport.Fail(kNotValidHere, "No files have been imported yet");
  if (std::visit(TypeOfImport(), import) == exportType) {
    kExport.Fail(kBadInput, "The import file type is same as the export file type");
  }
  if (const auto* recording = std::get_if<Recording>(&import)) {
    return exportRecording(*recording, exportName, exportType);
  }
  if (exportType != REP && exportType != OVREC) {
    kExport.Fail(kBadInput, "Only .rep and .ovrec file extension are supported");
  }
  if (const auto* directory = std::get_if<SurfaceDirectory>(&import)) {
    naming.Claim(kExport, {exportName}, PathsOf(*directory));
    ExportDirectory(*directory, exportName, exportType, configFolder, allocator);
  } else {
    naming.Claim(kExport, {exportName}, {inputName});
    ExportScan(std::get<ScanFile>(import), pcdOptions, exportName, exportType, configFolder,
               allocator, listener);
  }
  exportedFileNames = {exportName};
}

void SurfaceFileConverter::exportScan(std::string exportName, FileType exportType) {
  const auto* file = std::get_if<ScanFile>(&import);
  if (file == nullptr || !BecomesScan(file->fileType, exportType)) {
    kExport.Fail(kNotSupported, "This conversion is not supported");
  }
  naming.Claim(kExport, {exportName}, {inputName});
  ExportScanAsScan(*file, exportName, exportType, allocator);
  exportedFileNames = {exportName};
}

void SurfaceFileConverter::exportRecording(const Recording& recording,
                                           const std::string& exportName, FileType exportType) {
  if (exportType == REP || exportType == OVREC) {
    kExport.Fail(kNotImplemented, "This conversion hasn't been implemented");
  }
  if (exportType == REC) kExport.Fail(kNotSupported, "This conversion is not supported");
  if ((exportType == SRF || exportType == SUR) && recording.dataType != UNIFORM_SURFACE) {
    kExport.Fail(
        kBadInput,
        "The imported replay data doesn't belong to UNIFORM_SURFACE type, which can't be exported "
        "to a file whose extension is .sur/.srf");
  }
  if (exportType == PRO && recording.dataType != UNIFORM_PROFILE) {
    kExport.Fail(
        kBadInput,
        "The imported replay data doesn't belong to UNIFORM_PROFILE type, which can't be exported "
        "to a file whose extension is .pro");
  }
  const FrameChoice choice{exportAll, frameIndex};
  const FrameExport target{exportName, inputName,         exportType, allocator,
                           listener,   exportedFileNames, false,      naming};
  if (exportType == CSV) {
    sensorCount = ExportCsv(recording, choice, target);
  } else {
    ExportFrames(recording, choice, target);
  }
}
