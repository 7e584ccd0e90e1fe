// SPDX-License-Identifier: MIT
#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "outputfile/system.h"

namespace {

bool Sync(const std::string& path, int flags) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | flags);
  const bool synced = fsync(descriptor) == 0;  // neither call takes what could not be opened
  return close(descriptor) == 0 && synced;
}

}  // namespace

const std::vector<int> kInterruptions = {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM};

void IgnoreFileSizeSignal() { static_cast<void>(std::signal(SIGXFSZ, SIG_IGN)); }

bool MayWrite(const std::string& path) {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

void CopyOwnership(const std::string& oldFile, const std::string& newFile) {
  struct stat old {};
  if (stat(oldFile.c_str(), &old) != 0) return;
  mode_t mode = old.st_mode & 07777;
  if (chown(newFile.c_str(), old.st_uid, old.st_gid) != 0) {
    mode &= 0777;  // nobody else gains what the old owner granted to run as itself
    // The old group may do what everybody may; another group may do no more than that.
    if (chown(newFile.c_str(), static_cast<uid_t>(-1), old.st_gid) != 0) {
      mode = (mode & ~mode_t{070}) | ((mode & 07) << 3);
    }
  }
  // Some network file systems refuse this; the file is whole all the same.
  static_cast<void>(chmod(newFile.c_str(), mode));
}

Replaced Replace(const std::string& newFile, const std::string& target) {
  if (std::rename(newFile.c_str(), target.c_str()) == 0) return Replaced::done;
  // Another user's file in a folder like /tmp; a file that is mounted by itself.
  const bool kept = errno == EACCES || errno == EPERM || errno == EBUSY || errno == EXDEV;
  return kept ? Replaced::notHere : Replaced::failed;
}

bool SyncFile(const std::string& path) { return Sync(path, 0); }

bool SyncFolder(const std::string& path) { return Sync(path, O_DIRECTORY); }

PipeReader::PipeReader(const std::string& path) {
  constexpr int kTries = 500;
  constexpr std::chrono::milliseconds kPause{10};
  for (int i = 0; i < kTries; ++i) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor_ >= 0 || errno != ENXIO) return;
    std::this_thread::sleep_for(kPause);
  }
}

PipeReader::~PipeReader() {
  if (descriptor_ >= 0) static_cast<void>(close(descriptor_));
}

#endif
