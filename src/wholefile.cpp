// SPDX-License-Identifier: MIT
#include "wholefile.h"

#include <filesystem>
#include <fstream>

#include "outputfile/outputfile.h"
#include "statuses.h"

namespace {

constexpr const char* kUnit = "surfacefileconverter";
constexpr Orv::Operation kRead{kUnit, "ReadFileBuffer"};
constexpr Orv::Operation kWriteStream{kUnit, "WriteStream"};
constexpr Orv::Operation kWriteBuffer{kUnit, "WriteBuffer"};

// `write` puts the content into the file that it is given and returns a status.
template <class Write>
void WriteFile(const Orv::Operation& operation, const std::string& path,
               const Orv::Exception& cannotOpen, const Write& write) {
  OutputFile output;
  if (output.Open(path) != zOK) throw cannotOpen;
  if (write(output.Stream()) != zOK || output.Finish() != zOK) {
    operation.Fail(kBadInput, "Failed to write " + path);
  }
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
