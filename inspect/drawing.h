// SPDX-License-Identifier: MIT
// Pictures and pages of files.
#pragma once

#include "inspect/facts.h"
#include "inspect/options.h"
#include "inspect/progress.h"

// Writes the picture and the page that the options ask for. Throws Orv::Exception when there is no
// such scan, when an output is the file itself, or when it cannot be written.
FileFacts DrawFile(const std::string& path, const InspectOptions& options, Progress& progress);
