// SPDX-License-Identifier: MIT
// Files whose content is written as it comes about.
#pragma once

#include <functional>
#include <string>

#include "sdk/object.h"

// Writes a content, piece by piece, to a stream. Throws Orv::Exception where it cannot go on, as
// when a write fails.
using FillStream = std::function<void(zStream)>;

// Replaces the file by what is written, in the way of OutputFile. What is wrong with the content
// itself is told before what is wrong with the file: by `cannotOpen`, otherwise "Failed to open
// <path>", and "Failed to write <path>", code -997, of the operation.
void WriteFile(const Orv::Operation& operation, const std::string& path, const FillStream& fill);
void WriteFile(const Orv::Operation& operation, const std::string& path, const FillStream& fill,
               const Orv::Exception& cannotOpen);
// Replaces the file by these bytes, in the same way.
void WriteBuffer(const zBytes& bytes, const std::string& path);

// Writes a content that nobody wants, for what may be wrong with it.
void TryContent(const FillStream& fill);
