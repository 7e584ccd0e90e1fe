// SPDX-License-Identifier: MIT
// The channels of a recording stream and the scanners and sources that they stand for.
#pragma once

#include <map>
#include <set>

#include "pipeline/field_reader.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

class ReplayChannels {
 public:
  enum class Kind { frameIndex, source, other };

  void AddSchema(const RawRecord& record);
  void AddChannel(const RawRecord& record);
  void AddScanner(const TextMap& metadata);

  // What the messages of a channel are; a message before its channel is damage.
  Kind KindOf(const Message& message, const Place& place) const;

  // The scanners in order, each with its sources in the order of their channels.
  std::vector<Plovia::ReplayScannerInfo> Scanners() const;

 private:
  struct Known {
    Kind kind;
    zBytes content;  // of the record: the same channel may be told again
    Place place;
    z32u scanner = 0;
    ReplaySourceInfo source;
  };

  std::set<z16u> schemas_;
  std::map<z16u, Known> channels_;
  std::vector<Plovia::ReplayScannerInfo> scanners_;
};

// The text under a key, empty when there is none.
std::string_view TextOf(const TextMap& map, std::string_view key);

}  // namespace sdk::replay
