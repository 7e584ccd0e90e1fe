// SPDX-License-Identifier: MIT
// Status codes of the converter's own errors.
#pragma once

#include "sdk/core.h"

inline constexpr const char* kSourceFile = "surfacefileconverter";

inline constexpr zStatus kBadInput = -997;  // bad input, argument or state: the usual one
inline constexpr zStatus kNotImplemented = -996;
inline constexpr zStatus kNotValidHere = -988;   // nothing imported, or no option for this import
inline constexpr zStatus kNotSupported = -1000;  // no such conversion
