// SPDX-License-Identifier: MIT
// A program run to its end in the current directory.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_directory.h"

struct Outcome {
  int exitCode;  // -1 when a signal ended the program
  std::string output;
  std::string errors;
  unsigned long long peakMemory;  // bytes
};

inline Outcome RunProgram(const std::string& program, std::vector<std::string> args) {
  args.insert(args.begin(), program);
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  const char* const outputName = "stdout.txt";
  const char* const errorsName = "stderr.txt";
  const pid_t child = fork();
  if (child == 0) {
    if (std::freopen(outputName, "w", stdout) != nullptr &&
        std::freopen(errorsName, "w", stderr) != nullptr) {
      execv(argv[0], argv.data());
    }
    std::_Exit(99);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  Outcome outcome = {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(outputName),
                     ReadFile(errorsName), static_cast<unsigned long long>(usage.ru_maxrss) * 1024};
  std::filesystem::remove(outputName);
  std::filesystem::remove(errorsName);
  return outcome;
}
