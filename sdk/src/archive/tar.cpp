// SPDX-License-Identifier: MIT
#include "sdk/archive.h"

zStatus zTar_Construct(zTar*, zStream, z32s, zAlloc) noexcept { return zERROR_UNIMPLEMENTED; }

zStatus zTar_BeginRead(zTar, char*, zSize, z32s*, z64u*) noexcept { return zERROR_UNIMPLEMENTED; }

zStatus zTar_BeginWrite(zTar, const char*, z32s, z64u) noexcept { return zERROR_UNIMPLEMENTED; }

zStatus zTar_WriteFile(zTar, const char*, zStream, z64u) noexcept { return zERROR_UNIMPLEMENTED; }
