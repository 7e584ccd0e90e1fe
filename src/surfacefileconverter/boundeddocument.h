// SPDX-License-Identifier: MIT
// JSON documents out of archives from anywhere.
#pragma once

#include <nlohmann/json.hpp>

#include "sdk/core.h"

// Parses a document; errors of the JSON library pass through. In memory a document may take 70
// times its size, and one nested as deeply as it is long also takes the stack of whoever copies it:
// more than 16 MiB, a million values and keys, or a depth of 100 is an error of the operation
// `function`.
nlohmann::json ParseBounded(const zBytes& document, const char* function);
