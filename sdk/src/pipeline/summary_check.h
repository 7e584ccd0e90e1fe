// SPDX-License-Identifier: MIT
#pragma once

#include "pipeline/damage.h"
#include "pipeline/records.h"

namespace sdk::replay {

// Compares what the indexes and the summary of a stream say with its data section, and verifies the
// checksums of attachments. Ends without a word where the stream's structure is broken.
void CheckSummary(Bytes stream, DamageLog& log);

}  // namespace sdk::replay
