// SPDX-License-Identifier: MIT
// Looks at files of all kinds, and at directories of surfaces.
#pragma once

#include "inspect/findings.h"

// All that is known about a file or directory.
// `visit` is shown the scans that it wants. Where the file cannot be read, the problems say why.
// Throws std::bad_alloc and Orv::Exception only where there is no memory.
FileFacts InspectFile(const std::string& path, Depth depth, const ScanVisitor& visit,
                      Progress& progress);
