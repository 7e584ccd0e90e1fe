// SPDX-License-Identifier: MIT
#ifdef _WIN32

#include <windows.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "outputfile/system.h"

namespace {

// Paths are UTF-8. Not every system replaces files by names that are relative.
std::wstring Wide(const std::string& path) {
  return std::filesystem::absolute(std::u8string(path.begin(), path.end())).wstring();
}

}  // namespace

const std::vector<int> kInterruptions = {SIGBREAK, SIGINT, SIGTERM};

void IgnoreFileSizeSignal() {}

bool MayWrite(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) == 0;
}

// Replacing a file keeps its attributes and access list.
void CopyOwnership(const std::string&, const std::string&) {}

Replaced Replace(const std::string& newFile, const std::string& target) {
  // A scanner for viruses or an indexer may hold the file for a moment.
  constexpr int kTries = 50;
  constexpr std::chrono::milliseconds kPause{20};
  const std::wstring from = Wide(newFile);
  const std::wstring to = Wide(target);
  for (int i = 0; i < kTries; ++i) {
    if (ReplaceFileW(to.c_str(), from.c_str(), nullptr,
                     REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS, nullptr,
                     nullptr) != 0) {
      return Replaced::done;
    }
    // There may be nothing to replace; never the other way round, as an open file would stay.
    if (GetLastError() == ERROR_FILE_NOT_FOUND &&
        MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0) {
      return Replaced::done;
    }
    std::this_thread::sleep_for(kPause);
  }
  // Some network shares know this way alone.
  return MoveFileExW(from.c_str(), to.c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0
             ? Replaced::done
             : Replaced::failed;
}

bool SyncFile(const std::string& path) {
  const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool synced = FlushFileBuffers(file) != 0;
  return CloseHandle(file) != 0 && synced;
}

// The system writes names through its journal.
bool SyncFolder(const std::string&) { return true; }

// Pipes are no files here.
PipeReader::PipeReader(const std::string&) : descriptor_(0) {}
PipeReader::~PipeReader() = default;

#endif
