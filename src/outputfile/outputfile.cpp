// SPDX-License-Identifier: MIT
#include "outputfile/outputfile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "outputfile/system.h"
#include "statuses.h"

namespace fs = std::filesystem;

namespace {

constexpr zSize kWriteBufferSize = zSize{64} << 10;

// Where a path leads to, also when nothing is there yet.
fs::path BehindLinks(fs::path path) {
  constexpr int kMostLinks = 40;  // a chain of more is a loop
  std::error_code refused;
  for (int i = 0; i < kMostLinks && fs::is_symlink(path, refused); ++i) {
    const fs::path target = fs::read_symlink(path, refused);
    if (refused) break;
    const fs::path next = path.parent_path() / target;
    // The open pipe of a process has a name that is none.
    if (fs::exists(path, refused) && !fs::exists(fs::symlink_status(next, refused))) break;
    path = next;
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
bool CopyInto(std::ifstream& source, const std::string& to) {
  std::ofstream target(to, std::ios::binary);
  target << source.rdbuf();
  target.close();
  return source && target;
}

}  // namespace

zStatus OutputFile::Open(const std::string& path) {
  // A name with a zero in it, as a recording may suggest, would be cut there.
  if (path.find('\0') != std::string::npos) return zERROR_NOT_FOUND;
  const fs::path target = BehindLinks(path);
  target_ = target.string();
  std::error_code refused;
  const fs::file_type type = fs::status(target, refused).type();
  const bool isNew = type == fs::file_type::not_found;
  if (isNew ? !target.has_filename() : !MayWrite(target_)) return zERROR_NOT_FOUND;
  switch (type) {
    case fs::file_type::none:
    case fs::file_type::directory:
    case fs::file_type::socket:
      return zERROR_NOT_FOUND;
    case fs::file_type::not_found:
      break;
    case fs::file_type::regular:
      inPlace_ = fs::hard_link_count(target, refused) > 1 || !MayWrite(FolderOf(target));
      if (refused) return zERROR_NOT_FOUND;
      break;
    case fs::file_type::fifo:
      pipe_.emplace(target_);
      if (!pipe_->IsThere()) return zERROR_NOT_FOUND;
      inPlace_ = true;
      break;
    default:
      inPlace_ = true;
  }

  std::error_code missing;
  const fs::path beside = inPlace_ ? fs::temp_directory_path(missing) / "output" : target;
  if (missing) return zERROR_NOT_FOUND;
  partial_.emplace(beside.string());
  const zStatus created = partial_->Create(stream_.Out());
  if (created == zOK && !inPlace_ && !isNew) CopyOwnership(target_, partial_->Path());
  if (created == zOK) static_cast<void>(zFile_SetWriteBuffer(stream_.Get(), kWriteBufferSize));
  return created;
}

zStatus OutputFile::Finish() {
  if (stream_.Release() != zOK) return zERROR_STREAM;
  const bool sync = IsSyncWanted();
  if (!inPlace_) {
    if (sync && !SyncFile(partial_->Path())) return zERROR_STREAM;
    const Replaced replaced = Replace(partial_->Path(), target_);
    if (replaced == Replaced::failed) return zERROR_STREAM;
    if (replaced == Replaced::done) {
      partial_->Forget();
      return sync && !SyncFolder(FolderOf(target_)) ? zERROR_STREAM : zOK;
    }
  }
  std::ifstream whole(partial_->Path(), std::ios::binary);
  if (!whole) return zERROR_STREAM;  // the earlier file stays
  const bool copied = CopyInto(whole, target_);
  pipe_.reset();  // whose reader waits for its end
  if (copied && (!sync || !IsRegular(target_) || SyncFile(target_))) return zOK;
  if (IsRegular(target_)) static_cast<void>(std::remove(target_.c_str()));  // half of it
  return zERROR_STREAM;
}

void RequireSeparateFiles(const Orv::Operation& operation, const std::vector<std::string>& outputs,
                          const std::vector<std::string>& inputs) {
  std::set<fs::path> names;
  std::vector<std::string> linked;  // have other names, too
  const auto isOneOf = [](const std::vector<std::string>& others, const std::string& output) {
    return std::ranges::any_of(others, [&](const std::string& other) {
      std::error_code missing;
      return fs::equivalent(output, other, missing);
    });
  };
  for (const std::string& output : outputs) {
    std::error_code refused;
    fs::path name = fs::weakly_canonical(fs::absolute(BehindLinks(output)), refused);
    if (refused) name = fs::path(output).lexically_normal();
    if (!names.insert(name).second || isOneOf(linked, output)) {
      operation.Fail(kBadInput, "Two outputs have the name %s", output);
    }
    if (!IsRegular(output)) continue;  // devices may be both
    if (fs::hard_link_count(output, refused) > 1 && !refused) linked.push_back(output);
    if (isOneOf(inputs, output)) {
      throw FileNotWritten(operation.Error(kBadInput, "Failed to write " + output));
    }
  }
}
