// SPDX-License-Identifier: MIT
// Archive library: tar archives over streams.
//
// Written archives are ustar (with a pax header for a member of 8 GiB or more), owner 0, time 0,
// modes 644 and 755: the same members give the same bytes. Read are the archives of all common tar
// programs; what is neither a plain file nor a directory (links, sparse files, devices) is
// announced as zTAR_OTHER.
#pragma once

#include "sdk/core.h"

using zTar = zObject;  // a zStream: reads or writes the current member's content, in order

inline constexpr z32s zTAR_READ = 1;
inline constexpr z32s zTAR_WRITE = 2;

inline constexpr z32s zTAR_FILE = 0;
inline constexpr z32s zTAR_DIRECTORY = 1;
inline constexpr z32s zTAR_OTHER = 2;

// Reading takes a memory stream and reads its buffer in place; writing takes any stream. The stream
// must outlive the archive. Destroying a written archive completes it, and reports a failure.
zStatus zTar_Construct(zTar* tar, zStream stream, z32s mode, zAlloc alloc) noexcept;
// Advances to the next member and tells its name, type and size in bytes, as the archive claims
// it. A name that does not fit into `capacity` bytes with its final zero is cut, and its member is
// announced as zTAR_OTHER. Fails at the end of the archive and where it is damaged.
zStatus zTar_BeginRead(zTar tar, char* name, zSize capacity, z32s* type, z64u* size) noexcept;
// Gives the current member's content where it lies in the memory stream, before any of it is read;
// fails unless all `size` bytes are there in one piece.
zStatus zTar_View(zTar tar, const void** content, zSize size) noexcept;
// Starts a member of `size` bytes; a directory has 0.
zStatus zTar_BeginWrite(zTar tar, const char* name, z32s type, z64u size) noexcept;
// Writes a whole file member of `size` bytes from `source`, which is open for reading.
zStatus zTar_WriteFile(zTar tar, const char* name, zStream source, z64u size) noexcept;
