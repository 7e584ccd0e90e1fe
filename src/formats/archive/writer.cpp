// SPDX-License-Identifier: MIT
#include "formats/archive/writer.h"

#include <algorithm>

#include "formats/archive/layout.h"
#include "sdk/archive.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "WriteReplayData"};

// Copies a file from disk into the member that was begun.
zStatus CopyFile(const std::string& path, zTar tar, zAlloc alloc) {
  Orv::Object<void*> source;
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

}  // namespace

ArchiveWriter::ArchiveWriter(const std::string& path, const std::string& configFolder, zAlloc alloc)
    : path_(path), alloc_(alloc) {
  const std::string folder = configFolder + "/";
  RequireSeparateFiles(kOperation, {path},
                       {folder + kConfigMember, folder + kJobsConfigMember, folder + kJobMember});
  const zStatus opened = output_.Open(path);
  if (opened != zOK) {
    throw FileNotWritten(kOperation.Error(opened, "Failed to construct " + path));
  }
  kOperation.Require(zTar_Construct(tar_.Out(), output_.Stream(), alloc),
                     "Failed to construct a zTar variable");
  constexpr const char* kFolderFailure = "Failed to create the %s directory";
  CopyMember(kConfigMember, folder);
  Begin(kJobsFolder, zTAR_DIRECTORY, kFolderFailure);
  CopyMember(kJobsConfigMember, folder);
  Begin(kLiveFolder, zTAR_DIRECTORY, kFolderFailure);
  CopyMember(kJobMember, folder);
  Begin(kReplayFolder, zTAR_DIRECTORY, kFolderFailure);
  Begin(kReplayMember, zTAR_FILE, "Failed to create the %s file");
}

void ArchiveWriter::CopyMember(const char* member, const std::string& folder) {
  constexpr const char* kFailure = "Failed to write the %s file";
  Begin(member, zTAR_FILE, kFailure);
  kOperation.Require(CopyFile(folder + member, tar_.Get(), alloc_), kFailure, member);
}

// It ends the member before, which may be what fails.
void ArchiveWriter::Begin(const char* member, z32s type, const char* failure) {
  const zStatus begun = zTar_BeginWrite(tar_.Get(), member, type);
  if (begun != zOK && HasFailed()) FailToWrite();
  kOperation.Require(begun, failure, member);
}

// The last blocks of the archive and of the file are written only now.
void ArchiveWriter::Finish() {
  if (tar_.Release() != zOK || output_.Finish() != zOK) FailToWrite();
}

void ArchiveWriter::FailToWrite() const {
  throw FileNotWritten(kOperation.Error(kBadInput, "Failed to write " + path_));
}

void WriteReplayData(const FillStream& fill, const std::string& configFolder,
                     const std::string& outputPath, zAlloc alloc) {
  std::optional<ArchiveWriter> archive;
  try {
    archive.emplace(outputPath, configFolder, alloc);
  } catch (const Orv::Exception&) {
    TryContent(fill);
    throw;
  }
  try {
    fill(archive->Stream());
  } catch (const Orv::Exception& failure) {
    if (!archive->HasFailed()) throw;
    throw FileNotWritten(
        kOperation.Error(failure.Status(), "Failed to write the %s file", kReplayMember));
  }
  archive->Finish();
}
