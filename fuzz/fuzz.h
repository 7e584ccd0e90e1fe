// SPDX-License-Identifier: MIT
// What the fuzz targets share.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <exception>

#include "support/scans.h"

// Errors that the tool would report are what damaged input must give; all else is a finding.
template <class Operation>
void Attempt(Operation operation) {
  try {
    operation();
  } catch (const std::exception&) {
  }
}

inline void Require(bool holds) {
  if (!holds) std::abort();
}
