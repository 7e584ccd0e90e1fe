// SPDX-License-Identifier: MIT
#include <cstdio>
#include <filesystem>

#include "core/block.h"
#include "core/stream.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

#ifdef _WIN32
bool IsTerminal(std::FILE* file) { return _isatty(_fileno(file)) != 0; }
int SeekFile(std::FILE* file, z64s offset, int origin) { return _fseeki64(file, offset, origin); }
z64s TellFile(std::FILE* file) { return _ftelli64(file); }
#else
bool IsTerminal(std::FILE* file) { return isatty(fileno(file)) != 0; }
int SeekFile(std::FILE* file, z64s offset, int origin) { return fseeko(file, offset, origin); }
z64s TellFile(std::FILE* file) { return ftello(file); }
#endif

class File : public sdk::Stream {
 public:
  explicit File(zAlloc alloc) noexcept : alloc_(alloc) {}
  ~File() override {
    if (file_ != nullptr) static_cast<void>(std::fclose(file_));
  }

  bool Open(const char* path, z32s mode) noexcept {
    file_ = std::fopen(path, mode == zFILE_READ ? "rb" : mode == zFILE_WRITE ? "wb" : "wbx");
    return file_ != nullptr;
  }

  zStatus Finish() noexcept override {
    if (file_ == nullptr) return zOK;  // never opened
    const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
    return closed ? zOK : zERROR_STREAM;
  }

  zStatus Read(void* destination, zSize size) noexcept override {
    return std::fread(destination, 1, size, file_) == size ? zOK : zERROR_STREAM;
  }

  zStatus Write(const void* source, zSize size) noexcept override {
    return std::fwrite(source, 1, size, file_) == size ? zOK : zERROR_STREAM;
  }

  zStatus Seek(z64s position) noexcept override {
    if (position < 0 || SeekFile(file_, 0, SEEK_END) != 0 || position > TellFile(file_)) {
      return zERROR_STREAM;
    }
    return SeekFile(file_, position, SEEK_SET) == 0 ? zOK : zERROR_STREAM;
  }

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

z64u zFile_Size(const char* path) noexcept {
  if (!zFile_Exists(path)) return 0;
  try {
    std::error_code refused;
    const std::uintmax_t size = fs::file_size(path, refused);
    return refused ? 0 : size;
  } catch (const std::exception&) {
    return 0;
  }
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

bool zConsole_ErrorsAreSeen() noexcept { return IsTerminal(stderr); }
