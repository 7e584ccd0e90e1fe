// SPDX-License-Identifier: MIT
// Lays a recording out as an MCAP file.
#pragma once

#include <vector>

#include "sdk/pipeline.h"

namespace sdk::replay {

struct FrameContent {
  z32u index = 0;
  Plovia::ReplayFrame messages;
};

// The recording, which looks into the frames' messages. Throws Orv::Exception for messages without
// a source and for what a recording cannot hold.
Plovia::ReplayStream WriteReplay(const std::vector<Plovia::ReplayScannerInfo>& scanners,
                                 const std::vector<FrameContent>& frames, bool classic);

}  // namespace sdk::replay
