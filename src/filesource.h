// SPDX-License-Identifier: MIT
// The one way in which files are read.
#pragma once

#include <string>

#include "sdk/object.h"

// The error of a file that cannot be opened or read.
class FileNotRead : public Orv::Exception {
 public:
  explicit FileNotRead(const Orv::Exception& failure) : Exception(failure) {}
};

// A file that is read where and when its bytes are needed. Throws with code -997: FileNotRead by
// "Failed to open <path>", Orv::Exception by "The inputted file is empty", and FileNotRead by
// "Failed to read <path>", here and from the source, also when somebody cuts the file or writes to
// it in the meantime.
zSourcePtr OpenFile(const std::string& path);

// All bytes of a source.
zBytes ReadAll(const zSource& source);
