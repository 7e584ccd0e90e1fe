// SPDX-License-Identifier: MIT
// Whether the converter takes what is looked at, by its own rules.
#pragma once

#include <optional>
#include <string>

#include "formats/filetypes.h"
#include "sdk/core.h"

// Converts a file or a directory, writes what comes out nowhere, and tells in the
// converter's words why it refuses it; nothing where it does not. A recording is refused when its
// frames go into no format. Throws std::bad_alloc.
std::optional<std::string> RefusalOf(FileType fileType, zSourcePtr file);
std::optional<std::string> RefusalOfDirectory(const std::string& path);
