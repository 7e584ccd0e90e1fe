// SPDX-License-Identifier: MIT
#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>

#include "core/stream.h"
#include "sdk/archive.h"

namespace {

constexpr zSize kBlockSize = 512;  // headers take one, contents are filled up to whole ones
using Block = std::array<z8u, kBlockSize>;

constexpr z64u kLargestInUstar = (z64u{1} << 33) - 1;  // 11 octal digits

using Archive = std::unique_ptr<archive, decltype(&archive_write_free)>;
using Entry = std::unique_ptr<archive_entry, decltype(&archive_entry_free)>;

zStatus MakeHeader(const std::string& name, bool directory, z64u size, Block& header) {
  std::array<z8u, 8 * kBlockSize> bytes;  // with room for the end that the library writes at last
  size_t used = 0;
  const Archive made(archive_write_new(), archive_write_free);
  const Entry entry(archive_entry_new(), archive_entry_free);
  if (made == nullptr || entry == nullptr) return zERROR_MEMORY;
  archive_entry_set_pathname(entry.get(), name.c_str());
  archive_entry_set_filetype(entry.get(), directory ? AE_IFDIR : AE_IFREG);
  archive_entry_set_perm(entry.get(), directory ? 0755 : 0644);
  archive_entry_set_size(entry.get(), static_cast<la_int64_t>(size));
  archive_entry_set_mtime(entry.get(), 0, 0);
  if (size > kLargestInUstar) {
    archive_write_set_format_gnutar(made.get());
  } else {
    archive_write_set_format_ustar(made.get());
  }
  archive_write_set_bytes_per_block(made.get(), 0);
  if (archive_write_open_memory(made.get(), bytes.data(), bytes.size(), &used) != ARCHIVE_OK ||
      archive_write_header(made.get(), entry.get()) != ARCHIVE_OK || used != kBlockSize) {
    return zERROR_PARAMETER;
  }
  std::copy_n(bytes.begin(), kBlockSize, header.begin());
  return zOK;
}

class TarWriter : public sdk::Stream {
 public:
  explicit TarWriter(zStream stream) noexcept : stream_(stream) {}

  zStatus Begin(const char* name, z32s type) noexcept try {
    if (type != zTAR_FILE && type != zTAR_DIRECTORY) return zERROR_PARAMETER;
    zStatus status = EndMember();
    Block header{};
    if (status == zOK) status = MakeHeader(name, type == zTAR_DIRECTORY, 0, header);
    if (status == zOK) status = zStream_Write(stream_, header.data(), header.size());
    if (status != zOK) return status;
    name_ = type == zTAR_FILE ? name : "";
    start_ += kBlockSize;
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

  zStatus Write(const void* source, zSize size) noexcept override {
    if (name_.empty()) return zERROR_PARAMETER;
    const zStatus status = zStream_Write(stream_, source, size);
    if (status != zOK) return status;
    position_ += size;
    size_ = std::max(size_, position_);
    return zOK;
  }

  zStatus Seek(z64u position) noexcept override {
    if (position > size_) return zERROR_STREAM;
    position_ = position;
    return zStream_Seek(stream_, start_ + position);
  }

  zStatus Finish() noexcept override try {
    constexpr Block kEnd[2] = {};
    const zStatus status = EndMember();
    return status == zOK ? zStream_Write(stream_, kEnd, sizeof kEnd) : status;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

 private:
  // Of a file, the size is known now.
  zStatus EndMember() {
    if (size_ == 0) return zOK;
    Block header{};
    zStatus status = MakeHeader(name_, false, size_, header);
    if (status == zOK) status = zStream_Seek(stream_, start_ - kBlockSize);
    if (status == zOK) status = zStream_Write(stream_, header.data(), header.size());
    if (status == zOK) status = zStream_Seek(stream_, start_ + size_);
    constexpr Block kPadding{};
    const zSize padding = (kBlockSize - size_ % kBlockSize) % kBlockSize;
    if (status == zOK) status = zStream_Write(stream_, kPadding.data(), padding);
    start_ += size_ + padding;
    size_ = position_ = 0;
    return status;
  }

  zStream stream_;
  std::string name_;   // of the current file; empty where there is none
  z64u start_ = 0;     // in the stream, of the current member's content
  z64u size_ = 0;      // of that content
  z64u position_ = 0;  // in that content
};

}  // namespace

zStatus zTar_Construct(zTar* tar, zStream stream, zAlloc alloc) noexcept {
  if (alloc == nullptr || sdk::As<sdk::Stream>(stream) == nullptr) return zERROR_PARAMETER;
  return sdk::HandOut(tar, sdk::Make<TarWriter>(stream));
}

zStatus zTar_BeginWrite(zTar tar, const char* name, z32s type) noexcept {
  TarWriter* writer = sdk::As<TarWriter>(tar);
  return writer == nullptr || name == nullptr ? zERROR_PARAMETER : writer->Begin(name, type);
}
