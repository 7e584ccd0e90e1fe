// SPDX-License-Identifier: MIT
#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <exception>

#include "core/object.h"
#include "sdk/archive.h"

namespace {

class TarReader : public sdk::SharedObject {
 public:
  explicit TarReader(zSourcePtr source) noexcept : source_(std::move(source)) {}

  zStatus Open() {
    if (archive_ == nullptr) return zERROR_MEMORY;
    archive_read_support_format_tar(archive_.get());
    const int opened = archive_read_open2(archive_.get(), this, nullptr, &Read, &Skip, nullptr);
    RethrowFailure();
    return opened == ARCHIVE_OK ? zOK : zERROR_FORMAT;
  }

  zStatus Next(zTarMember& member) {
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(archive_.get(), &entry);
    RethrowFailure();
    if (result == ARCHIVE_EOF) return zERROR_NOT_FOUND;
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return zERROR_FORMAT;
    const char* path = archive_entry_pathname(entry);
    if (path == nullptr) path = archive_entry_pathname_utf8(entry);  // not in the locale's set
    member.name = path == nullptr ? "" : path;
    member.type = TypeOf(entry);
    member.offset = static_cast<z64u>(archive_filter_bytes(archive_.get(), 0));
    member.size =
        archive_entry_size_is_set(entry) != 0 ? static_cast<z64u>(archive_entry_size(entry)) : 0;
    return zOK;
  }

 private:
  static z32s TypeOf(archive_entry* entry) noexcept {
    const bool link = archive_entry_hardlink(entry) != nullptr;
    if (archive_entry_filetype(entry) == AE_IFDIR) return zTAR_DIRECTORY;
    if (archive_entry_filetype(entry) != AE_IFREG || link) return zTAR_OTHER;
    return archive_entry_sparse_count(entry) > 0 ? zTAR_OTHER : zTAR_FILE;
  }

  z64u Left() const noexcept { return source_->Size() - position_; }

  static la_ssize_t Read(archive*, void* reader, const void** block) {
    auto& self = *static_cast<TarReader*>(reader);
    const auto size = static_cast<zSize>(std::min<z64u>(self.block_.size(), self.Left()));
    try {
      self.source_->Read(self.position_, self.block_.data(), size);
    } catch (...) {
      self.failure_ = std::current_exception();
      return ARCHIVE_FATAL;
    }
    self.position_ += size;
    *block = self.block_.data();
    return static_cast<la_ssize_t>(size);
  }

  static la_int64_t Skip(archive*, void* reader, la_int64_t request) {
    auto& self = *static_cast<TarReader*>(reader);
    const z64u skipped = std::min(static_cast<z64u>(request), self.Left());
    self.position_ += skipped;
    return static_cast<la_int64_t>(skipped);
  }

  void RethrowFailure() {
    if (failure_ != nullptr) std::rethrow_exception(std::exchange(failure_, nullptr));
  }

  zSourcePtr source_;
  z64u position_ = 0;  // of what the library reads next
  std::array<z8u, 4096> block_;
  std::exception_ptr failure_;  // that a library in C cannot pass on
  std::unique_ptr<archive, decltype(&archive_read_free)> archive_{archive_read_new(),
                                                                  archive_read_free};
};

}  // namespace

zStatus zTar_Open(zTar* tar, zSourcePtr source, zAlloc alloc) {
  if (tar == nullptr || source == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  auto reader = sdk::Make<TarReader>(std::move(source));
  if (reader == nullptr) return zERROR_MEMORY;
  const zStatus status = reader->Open();
  return status == zOK ? sdk::HandOut(tar, std::move(reader)) : status;
}

zStatus zTar_Next(zTar tar, zTarMember* member) {
  TarReader* reader = sdk::As<TarReader>(tar);
  return reader == nullptr || member == nullptr ? zERROR_PARAMETER : reader->Next(*member);
}
