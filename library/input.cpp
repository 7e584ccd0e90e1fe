// SPDX-License-Identifier: MIT
#include "input.h"

#include <algorithm>

#include "failure.h"
#include "filesource.h"
#include "formats/directory/reader.h"
#include "loadfilestream/loadfilestream.h"
#include "numbers.h"
#include "statuses.h"
#include "surfacefileconverter/recordingexport.h"

namespace {

constexpr Orv::Operation kRead{"library", "trelvane_file_read_scan"};

zAlloc Allocator() { return &zAllocator::Default(); }

[[noreturn]] void FailOfNothing() {
  throw Failure(TRELVANE_ERROR_NOT_FOUND, "There is no scan in this place");
}

zStatus Load(const zSource& file, FileType type, const InputOptions& options, Scan& scan) {
  switch (type) {
    case SRF:
      return LoadSrfFileBuffer(file, scan, Allocator());
    case SUR:
      return LoadSurFileBuffer(file, scan, Allocator());
    case PRO:
      return LoadProFileBuffer(file, scan, Allocator());
    default:
      return LoadPcdFileBuffer(file, scan, options.cloud, Allocator(), options.listener);
  }
}

Scan ReadScanFile(const zSource& file, FileType type, const InputOptions& options) {
  Scan scan;
  const zStatus status = Load(file, type, options, scan);
  constexpr const char* kNames[] = {"srf", "sur", "pro", "pcd"};  // in the order of the types
  kRead.Require(status, "Failed to load %s file buffer", kNames[type]);
  scan.resampled = scan.kind == ScanKind::surface;
  return scan;
}

class ScanFileInput final : public Input {
 public:
  ScanFileInput(FileType type, zSourcePtr file, InputOptions options)
      : type_(type), file_(std::move(file)), options_(std::move(options)) {
    // In the order of the types.
    constexpr trelvane_file_kind kKinds[] = {TRELVANE_FILE_SRF, TRELVANE_FILE_SUR,
                                             TRELVANE_FILE_PRO, TRELVANE_FILE_PCD};
    kind = kKinds[type];
    constexpr DataSourceType kTypes[] = {UNIFORM_SURFACE, UNIFORM_SURFACE, UNIFORM_PROFILE,
                                         SURFACE_POINT_CLOUD};
    sources = {MakeSource(kScanSourceName, kTypes[type])};
  }

  zSize CountItems(zSize, zSize) override { return 1; }
  Scan Read(zSize, zSize, zSize item) override {
    if (item > 0) FailOfNothing();
    return ReadScanFile(*file_, type_, options_);
  }

 private:
  FileType type_;
  zSourcePtr file_;
  InputOptions options_;
};

class FolderInput final : public Input {
 public:
  explicit FolderInput(const std::string& path) {
    const SurfaceDirectory directory = OpenSurfaceDirectory(path, Allocator());
    frames = static_cast<zSize>(directory.frameCount);
    for (const std::string& tag : directory.tags)
      sources.push_back(MakeSource(tag, UNIFORM_SURFACE));
    paths_.resize(frames * sources.size());
    for (const std::string& name : directory.files) {
      const auto parts = ParseFrameFileName(name);
      const auto frame = static_cast<zSize>(parseInteger(std::string(parts->index)));
      for (zSize source = 0; source < sources.size(); ++source) {
        std::string& place = paths_[frame * sources.size() + source];
        if (directory.tags[source] != parts->tag || !place.empty()) continue;
        place = PathInDirectory(path, name);
        break;
      }
    }
  }

  zSize CountItems(zSize frame, zSize source) override {
    return Path(frame, source).empty() ? 0 : 1;
  }
  Scan Read(zSize frame, zSize source, zSize item) override {
    if (item >= CountItems(frame, source)) FailOfNothing();
    return ReadScanFile(*OpenFile(Path(frame, source)), SUR, {});
  }

 private:
  const std::string& Path(zSize frame, zSize source) const {
    return paths_[frame * sources.size() + source];
  }

  std::vector<std::string> paths_;  // frame by frame; empty where there is none
};

class RecordingInput final : public Input {
 public:
  RecordingInput(FileType type, zSourcePtr file, Check check)
      : recording_(OpenRecording(type, std::move(file), check)) {
    kind = type == REC ? TRELVANE_FILE_REC : type == REP ? TRELVANE_FILE_REP : TRELVANE_FILE_OVREC;
    layout = recording_.replay.GetReplayInfo().IsClassic() ? TRELVANE_LAYOUT_CLASSIC
                                                           : TRELVANE_LAYOUT_SEGMENTED;
    frames = recording_.frames.size();
    sources = recording_.sources;
  }

  zSize CountItems(zSize frame, zSize source) override {
    if (sources[source].arrayed != 0) return MxArrayMsg_Count(Items(frame, source));
    return recording_.HasMessage(frame, source) ? 1 : 0;
  }

  Scan Read(zSize frame, zSize source, zSize item) override {
    if (sources[source].arrayed != 0) return Take(MxArrayMsg_At(Items(frame, source), item));
    return Take(item > 0 ? nullptr : recording_.Message(frame, source).Get());
  }

 private:
  static Scan Take(MxMsg message) {
    if (message == nullptr) FailOfNothing();
    Scan scan;
    kRead.Require(GetScan(message, scan), "The message is no scan");
    return scan;
  }

  // The message of an arrayed source, which is kept for the next one of its items.
  MxMsg Items(zSize frame, zSize source) {
    const std::pair place(frame, source);
    if (place != itemsPlace_ || !items_) {
      items_.Reset();  // its memory serves this one
      items_ = recording_.Message(frame, source);
      itemsPlace_ = place;
    }
    return items_.Get();
  }

  Recording recording_;
  std::pair<zSize, zSize> itemsPlace_;
  Orv::Object<void*> items_;
};

}  // namespace

std::unique_ptr<Input> OpenInput(const std::string& path, const InputOptions& options) {
  if (zDirectory_Exists(path.c_str())) return std::make_unique<FolderInput>(path);
  if (!zFile_Exists(path.c_str())) {
    throw Failure(TRELVANE_ERROR_NOT_FOUND, "There is no file " + path);
  }
  const std::size_t dot = std::min(path.rfind('.'), path.size());
  const std::optional<FileType> type = ImportType(std::string_view(path).substr(dot));
  if (!type) {
    throw Failure(TRELVANE_ERROR_CONTENT,
                  "The extension of " + path + " stands for no kind of scan or recording");
  }
  zSourcePtr file = OpenFile(path);
  if (*type == REC || *type == REP || *type == OVREC) {
    return std::make_unique<RecordingInput>(*type, std::move(file), options.check);
  }
  return std::make_unique<ScanFileInput>(*type, std::move(file), options);
}
