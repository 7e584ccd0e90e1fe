// SPDX-License-Identifier: MIT
// What stands at the end of a recording stream.
#pragma once

#include "sdk/pipeline.h"

namespace sdk::replay {

// Where the footer of a stream says that its summary begins, behind the data section; nothing where
// there can be no footer, and where it says what cannot be.
std::optional<z64u> FindSummary(const zSource& stream);

// Never throws damage.
Plovia::ReplaySummary ReadSummary(const zSource& stream);

}  // namespace sdk::replay
