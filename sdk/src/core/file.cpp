// SPDX-License-Identifier: MIT
#include <cstdio>
#include <filesystem>

#include "core/block.h"
#include "core/stream.h"

#include <sys/stat.h>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

// What tells whether somebody wrote to a file.
struct FileState {
  z64s size = -1;
  z64s seconds = 0, nanoseconds = 0;  // of the last change

  bool operator==(const FileState&) const = default;
};

#ifdef _WIN32
bool IsTerminal(std::FILE* file) { return _isatty(_fileno(file)) != 0; }
int SeekFile(std::FILE* file, z64s offset, int origin) { return _fseeki64(file, offset, origin); }
z64s TellFile(std::FILE* file) { return _ftelli64(file); }
z64s ReadAt(std::FILE* file, z64u offset, void* destination, zSize size) {
  constexpr zSize kMost = zSize{1} << 30;
  if (_lseeki64(_fileno(file), static_cast<z64s>(offset), SEEK_SET) < 0) return -1;
  return _read(_fileno(file), destination, static_cast<unsigned>(size < kMost ? size : kMost));
}
FileState StateOf(std::FILE* file) {
  struct _stat64 now {};
  if (_fstat64(_fileno(file), &now) != 0) return {};
  return {now.st_size, now.st_mtime, 0};
}
#else
bool IsTerminal(std::FILE* file) { return isatty(fileno(file)) != 0; }
int SeekFile(std::FILE* file, z64s offset, int origin) { return fseeko(file, offset, origin); }
z64s TellFile(std::FILE* file) { return ftello(file); }
z64s ReadAt(std::FILE* file, z64u offset, void* destination, zSize size) {
  return pread(fileno(file), destination, size, static_cast<off_t>(offset));
}
FileState StateOf(std::FILE* file) {
  struct stat now {};
  if (fstat(fileno(file), &now) != 0) return {};
#ifdef __APPLE__
  const timespec& changed = now.st_mtimespec;
#else
  const timespec& changed = now.st_mtim;
#endif
  return {now.st_size, changed.tv_sec, changed.tv_nsec};
}
#endif

class File : public sdk::Stream {
 public:
  explicit File(zAlloc alloc) noexcept : alloc_(alloc) {}
  ~File() override {
    if (file_ != nullptr) static_cast<void>(std::fclose(file_));
  }

  bool Open(const char* path, z32s mode) noexcept {
    file_ = std::fopen(path, mode == zFILE_READ ? "rb" : mode == zFILE_WRITE ? "wb" : "wbx");
    if (file_ != nullptr && mode == zFILE_READ) opened_ = StateOf(file_);
    return file_ != nullptr;
  }

  zStatus Finish() noexcept override {
    if (file_ == nullptr) return zOK;  // never opened
    const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
    return closed ? zOK : zERROR_STREAM;
  }

  z64s Size() const noexcept { return opened_.size; }

  zStatus Read(z64u offset, void* destination, zSize size) const noexcept {
    auto* bytes = static_cast<std::byte*>(destination);
    while (size > 0) {
      const z64s count = ReadAt(file_, offset, bytes, size);
      if (count <= 0) return zERROR_STREAM;
      bytes += count;
      offset += static_cast<z64u>(count);
      size -= static_cast<zSize>(count);
    }
    return StateOf(file_) == opened_ ? zOK : zERROR_STREAM;
  }

  zStatus Write(const void* source, zSize size) noexcept override {
    return std::fwrite(source, 1, size, file_) == size ? zOK : zERROR_STREAM;
  }

  zStatus Seek(z64u position) noexcept override {
    if (SeekFile(file_, 0, SEEK_END) != 0) return zERROR_STREAM;
    const z64s end = TellFile(file_);
    if (end < 0 || position > static_cast<z64u>(end)) return zERROR_STREAM;
    return SeekFile(file_, static_cast<z64s>(position), SEEK_SET) == 0 ? zOK : zERROR_STREAM;
  }

  bool HasFailed() const noexcept { return std::ferror(file_) != 0; }

  zStatus SetBuffer(zSize size) noexcept {
    sdk::Block buffer = sdk::AllocateBlock(alloc_, size, sdk::Fill::none);
    if (buffer == nullptr) return zERROR_MEMORY;
    auto* memory = reinterpret_cast<char*>(buffer.get());
    if (std::setvbuf(file_, memory, _IOFBF, size) != 0) return zERROR_STREAM;
    buffer_ = std::move(buffer);
    return zOK;
  }

 private:
  sdk::Block buffer_;  // outlives the file that uses it
  std::FILE* file_ = nullptr;
  FileState opened_;  // for reading
  zAlloc alloc_;
};

// The kind of what stands at a path; "not found" also for what the system refuses to look up.
fs::file_type TypeOf(const char* path) noexcept {
  if (path == nullptr) return fs::file_type::not_found;
  try {
    std::error_code refused;
    const fs::file_type type = fs::status(path, refused).type();
    return type == fs::file_type::none ? fs::file_type::not_found : type;
  } catch (const std::exception&) {
    return fs::file_type::not_found;
  }
}

}  // namespace

bool zFile_Exists(const char* path) noexcept {
  const fs::file_type type = TypeOf(path);
  return type != fs::file_type::not_found && type != fs::file_type::directory;
}

bool zDirectory_Exists(const char* path) noexcept {
  return TypeOf(path) == fs::file_type::directory;
}

zStatus zFile_Construct(zFile* file, const char* path, z32s mode, zAlloc alloc) noexcept {
  if (file == nullptr || path == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  if (mode != zFILE_READ && mode != zFILE_WRITE && mode != zFILE_NEW) return zERROR_PARAMETER;
  if (zDirectory_Exists(path)) return zERROR_NOT_FOUND;  // some systems open one for reading
  auto made = sdk::Make<File>(alloc);
  if (made == nullptr) return zERROR_MEMORY;  // before a file that is there is truncated
  return made->Open(path, mode) ? sdk::HandOut(file, std::move(made)) : zERROR_NOT_FOUND;
}

zStatus zFile_SetWriteBuffer(zFile file, zSize size) noexcept {
  File* opened = sdk::As<File>(file);
  return opened == nullptr || size == 0 ? zERROR_PARAMETER : opened->SetBuffer(size);
}

z64s zFile_Size(zFile file) noexcept {
  const File* opened = sdk::As<File>(file);
  return opened == nullptr ? -1 : opened->Size();
}

zStatus zFile_Read(zFile file, z64u offset, void* destination, zSize size) noexcept {
  const File* opened = sdk::As<File>(file);
  if (opened == nullptr || (destination == nullptr && size > 0)) return zERROR_PARAMETER;
  return opened->Read(offset, destination, size);
}

bool zFile_HasFailed(zFile file) noexcept {
  const File* opened = sdk::As<File>(file);
  return opened != nullptr && opened->HasFailed();
}

bool zConsole_ErrorsAreSeen() noexcept { return IsTerminal(stderr); }
