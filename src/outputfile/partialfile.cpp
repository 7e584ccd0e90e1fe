// SPDX-License-Identifier: MIT
#include "outputfile/partialfile.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>

#include "outputfile/system.h"
#include "sdk/object.h"

namespace {

constexpr std::string_view kEnding = ".partial";

// The files that are being written at this time, for the signal handler. One that finds no room is
// left behind by a signal.
constexpr zSize kMostFiles = 256;
std::array<std::atomic<const char*>, kMostFiles> partialFiles{};
static_assert(std::atomic<const char*>::is_always_lock_free);

// Whether they were removed since the process ends: other threads create no more.
std::atomic<bool> ending = false;
static_assert(std::atomic<bool>::is_always_lock_free);

zSize Register(const char* path) {
  for (zSize slot = 0; slot < kMostFiles; ++slot) {
    const char* none = nullptr;
    if (partialFiles[slot].compare_exchange_strong(none, path)) return slot;
  }
  return kMostFiles;
}

// A hidden name that nobody else takes, and that fits wherever the target's does.
std::string NewPathBeside(const std::string& target) {
  std::random_device random;
  const std::string name = Orv::Format(".trelvane-%08x%08x", random(), random()).append(kEnding);
  return (std::filesystem::path(target).parent_path() / name).string();
}

extern "C" void RemoveAndEnd(int signal) {
  RemovePartialFiles();
  static_cast<void>(std::signal(signal, SIG_DFL));
  static_cast<void>(std::raise(signal));
}

}  // namespace

PartialFile::PartialFile(const std::string& target)
    : path_(NewPathBeside(target)), slot_(Register(path_.c_str())) {}

PartialFile::~PartialFile() {
  if (present_) static_cast<void>(std::remove(path_.c_str()));
  if (slot_ < kMostFiles) partialFiles[slot_] = nullptr;
}

zStatus PartialFile::Create(zFile* file) {
  if (ending) return zERROR_STREAM;
  const zStatus created = zFile_Construct(file, path_.c_str(), zFILE_NEW, &zAllocator::Default());
  present_ = created == zOK;
  return created;
}

bool IsPartialFileName(std::string_view name) {
  return name.starts_with('.') && name.ends_with(kEnding);
}

void RemovePartialFiles() noexcept {
  ending = true;
  for (const std::atomic<const char*>& file : partialFiles) {
    if (const char* path = file) static_cast<void>(std::remove(path));
  }
}

void GuardPartialFiles() {
  for (const int signal : kInterruptions) {
    // What is ignored, as in a run that outlives its terminal, stays ignored.
    if (std::signal(signal, RemoveAndEnd) == SIG_IGN) {
      static_cast<void>(std::signal(signal, SIG_IGN));
    }
  }
  IgnoreFileSizeSignal();
}
