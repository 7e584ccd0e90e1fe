// SPDX-License-Identifier: MIT
// Chunks that other MCAP tools compressed.
#pragma once

#include "pipeline/field_reader.h"

namespace sdk::replay {

// The records of a chunk that stands at `place`. Throws Orv::Exception for an unknown compression,
// damaged data, or records that are not as long as the chunk declares. Memory grows with what
// comes out, not with what is declared.
zBytes Decompress(const Chunk& chunk, const Place& place);

}  // namespace sdk::replay
