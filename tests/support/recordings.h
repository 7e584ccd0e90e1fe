// SPDX-License-Identifier: MIT
// Messages of every kind, and recordings of them.
#pragma once

#include <string>
#include <vector>

#include "sdk/pipeline.h"
#include "support/scans.h"

// One of each kind, with values that differ in every field; `seed` makes them differ from frame to
// frame.
Handle MakeSurfaceWithIntensity(int seed);
Handle MakeCloud(int seed);
Handle MakeProfile(zType pointType, int seed);
Handle MakeArrayOf(const std::vector<Handle>& items);

// Everything that the public operations tell about a message, as text.
std::string Describe(MxMsg message);
// The message that a stream of heights stands for.
Handle MessageOf(const Plovia::SurfaceStream& surface);
// The messages of a frame.
using Frame = std::vector<Handle>;
std::string Describe(const Frame& frame);

// A scanner with the sources "Top", "Cloud", "Line", "Trace" and "Many" (arrayed).
Plovia::ReplayScannerInfo MakeScanner();
// A frame for that scanner.
Frame MakeFrame(int seed);

zBytes WriteRecording(const Plovia::ReplayScannerInfo& scanner, const std::vector<Frame>& frames,
                      bool classic);

Frame MessagesOf(const Plovia::ReplaySerializer& reader, const Plovia::ReplayFrame& frame);

// Calls take(segment, index entry, messages) for one frame after the other.
template <class Take>
void ForEachFrame(Plovia::ReplaySerializer& reader, const Take& take) {
  const bool classic = reader.GetReplayInfo().IsClassic();
  for (z64u part = 0; part < (classic ? 1 : reader.SegmentCount()); ++part) {
    if (!classic) reader.LoadDataIndexFiles();
    const std::vector<z32u> indexes = reader.ReadIndexInfo();
    for (zSize i = 0; i < indexes.size(); ++i) {
      take(part, indexes[i], MessagesOf(reader, reader.ReadData(i)));
    }
  }
}

// All that can be read from a recording, as text: scanners, then frames, each with its index entry.
std::string ReadRecording(zSourcePtr stream);

// Everything that is wrong in a recording stream, in the order of the offsets.
std::vector<Plovia::ReplayProblem> CheckReplay(const zBytes& replay);
