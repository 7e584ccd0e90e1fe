// SPDX-License-Identifier: MIT
#include "outputfile/outputfile.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "outputfile/system.h"
#include "statuses.h"

namespace fs = std::filesystem;

namespace {

// Where a path leads to, also when nothing is there yet.
fs::path BehindLinks(fs::path path) {
  constexpr int kMostLinks = 40;  // a chain of more is a loop
  std::error_code refused;
  for (int i = 0; i < kMostLinks && fs::is_symlink(path, refused); ++i) {
    const fs::path target = fs::read_symlink(path, refused);
    if (refused) break;
    path = path.parent_path() / target;
  }
  return path;
}

std::string FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path().string() : ".";
}

bool IsRegular(const std::string& path) {
  std::error_code refused;
  return fs::is_regular_file(path, refused);
}

bool IsSyncWanted() {
  const char* wanted = std::getenv("TRELVANE_SYNC");
  return wanted != nullptr && std::string_view(wanted) == "1";
}

// For a place where names cannot be changed.
bool CopyInto(const std::string& from, const std::string& to) {
  std::ifstream source(from, std::ios::binary);
  std::ofstream target(to, std::ios::binary);
  target << source.rdbuf();
  target.close();
  return source && target;
}

}  // namespace

OutputFile::~OutputFile() {
  static_cast<void>(stream_.Release());
  if (unfinishedInPlace_ && IsRegular(target_)) static_cast<void>(std::remove(target_.c_str()));
}

zStatus OutputFile::OpenInPlace() {
  const zStatus opened =
      zFile_Construct(stream_.Out(), target_.c_str(), zFILE_WRITE, &zAllocator::Default());
  unfinishedInPlace_ = opened == zOK;
  return opened;
}

zStatus OutputFile::Open(const std::string& path) {
  // A name with a zero in it, as a recording may suggest, would be cut there.
  if (path.find('\0') != std::string::npos) return zERROR_NOT_FOUND;
  const fs::path target = BehindLinks(path);
  target_ = target.string();
  std::error_code refused;
  const fs::file_type type = fs::status(target, refused).type();
  switch (type) {
    case fs::file_type::none:
    case fs::file_type::directory:
      return zERROR_NOT_FOUND;
    case fs::file_type::not_found:
      if (!target.has_filename()) return zERROR_NOT_FOUND;
      break;
    case fs::file_type::regular: {
      if (!MayWrite(target_)) return zERROR_NOT_FOUND;
      const std::uintmax_t links = fs::hard_link_count(target, refused);
      if (refused) return zERROR_NOT_FOUND;
      if (links > 1) return OpenInPlace();
      break;
    }
    case fs::file_type::fifo: {
      const PipeReader reader(target_);
      return reader.IsThere() ? OpenInPlace() : zERROR_NOT_FOUND;
    }
    default:
      return OpenInPlace();
  }

  const bool replaces = type == fs::file_type::regular;
  if (replaces && !MayWrite(FolderOf(target))) return OpenInPlace();
  partial_.emplace(target_);
  const zStatus created = partial_->Create(stream_.Out());
  if (created == zOK && replaces) CopyOwnership(target_, partial_->Path());
  return created;
}

zStatus OutputFile::Finish() {
  if (stream_.Release() != zOK) return zERROR_STREAM;
  const bool sync = IsSyncWanted();
  if (!partial_) {
    if (sync && IsRegular(target_) && !SyncFile(target_)) return zERROR_STREAM;
    unfinishedInPlace_ = false;
    return zOK;
  }
  if (sync && !SyncFile(partial_->Path())) return zERROR_STREAM;
  switch (Replace(partial_->Path(), target_)) {
    case Replaced::done:
      partial_->Forget();
      break;
    case Replaced::notHere:
      if (!CopyInto(partial_->Path(), target_)) return zERROR_STREAM;
      if (sync && !SyncFile(target_)) return zERROR_STREAM;
      break;
    case Replaced::failed:
      return zERROR_STREAM;
  }
  return sync && !SyncFolder(FolderOf(target_)) ? zERROR_STREAM : zOK;
}

void RequireSeparateFiles(const Orv::Operation& operation, const std::vector<std::string>& outputs,
                          const std::vector<std::string>& inputs) {
  std::set<fs::path> names;
  for (const std::string& output : outputs) {
    if (!names.insert(fs::path(output).lexically_normal()).second) {
      operation.Fail(kBadInput, "Two outputs have the name %s", output);
    }
    if (!IsRegular(output)) continue;  // devices may be both
    for (const std::string& input : inputs) {
      std::error_code missing;
      if (fs::equivalent(output, input, missing)) {
        operation.Fail(kBadInput, "Failed to write " + output);
      }
    }
  }
}
