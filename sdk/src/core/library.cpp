// SPDX-License-Identifier: MIT
#include "core/library.h"

zStatus zCoreLib_Construct(zCoreLib* library) noexcept { return sdk::StartLibrary(library); }
