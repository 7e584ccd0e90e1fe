// SPDX-License-Identifier: MIT
// What the converter's errors have in common.
#pragma once

#include "statuses.h"

inline constexpr const char* kSourceFile = "surfacefileconverter";
