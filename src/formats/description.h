// SPDX-License-Identifier: MIT
// What is wrong with a file, and what else is to say about it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scan/scan.h"

// One thing that is wrong. A reader returns the status of the first one; whoever looks into a file
// tells them all.
struct Complaint {
  std::optional<z64u> offset;  // bytes from the start of the file
  zStatus status;              // never 1
  std::string text;            // with both numbers where two disagree
};
using Complaints = std::vector<Complaint>;

template <class... Values>
Complaint MakeComplaint(std::optional<z64u> offset, zStatus status, std::string_view format,
                        const Values&... values) {
  return {offset, status, Orv::Format(format, values...)};
}

// A file of one scan, looked at whole.
struct ScanFileDescription {
  Complaints complaints;
  std::vector<std::string> notes;  // what a conversion drops without harm, and what may surprise
  std::vector<Caution> cautions;
  std::optional<Scan> scan;  // where nothing is wrong

  template <class... Values>
  void Note(std::string_view format, const Values&... values) {
    notes.push_back(Orv::Format(format, values...));
  }
  template <class... Values>
  void Warn(std::string_view key, std::string_view format, const Values&... values) {
    cautions.push_back({key, Orv::Format(format, values...)});
  }
};
