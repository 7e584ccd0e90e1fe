// SPDX-License-Identifier: MIT
// Status codes of the tool's own errors. An SDK call's own status is passed on when it fails.
#pragma once

#include "sdk/core.h"

inline constexpr zStatus kRefused = 0;          // what a format or a job does not take
inline constexpr zStatus kMalformed = -984;     // file data that breaks its format's rules
inline constexpr zStatus kNotValidHere = -988;  // nothing imported, or no option for this import
inline constexpr zStatus kUnsupportedVersion = -989;
inline constexpr zStatus kNotStarted = -990;  // start-up failed, or there is no input
inline constexpr zStatus kNotImplemented = -996;
inline constexpr zStatus kBadInput = -997;       // bad input, argument or state: the usual one
inline constexpr zStatus kMissing = -999;        // empty input, no or an empty directory
inline constexpr zStatus kNotSupported = -1000;  // no such conversion
