// SPDX-License-Identifier: MIT
#include "sdk/archive.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>

#include "core/block.h"
#include "core/stream.h"

namespace {

class TarReader : public sdk::Stream {
 public:
  zStatus Open(zStream memory) noexcept {
    if (archive_ == nullptr) return zERROR_MEMORY;
    const auto* bytes = static_cast<const std::byte*>(zMemory_At(memory, 0));
    if (bytes == nullptr) return zERROR_PARAMETER;
    bytes_ = {bytes, zMemory_Length(memory)};
    archive_read_support_format_tar(archive_.get());
    const int opened = archive_read_open_memory(archive_.get(), bytes_.data(), bytes_.size());
    return opened == ARCHIVE_OK ? zOK : zERROR_FORMAT;
  }

  zStatus Begin(char* name, zSize capacity, z32s& type, z64u& size) noexcept {
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(archive_.get(), &entry);
    if (result == ARCHIVE_EOF) return zERROR_NOT_FOUND;
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return zERROR_FORMAT;
    const char* path = archive_entry_pathname(entry);
    if (path == nullptr) path = archive_entry_pathname_utf8(entry);  // not in the locale's set
    if (path == nullptr) path = "";
    const zSize length = std::strlen(path);
    const zSize kept = std::min(length, capacity - 1);
    std::memcpy(name, path, kept);
    name[kept] = '\0';
    type = kept == length ? TypeOf(entry) : zTAR_OTHER;
    size = archive_entry_size_is_set(entry) != 0 ? static_cast<z64u>(archive_entry_size(entry)) : 0;
    return zOK;
  }

  zStatus Read(void* destination, zSize size) noexcept override {
    auto* bytes = static_cast<std::byte*>(destination);
    while (size > 0) {
      const la_ssize_t count = archive_read_data(archive_.get(), bytes, size);
      if (count <= 0) return zERROR_STREAM;
      bytes += count;
      size -= static_cast<zSize>(count);
    }
    return zOK;
  }

  zStatus View(const void** content, zSize size) noexcept {
    const void* block = nullptr;
    size_t blockSize = 0;
    la_int64_t offset = 0;
    if (size > 0) {
      const int result = archive_read_data_block(archive_.get(), &block, &blockSize, &offset);
      if (result != ARCHIVE_OK || offset != 0 || blockSize != size) return zERROR_STREAM;
      if (!InMemory(static_cast<const std::byte*>(block), blockSize)) return zERROR_STREAM;
    }
    *content = block;
    return zOK;
  }

 private:
  static z32s TypeOf(archive_entry* entry) noexcept {
    const bool link = archive_entry_hardlink(entry) != nullptr;
    if (archive_entry_filetype(entry) == AE_IFDIR) return zTAR_DIRECTORY;
    if (archive_entry_filetype(entry) != AE_IFREG || link) return zTAR_OTHER;
    return archive_entry_sparse_count(entry) > 0 ? zTAR_OTHER : zTAR_FILE;
  }

  // The library may have copied a block, and takes the copy back when it likes.
  bool InMemory(const std::byte* block, zSize size) const noexcept {
    const std::less_equal<> inOrder;
    return inOrder(bytes_.data(), block) && inOrder(block + size, bytes_.data() + bytes_.size());
  }

  std::span<const std::byte> bytes_;  // the whole archive
  std::unique_ptr<archive, decltype(&archive_read_free)> archive_{archive_read_new(),
                                                                  archive_read_free};
};

class TarWriter : public sdk::Stream {
 public:
  explicit TarWriter(zStream stream) noexcept : stream_(stream) {}

  zStatus Open() noexcept {
    if (archive_ == nullptr || entry_ == nullptr) return zERROR_MEMORY;
    archive_write_set_format_pax_restricted(archive_.get());  // ustar wherever that can say it
    archive_write_set_bytes_per_block(archive_.get(), 0);     // large contents pass as they are
    const int opened =
        archive_write_open2(archive_.get(), this, nullptr, &TarWriter::Pass, nullptr, nullptr);
    return opened == ARCHIVE_OK ? zOK : zERROR_MEMORY;
  }

