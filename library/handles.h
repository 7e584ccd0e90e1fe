// SPDX-License-Identifier: MIT
// What stands behind the library's handles.
#pragma once

#include "input.h"

struct trelvane_file {
  std::unique_ptr<Input> input;
};

// Nothing changes it after it was made.
struct trelvane_scan {
  Scan scan;
};
