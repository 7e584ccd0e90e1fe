// SPDX-License-Identifier: MIT
// Whole files between disk and memory. Every failure is an Orv::Exception that names the path,
// with code -997.
#pragma once

#include <string>

#include "sdk/pipeline.h"

// Fills `bytes` with the file's content; an empty file is an error.
void ReadFileBuffer(const std::string& path, zBytes& bytes);

// Replaces the file by the whole stream, whatever its position, in the way of OutputFile.
void WriteStream(zMemory stream, const std::string& path);
// Replaces the file by these bytes, in the same way.
void WriteBuffer(const zBytes& bytes, const std::string& path);
// With another error for a file that cannot be opened.
void WriteBuffer(const zBytes& bytes, const std::string& path, const Orv::Exception& cannotOpen);
// Replaces the file by a recording; its errors are those of WriteBuffer.
void WriteReplayStream(const Plovia::ReplayStream& replay, const std::string& path);
