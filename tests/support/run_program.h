// SPDX-License-Identifier: MIT
// A program run to its end in the current directory.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "support/temp_directory.h"

struct Outcome {
  int exitCode;  // -1 when a signal ended the program
  std::string output;
  std::string errors;
  unsigned long long peakMemory;  // bytes
};

inline Outcome RunProgram(const std::string& program, std::vector<std::string> args) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (std::freopen("stdout.txt", "w", stdout) != nullptr &&
        std::freopen("stderr.txt", "w", stderr) != nullptr) {
      execv(argv[0], argv.data());
    }
    std::_Exit(99);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  Outcome outcome = {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile("stdout.txt"),
                     ReadFile("stderr.txt"), static_cast<z64u>(usage.ru_maxrss) * 1024};
  for (const char* name : {"stdout.txt", "stderr.txt"}) std::filesystem::remove(name);
  return outcome;
}
