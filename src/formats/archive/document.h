// SPDX-License-Identifier: MIT
// JSON documents out of archives from anywhere.
#pragma once

#include <nlohmann/json.hpp>

#include "sdk/object.h"

// Parses a document; errors of the JSON library pass through. In memory a document may take 70
// times its size, one nested as deeply as it is long also takes the stack of whoever copies it, and
// each message that is exported asks it again. So one of more than 1 MiB, 65 536 values, keys,
// objects and arrays, or 100 levels is an error of the operation.
nlohmann::json ParseBounded(const zSource& document, const Orv::Operation& operation);
