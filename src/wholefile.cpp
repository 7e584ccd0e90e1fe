// SPDX-License-Identifier: MIT
#include "wholefile.h"

#include <filesystem>
#include <fstream>

#include "statuses.h"

namespace {

constexpr const char* kUnit = "surfacefileconverter";
constexpr Orv::Operation kRead{kUnit, "ReadFileBuffer"};
constexpr Orv::Operation kWriteStream{kUnit, "WriteStream"};
constexpr Orv::Operation kWriteBuffer{kUnit, "WriteBuffer"};

// Removes the file that is being written, unless it is finished. A device keeps its place in the
// file system, whatever went wrong.
class UnfinishedFile {
 public:
  explicit UnfinishedFile(std::filesystem::path path) : path_(std::move(path)) {}
  ~UnfinishedFile() {
    std::error_code ignored;
    if (begun_ && std::filesystem::is_regular_file(path_, ignored)) {
      std::filesystem::remove(path_, ignored);
    }
  }
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  // The file is open. What is removed is the file itself, not a link to it.
  void Begin() {
    begun_ = true;
    std::error_code unknown;
    std::filesystem::path target = std::filesystem::canonical(path_, unknown);
    if (!unknown) path_ = std::move(target);
  }
  void Finish() { begun_ = false; }

 private:
  std::filesystem::path path_;
  bool begun_ = false;
};

// `write` puts the content into the file that it is given and returns a status.
template <class Write>
void WriteFile(const Orv::Operation& operation, const std::string& path,
               const Orv::Exception& cannotOpen, const Write& write) {
  UnfinishedFile unfinished(path);
  Orv::Object<void*> file;
  // A name with a zero in it, as a recording may suggest, would be cut there.
  const bool whole = path.find('\0') == std::string::npos;
  if (!whole ||
      zFile_Construct(file.Out(), path.c_str(), zFILE_WRITE, &zAllocator::Default()) != zOK) {
    throw cannotOpen;
  }
  unfinished.Begin();
  const zStatus written = write(file.Get());
  const zStatus closed = file.Release();
  if (written != zOK || closed != zOK) operation.Fail(kBadInput, "Failed to write " + path);
  unfinished.Finish();
}

Orv::Exception CannotOpen(const Orv::Operation& operation, const std::string& path) {
  return operation.Error(kBadInput, "Failed to open " + path);
}

}  // namespace

void ReadFileBuffer(const std::string& path, zBytes& bytes) {
  std::error_code unknown;
  // Opening a pipe would wait for whoever writes into it; it has no size to read anyway.
  if (std::filesystem::is_fifo(path, unknown)) kRead.Fail(kBadInput, "Failed to read " + path);
  std::ifstream file(path, std::ios::binary);
  // Some systems open a directory like a file.
  if (!file.is_open() || zDirectory_Exists(path.c_str())) throw CannotOpen(kRead, path);
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  if (size == 0) kRead.Fail(kBadInput, "The inputted file is empty");
  file.seekg(0);
  if (size > 0) {
    bytes.resize(static_cast<zSize>(size));
    file.read(reinterpret_cast<char*>(bytes.data()), size);
  }
  if (size < 0 || file.gcount() != size || !file) {
    kRead.Fail(kBadInput, "Failed to read " + path);
  }
}

void WriteStream(zMemory stream, const std::string& path) {
  WriteFile(kWriteStream, path, CannotOpen(kWriteStream, path), [stream](zStream file) {
    return zStream_Write(file, zMemory_At(stream, 0), zMemory_Length(stream));
  });
}

void WriteBuffer(const zBytes& bytes, const std::string& path) {
  WriteBuffer(bytes, path, CannotOpen(kWriteBuffer, path));
}

void WriteBuffer(const zBytes& bytes, const std::string& path, const Orv::Exception& cannotOpen) {
  WriteFile(kWriteBuffer, path, cannotOpen,
            [&bytes](zStream file) { return zStream_Write(file, bytes.data(), bytes.size()); });
}

void WriteReplayStream(const Plovia::ReplayStream& replay, const std::string& path) {
  WriteFile(kWriteBuffer, path, CannotOpen(kWriteBuffer, path),
            [&replay](zStream file) { return replay.WriteTo(file); });
}