  zStatus Begin(const char* name, z32s type, z64u size) noexcept {
    if (type != zTAR_FILE && (type != zTAR_DIRECTORY || size != 0)) return zERROR_PARAMETER;
    if (size > static_cast<z64u>(INT64_MAX)) return zERROR_PARAMETER;
    const bool directory = type == zTAR_DIRECTORY;
    archive_entry_clear(entry_.get());
    archive_entry_set_pathname(entry_.get(), name);
    archive_entry_set_filetype(entry_.get(), directory ? AE_IFDIR : AE_IFREG);
    archive_entry_set_perm(entry_.get(), directory ? 0755 : 0644);
    archive_entry_set_size(entry_.get(), static_cast<la_int64_t>(size));
    archive_entry_set_mtime(entry_.get(), 0, 0);
    left_ = size;
    return Check(archive_write_header(archive_.get(), entry_.get()));
  }

  zStatus Write(const void* source, zSize size) noexcept override {
    if (size > left_) return zERROR_PARAMETER;
    left_ -= size;
    const auto* bytes = static_cast<const std::byte*>(source);
    while (size > 0) {
      const la_ssize_t count = archive_write_data(archive_.get(), bytes, size);
      if (count <= 0) return zERROR_STREAM;
      bytes += count;
      size -= static_cast<zSize>(count);
    }
    return zOK;
  }

  zStatus Finish() noexcept override {
    if (archive_ == nullptr) return zOK;  // never opened
    const bool whole = left_ == 0;
    const zStatus status = Check(archive_write_close(archive_.get()));
    return whole ? status : zERROR_STREAM;
  }

 private:
  static la_ssize_t Pass(archive*, void* writer, const void* bytes, size_t size) {
    const zStatus status = zStream_Write(static_cast<TarWriter*>(writer)->stream_, bytes, size);
    return status == zOK ? static_cast<la_ssize_t>(size) : -1;
  }
  static zStatus Check(int result) noexcept {
    return result == ARCHIVE_OK || result == ARCHIVE_WARN ? zOK : zERROR_STREAM;
  }

  zStream stream_;
  z64u left_ = 0;  // of the current member's content
  std::unique_ptr<archive, decltype(&archive_write_free)> archive_{archive_write_new(),
                                                                   archive_write_free};
  std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry_{archive_entry_new(),
                                                                       archive_entry_free};
};

template <class Kind, class... Args>
zStatus Open(zTar* tar, sdk::Owned<Kind> made, Args... args) noexcept {
  if (made == nullptr) return zERROR_MEMORY;
  const zStatus status = made->Open(args...);
  return status == zOK ? sdk::HandOut(tar, std::move(made)) : status;
}

}  // namespace

zStatus zTar_Construct(zTar* tar, zStream stream, z32s mode, zAlloc alloc) noexcept {
  if (tar == nullptr || alloc == nullptr || sdk::As<sdk::Stream>(stream) == nullptr) {
    return zERROR_PARAMETER;
  }
  if (mode == zTAR_READ) return Open(tar, sdk::Make<TarReader>(), stream);
  if (mode == zTAR_WRITE) return Open(tar, sdk::Make<TarWriter>(stream));
  return zERROR_PARAMETER;
}

zStatus zTar_BeginRead(zTar tar, char* name, zSize capacity, z32s* type, z64u* size) noexcept {
  TarReader* reader = sdk::As<TarReader>(tar);
  if (reader == nullptr || name == nullptr || capacity == 0) return zERROR_PARAMETER;
  if (type == nullptr || size == nullptr) return zERROR_PARAMETER;
  return reader->Begin(name, capacity, *type, *size);
}

zStatus zTar_View(zTar tar, const void** content, zSize size) noexcept {
  TarReader* reader = sdk::As<TarReader>(tar);
  return reader == nullptr || content == nullptr ? zERROR_PARAMETER : reader->View(content, size);
}

zStatus zTar_BeginWrite(zTar tar, const char* name, z32s type, z64u size) noexcept {
  TarWriter* writer = sdk::As<TarWriter>(tar);
  if (writer == nullptr || name == nullptr) return zERROR_PARAMETER;
  return writer->Begin(name, type, size);
}

zStatus zTar_WriteFile(zTar tar, const char* name, zStream source, z64u size) noexcept {
  zStatus status = zTar_BeginWrite(tar, name, zTAR_FILE, size);
  std::byte buffer[zSize{16} << 10];
  while (status == zOK && size > 0) {
    const auto part = static_cast<zSize>(std::min<z64u>(size, sizeof buffer));
    status = zStream_Read(source, buffer, part);
    if (status == zOK) status = zStream_Write(tar, buffer, part);
    size -= part;
  }
  return status;
}
