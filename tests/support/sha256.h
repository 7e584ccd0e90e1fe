// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

#include "sdk/core.h"

// SHA-256 (FIPS 180-4) in lower-case hexadecimal.
std::string Sha256(std::span<const z8u> bytes);
