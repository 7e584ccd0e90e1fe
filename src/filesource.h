// SPDX-License-Identifier: MIT
// The one way in which files are read.
#pragma once

#include <string>

#include "sdk/object.h"

// A file that is read where and when its bytes are needed. Throws Orv::Exception with code -997: by
// "Failed to open <path>", by "The inputted file is empty", and by "Failed to read <path>", here
// and from the source, also when somebody cuts the file or writes to it in the meantime.
zSourcePtr OpenFile(const std::string& path);

// All bytes of a source.
zBytes ReadAll(const zSource& source);
