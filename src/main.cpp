// SPDX-License-Identifier: MIT
// Entry: the banner, the log file, the libraries, and the one place where errors are caught.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "commandargsoperator/commandargsoperator.h"
#include "console.h"
#include "outputfile/partialfile.h"
#include "sdk/message.h"
#include "sdk/pipeline.h"
#include "statuses.h"

namespace {

constexpr const char* kLogName = "log.txt";
constexpr std::streamoff kLongestLog = 2048;  // bytes; a longer one starts anew

// Bytes of a file; 0 when it cannot be opened.
std::streamoff getFileSize(std::string fileName) {
  std::ifstream file(fileName, std::ios::binary);
  if (!file.is_open()) return 0;
  file.seekg(0, std::ios::end);
  return file.tellg();
}

void StartLibraries() {
  static zCoreLib coreLibrary = nullptr;
  static MxLib messageLibrary = nullptr;
  static PloviaLib pipelineLibrary = nullptr;
  constexpr Orv::Operation kOperation{"main", "OrvLibInit"};
  const auto require = [&](zStatus status, const Orv::ErrorText& text) {
    if (status != zOK) kOperation.Fail(kNotStarted, text);
  };
  require(zCoreLib_Construct(&coreLibrary), {"Failed to initialize zCoreLib", 76});
  require(MxLib_Construct(&messageLibrary), {"Failed to initialize MxLib", 77});
  require(PloviaLib_Construct(&pipelineLibrary), {"Failed to initialize PloviaLib", 78});
}

int ReportFailure(const Orv::Exception& failure, std::ofstream& log) {
  consoleStatus("[ERROR] ", failure.what());
  try {
    log << failure.to_string(0) << std::endl;
  } catch (const std::exception&) {
    // The console has the report.
  }
  return 1;
}

int Run(int argc, char** argv, std::ofstream& log) {
  try {
    StartLibraries();
    CommandArgsOperator commandArgs;
    std::string line;
    for (int i = 1; i < argc; ++i) line.append(argv[i]).append(" ");
    commandArgs.process(parseCommandLine(line, commandArgs.getKnownOptions()));
  } catch (const Orv::Exception& failure) {
    return ReportFailure(failure, log);
  }
  return 0;
}

// One frame's buffers follow another's: given back to the system in between, they would have to be
// cleared again.
void KeepFreedMemory() {
#ifdef __GLIBC__
  constexpr int kMostKept = 64 << 20;
  constexpr int kMostFromHeap = 32 << 20;
  static_cast<void>(mallopt(M_TRIM_THRESHOLD, kMostKept));
  static_cast<void>(mallopt(M_MMAP_THRESHOLD, kMostFromHeap));
#endif
}

// Takes no memory: there may be none.
void ReportWithoutMemory(const char* message) {
  consoleWrite("[ERROR] std::exception - ");
  consoleWrite(message);
  consoleWrite(".\n");
}

// Some operations of the libraries promise not to fail and end the program where memory does.
[[noreturn]] void ReportTermination() {
  RemovePartialFiles();
  ReportWithoutMemory("std::bad_alloc");
  static_cast<void>(std::fflush(stdout));
  std::_Exit(1);
}
// Constants of other files, which are made later, take memory too.
[[maybe_unused]] const std::terminate_handler kUsual = std::set_terminate(ReportTermination);

int OpenLogAndRun(int argc, char** argv) {
  consoleWrite("Trelvane " TRELVANE_VERSION "\n");
  if (argc < 2) {
    printUsage();
    return 1;
  }
  std::ofstream log;
  std::error_code unknown;
  // A pipe would be waited for until somebody reads it.
  if (!std::filesystem::is_fifo(kLogName, unknown)) {
    const bool startAnew = getFileSize(kLogName) > kLongestLog;
    log.open(kLogName, std::ios::binary | (startAnew ? std::ios::trunc : std::ios::app));
  }
  if (!log.is_open()) {
    consoleStatus("[ERROR] ", "Failed to open the log file");
    return 1;
  }
  return Run(argc, argv, log);
}

}  // namespace

int main(int argc, char** argv) {
  KeepFreedMemory();
  GuardPartialFiles();
  try {
    return OpenLogAndRun(argc, argv);
  } catch (const std::exception& failure) {
    ReportWithoutMemory(failure.what());
  }
  return 1;
}
