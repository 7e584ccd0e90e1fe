// SPDX-License-Identifier: MIT
// Archive library: tar archives.
//
// Written archives are ustar (a member of 8 GiB or more has its size in base 256, as all common tar
// programs read it), owner 0, time 0, modes 644 and 755: the same members give the same bytes. Read
// are the archives of all common tar programs; what is neither a plain file nor a directory (links,
// sparse files, devices) is announced as zTAR_OTHER.
#pragma once

#include "sdk/core.h"

using zTar = zObject;

inline constexpr z32s zTAR_FILE = 0;
inline constexpr z32s zTAR_DIRECTORY = 1;
inline constexpr z32s zTAR_OTHER = 2;

// Reading. What the source throws passes through both.
zStatus zTar_Open(zTar* tar, zSourcePtr source, zAlloc alloc);
// A member as the archive claims it; of a file, the content may not be all there.
struct zTarMember {
  std::string name;
  z32s type = zTAR_OTHER;
  z64u offset = 0;  // of the content, in the source
  z64u size = 0;    // of the content
};
// Advances to the next member. Fails with -5 at the end of the archive, and with another status
// where it is damaged.
zStatus zTar_Next(zTar tar, zTarMember* member);

// Writing, to a stream that can be moved back; it must outlive the archive. Destroying the archive
// completes it, and reports a failure.
zStatus zTar_Construct(zTar* tar, zStream stream, zAlloc alloc) noexcept;
// Starts a member. The archive is then a zStream for the content of a file, which ends where the
// next member begins; positions are counted from its first byte.
zStatus zTar_BeginWrite(zTar tar, const char* name, z32s type) noexcept;
