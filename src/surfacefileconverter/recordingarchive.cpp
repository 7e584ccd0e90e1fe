// SPDX-License-Identifier: MIT
#include "surfacefileconverter/recordingarchive.h"

#include "getfilestream/getfilestream.h"
#include "sdk/archive.h"
#include "surfacefileconverter/boundeddocument.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/wholefile.h"

using Handle = Orv::Object<void*>;

namespace {

constexpr zSize kWriteBufferSize = 0x10000;
constexpr zSize kNameCapacity = 512;

// Turns a status other than 1 into an exception of one operation.
struct Require {
  const char* function;

  template <class... Values>
  void operator()(int line, zStatus status, std::string_view format,
                  const Values&... values) const {
    if (status != zOK) throw Orv::Exception(line, kSourceFile, status, function, format, values...);
  }
};

// Copies a file from disk into a member; returns the first status that is not 1.
zStatus CopyIntoMember(zTar tar, const char* memberName, const std::string& sourcePath,
                       zAlloc alloc) {
  const z64u size = zFile_Size(sourcePath.c_str());
  Handle source;
  zStatus status = zFile_Construct(source.Out(), sourcePath.c_str(), zFILE_READ, alloc);
  if (status == zOK) status = zTar_WriteFile(tar, memberName, source.Get(), size);
  const zStatus released = source.Release();
  return status == zOK ? released : status;
}

// Walks a whole archive in memory for the last file member of a name and gives its content where it
// lies in the archive, empty when there is no such member. `failedRead` reports what cannot be
// read.
template <class FailedRead>
std::span<const z8u> FindLastMember(const zBytes& archive, const std::string& memberName,
                                    zAlloc alloc, const Require& require,
                                    const FailedRead& failedRead) {
  if (archive.empty()) return {};
  Handle stream;
  Handle tar;
  require(__LINE__, zMemory_Construct(stream.Out(), alloc), "Failed to construct zMemory");
  require(__LINE__, zMemory_Attach(stream.Get(), archive.data(), 0, archive.size(), archive.size()),
          "Failed to attach a buffer to a stream");
  require(__LINE__, zTar_Construct(tar.Out(), stream.Get(), zTAR_READ, alloc),
          "Failed to construct zTar");
  std::span<const z8u> found;
  char name[kNameCapacity];
  z32s type = zTAR_OTHER;
  z64u size = 0;
  while (zTar_BeginRead(tar.Get(), name, sizeof name, &type, &size) == zOK) {
    if (type != zTAR_FILE || zStrCompare(name, memberName.c_str()) != 0) continue;
    const void* content = nullptr;
    const zStatus status = zTar_View(tar.Get(), &content, size);
    if (status != zOK) failedRead(status);
    found = {static_cast<const z8u*>(content), size};
  }
  return found;
}

}  // namespace

void WriteReplayData(const Plovia::ReplayStream& replay, const std::string& configPath,
                     const std::string& jobsConfigPath, const std::string& jobPath,
                     const std::string& outputPath, zAlloc alloc) {
  const Require require{"WriteReplayData"};
  Handle output;
  Handle tar;
  require(__LINE__, zFile_Construct(output.Out(), outputPath.c_str(), zFILE_WRITE, alloc),
          "Failed to construct " + outputPath);
  require(__LINE__, zFile_SetWriteBuffer(output.Get(), kWriteBufferSize),
          "Failed to allocate memory");
  require(__LINE__, zTar_Construct(tar.Out(), output.Get(), zTAR_WRITE, alloc),
          "Failed to construct a zTar variable");
  require(__LINE__, CopyIntoMember(tar.Get(), "config.json", configPath, alloc),
          "Failed to write the config.json file");
  require(__LINE__, zTar_BeginWrite(tar.Get(), "jobs", zTAR_DIRECTORY, 0),
          "Failed to create the jobs directory");
  require(__LINE__, CopyIntoMember(tar.Get(), "jobs/config.json", jobsConfigPath, alloc),
          "Failed to write the jobs/config.json file");
  require(__LINE__, zTar_BeginWrite(tar.Get(), "jobs/live", zTAR_DIRECTORY, 0),
          "Failed to create the jobs/live directory");
  require(__LINE__, CopyIntoMember(tar.Get(), "jobs/live/_live.ovjob", jobPath, alloc),
          "Failed to write the jobs/live/_live.ovjob file");
  require(__LINE__, zTar_BeginWrite(tar.Get(), "replay", zTAR_DIRECTORY, 0),
          "Failed to create the replay directory");
  require(__LINE__, zTar_BeginWrite(tar.Get(), "replay/buffer", zTAR_FILE, replay.Size()),
          "Failed to create the replay/buffer file");
  require(__LINE__, replay.WriteTo(tar.Get()), "Failed to write the replay/buffer file");
  // The last blocks of the archive and of the file are written only now.
  const zStatus completed = tar.Release();
  const zStatus closed = output.Release();
  if (completed != zOK || closed != zOK) {
    throw Orv::Exception(__LINE__, kSourceFile, kBadInput, require.function,
                         "Failed to write " + outputPath);
  }
}

std::span<const z8u> GetReplayData(const zBytes& recording, zAlloc alloc) {
  const Require require{"GetReplayData"};
  const std::span<const z8u> replay = FindLastMember(
      recording, "replay/buffer", alloc, require,
      [&](zStatus status) { require(__LINE__, status, "Failed to read the replay buffer"); });
  if (replay.empty()) require(__LINE__, kBadInput, "The replay buffer is empty");
  return replay;
}

void GetResourceData(const zBytes& recording, const std::string& memberName, zBytes& content,
                     zAlloc alloc) {
  const Require require{"GetResourceData"};
  const std::span<const z8u> found =
      FindLastMember(recording, memberName, alloc, require, [&](zStatus status) {
        require(__LINE__, status, "Failed to read the resource buffer (%s)", memberName);
      });
  content.assign(found.begin(), found.end());
}

bool GetScannerConfig(const zBytes& job, const std::string& scannerId, nlohmann::json& scanner,
                      zAlloc alloc) {
  zBytes content;
  GetResourceData(job, "scan/" + scannerId + "/config.json", content, alloc);
  if (content.empty()) return false;
  nlohmann::json document = ParseBounded(content, "GetScannerConfig");
  scanner = std::move(document["orv:scanner"]);
  return !scanner.empty();
}

void WriteMsg(const Orv::Object<void*>& message, const std::string& path, FileType fileType,
              zAlloc alloc) {
  const Require require{"WriteMsg"};
  if (!message) require(__LINE__, kBadInput, "The inputted msg is Null");
  Handle stream;
  require(__LINE__, zMemory_Construct(stream.Out(), alloc), "zMemory constructed failed");
  GetMsgDataFileStream(message.Get(), fileType, stream.Get(), alloc);
  WriteStream(stream.Get(), path);
}
