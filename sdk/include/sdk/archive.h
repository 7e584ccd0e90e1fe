// SPDX-License-Identifier: MIT
// Archive library: tar archives over streams.
//
// Not implemented yet: every operation returns zERROR_UNIMPLEMENTED.
#pragma once

#include "sdk/core.h"

using zTar = zObject;  // a zStream: reads and writes the current member's content

inline constexpr z32s zTAR_READ = 1;
inline constexpr z32s zTAR_WRITE = 2;

inline constexpr z32s zTAR_FILE = 0;
inline constexpr z32s zTAR_DIRECTORY = 1;

zStatus zTar_Construct(zTar* tar, zStream stream, z32s mode, zAlloc alloc) noexcept;
// Advances to the next member and tells its name (at most `capacity` bytes with the final zero),
// type and size in bytes.
zStatus zTar_BeginRead(zTar tar, char* name, zSize capacity, z32s* type, z64u* size) noexcept;
// Starts a member of `size` bytes; a directory has 0.
zStatus zTar_BeginWrite(zTar tar, const char* name, z32s type, z64u size) noexcept;
// Writes a whole file member from `source`, which is open for reading.
zStatus zTar_WriteFile(zTar tar, const char* name, zStream source, z64u size) noexcept;
