// SPDX-License-Identifier: MIT
// Which scans of a file somebody wants to see.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "inspect/facts.h"

// Frames, counted from 0, with both ends.
struct FrameRange {
  zSize first = 0, last = 0;

  bool Holds(zSize frame) const { return first <= frame && frame <= last; }
};

// "3" or "3:8"; nothing for another text.
std::optional<FrameRange> ParseFrameRange(std::string_view text);

struct Selection {
  std::optional<FrameRange> frames;  // nothing: all
  std::string source;                // empty: all

  bool Wants(zSize frame, const std::string& tag) const {
    return (!frames || frames->Holds(frame)) && (source.empty() || source == tag);
  }
  bool IsAll() const { return !frames && source.empty(); }
  // Which of so many frames are wanted: at least one is.
  FrameRange FramesOf(zSize count) const;

  // Whether there are such scans. Throws Orv::Exception, which tells what there is, where there are
  // none in a file that nothing is wrong with.
  bool FindsAny(const FileFacts& facts) const;
  // Leaves only those scans, which must be there as above.
  void Keep(FileFacts& facts) const;
};
