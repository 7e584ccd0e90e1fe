// SPDX-License-Identifier: MIT
// One conversion of a batch.
#pragma once

#include <functional>

#include "batch/plan.h"
#include "batch/record.h"

// Is told the names of outputs before they are written, and throws what speaks against them.
using ClaimNames = std::function<void(const Task& task, const std::vector<std::string>& names)>;

// Converts, and tells what became of it, whatever went wrong. Folders for the outputs are made
// where they are missing.
Entry Convert(const Task& task, const BatchOptions& options, const ClaimNames& claim);
