// SPDX-License-Identifier: MIT
#include "formats/archive/writer.h"

#include "formats/archive/layout.h"
#include "outputfile/outputfile.h"
#include "sdk/archive.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "WriteReplayData"};

constexpr zSize kWriteBufferSize = 0x10000;

using Handle = Orv::Object<void*>;

class ArchiveWriter {
 public:
  ArchiveWriter(zTar tar, zAlloc alloc) : tar_(tar), alloc_(alloc) {}

  // Copies a file from disk into a member.
  void CopyFile(const char* member, const std::string& sourcePath) {
    const z64u size = zFile_Size(sourcePath.c_str());
    Handle source;
    zStatus status = zFile_Construct(source.Out(), sourcePath.c_str(), zFILE_READ, alloc_);
    if (status == zOK) status = zTar_WriteFile(tar_, member, source.Get(), size);
    // One that has grown, or whose size could not be told, would be cut.
    z8u more = 0;
    if (status == zOK && zStream_Read(source.Get(), &more, 1) == zOK) status = zERROR_STREAM;
    const zStatus released = source.Release();
    kOperation.Require(status == zOK ? released : status, "Failed to write the %s file", member);
  }

  void BeginFolder(const char* member) {
    kOperation.Require(zTar_BeginWrite(tar_, member, zTAR_DIRECTORY, 0),
                       "Failed to create the %s directory", member);
  }

  void WriteReplay(const Plovia::ReplayStream& replay) {
    kOperation.Require(zTar_BeginWrite(tar_, kReplayMember, zTAR_FILE, replay.Size()),
                       "Failed to create the %s file", kReplayMember);
    kOperation.Require(replay.WriteTo(tar_), "Failed to write the %s file", kReplayMember);
  }

 private:
  zTar tar_;
  zAlloc alloc_;
};

}  // namespace

void WriteReplayData(const Plovia::ReplayStream& replay, const std::string& configPath,
                     const std::string& jobsConfigPath, const std::string& jobPath,
                     const std::string& outputPath, zAlloc alloc) {
  RequireSeparateFiles(kOperation, {outputPath}, {configPath, jobsConfigPath, jobPath});
  OutputFile output;
  Handle tar;
  kOperation.Require(output.Open(outputPath), "Failed to construct " + outputPath);
  kOperation.Require(zFile_SetWriteBuffer(output.Stream(), kWriteBufferSize),
                     "Failed to allocate memory");
  kOperation.Require(zTar_Construct(tar.Out(), output.Stream(), zTAR_WRITE, alloc),
                     "Failed to construct a zTar variable");
  ArchiveWriter writer(tar.Get(), alloc);
  writer.CopyFile(kConfigMember, configPath);
  writer.BeginFolder(kJobsFolder);
  writer.CopyFile(kJobsConfigMember, jobsConfigPath);
  writer.BeginFolder(kLiveFolder);
  writer.CopyFile(kJobMember, jobPath);
  writer.BeginFolder(kReplayFolder);
  writer.WriteReplay(replay);
  // The last blocks of the archive and of the file are written only now.
  if (tar.Release() != zOK || output.Finish() != zOK) {
    kOperation.Fail(kBadInput, "Failed to write " + outputPath);
  }
}
