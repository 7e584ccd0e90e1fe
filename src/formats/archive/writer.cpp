// SPDX-License-Identifier: MIT
#include "formats/archive/writer.h"

#include <algorithm>

#include "formats/archive/layout.h"
#include "outputfile/outputfile.h"
#include "sdk/archive.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "WriteReplayData"};

using Handle = Orv::Object<void*>;

// Copies a file from disk into the member that was begun.
zStatus CopyFile(const std::string& path, zTar tar, zAlloc alloc) {
  Handle source;
  const zStatus opened = zFile_Construct(source.Out(), path.c_str(), zFILE_READ, alloc);
  if (opened != zOK) return opened;
  const z64s told = zFile_Size(source.Get());
  if (told < 0) return zERROR_STREAM;
  const auto size = static_cast<z64u>(told);
  std::vector<z8u> piece(zSize{64} << 10);
  zSize part = 0;
  for (z64u done = 0; done < size; done += part) {
    part = static_cast<zSize>(std::min<z64u>(size - done, piece.size()));
    zStatus status = zFile_Read(source.Get(), done, piece.data(), part);
    if (status == zOK) status = zStream_Write(tar, piece.data(), part);
    if (status != zOK) return status;
  }
  // One whose size could not be told would be cut.
  return zFile_Read(source.Get(), size, piece.data(), 1) == zOK ? zERROR_STREAM : zOK;
}

// The archive up to the recording.
class ArchiveWriter {
 public:
  ArchiveWriter(const std::string& path, zAlloc alloc) : path_(path), alloc_(alloc) {
    kOperation.Require(output_.Open(path), "Failed to construct " + path);
    kOperation.Require(zTar_Construct(tar_.Out(), output_.Stream(), alloc),
                       "Failed to construct a zTar variable");
  }

  zStream Stream() const { return tar_.Get(); }
  bool HasFailed() const { return output_.HasFailed(); }

  void CopyFileInto(const char* member, const std::string& sourcePath) {
    Begin(member, zTAR_FILE, "Failed to write the %s file");
    kOperation.Require(CopyFile(sourcePath, tar_.Get(), alloc_), "Failed to write the %s file",
                       member);
  }
  void BeginFolder(const char* member) {
    Begin(member, zTAR_DIRECTORY, "Failed to create the %s directory");
  }
  void BeginFile(const char* member) { Begin(member, zTAR_FILE, "Failed to create the %s file"); }

  // The last blocks of the archive and of the file are written only now.
  void Finish() {
    if (tar_.Release() != zOK || output_.Finish() != zOK) FailToWrite();
  }

 private:
  // It ends the member before, which may be what fails.
  void Begin(const char* member, z32s type, const char* failure) {
    const zStatus begun = zTar_BeginWrite(tar_.Get(), member, type);
    if (begun != zOK && HasFailed()) FailToWrite();
    kOperation.Require(begun, failure, member);
  }

  [[noreturn]] void FailToWrite() const { kOperation.Fail(kBadInput, "Failed to write " + path_); }

  const std::string& path_;
  zAlloc alloc_;
  OutputFile output_;
  Handle tar_;  // over the output; ends before it
};

}  // namespace

void WriteReplayData(const FillStream& fill, const std::string& configPath,
                     const std::string& jobsConfigPath, const std::string& jobPath,
                     const std::string& outputPath, zAlloc alloc) {
  std::optional<ArchiveWriter> archive;
  try {
    RequireSeparateFiles(kOperation, {outputPath}, {configPath, jobsConfigPath, jobPath});
    archive.emplace(outputPath, alloc);
    archive->CopyFileInto(kConfigMember, configPath);
    archive->BeginFolder(kJobsFolder);
    archive->CopyFileInto(kJobsConfigMember, jobsConfigPath);
    archive->BeginFolder(kLiveFolder);
    archive->CopyFileInto(kJobMember, jobPath);
    archive->BeginFolder(kReplayFolder);
    archive->BeginFile(kReplayMember);
  } catch (const Orv::Exception&) {
    TryContent(fill);
    throw;
  }
  try {
    fill(archive->Stream());
  } catch (const Orv::Exception& failure) {
    if (!archive->HasFailed()) throw;
    kOperation.Fail(failure.Status(), "Failed to write the %s file", kReplayMember);
  }
  archive->Finish();
}
