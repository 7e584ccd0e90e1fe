// SPDX-License-Identifier: MIT
// How command lines end that are read with CLI11.
#pragma once

#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>
#include <sstream>

#include "text.h"

// Messages repeat what the command line says, whatever that holds.
inline void WritePrintableLines(const std::string& text, std::ostream& out) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) out << Printable(line) << '\n';
}

// Lets `read` read a command line by the app. Prints help, version and what is wrong, and tells the
// exit code then: 0, 1 where nothing could be printed, 2 for wrong usage.
template <class Read>
std::optional<int> ReadCommandLine(const CLI::App& app, const Read& read) {
  try {
    read();
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    std::ostringstream help;
    std::ostringstream complaint;
    const bool wrong = app.exit(error, help, complaint) != 0;
    WritePrintableLines(help.str(), std::cout);
    WritePrintableLines(complaint.str(), std::cerr);
    if (wrong) return 2;
    return std::cout.flush() ? 0 : 1;
  }
}
