// SPDX-License-Identifier: MIT
#include "pipeline/replay_channels.h"

#include <algorithm>
#include <charconv>

#include "pipeline/replay_names.h"

namespace sdk::replay {

namespace {

template <class Number>
Number NumberOf(const TextMap& metadata, std::string_view key, const Place& place) {
  const std::string_view text = TextOf(metadata, key);
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc() || stop != end) {
    ThrowDamage(place, "the channel's \"%s\" is \"%s\", no decimal number in its range", key, text);
  }
  return number;
}

}  // namespace

std::string_view TextOf(const TextMap& map, std::string_view key) {
  const auto entry = std::ranges::find(map, key, &TextMap::value_type::first);
  return entry == map.end() ? std::string_view() : entry->second;
}

void ReplayChannels::AddSchema(const RawRecord& record) {
  schemas_.insert(Parse<Schema>(record).id);
}

void ReplayChannels::AddChannel(const RawRecord& record) {
  const auto channel = Parse<Channel>(record);
  if (channel.schemaId != 0 && !schemas_.contains(channel.schemaId)) {
    ThrowDamage(record.place, "channel %u has the unknown schema %u", channel.id, channel.schemaId);
  }
  const auto known = channels_.find(channel.id);
  if (known != channels_.end()) {
    if (std::ranges::equal(known->second.content, record.head)) return;
    ThrowDamage(record.place, "channel %u is told twice, with different contents", channel.id);
  }

  const zBytes content(record.head.begin(), record.head.end());
  Known added{Kind::other, content, record.place, 0, {}};
  const TextMap& metadata = channel.metadata;
  if (channel.topic == kFrameIndexTopic) {
    added.kind = Kind::frameIndex;
  } else if (std::ranges::find(metadata, kDataTypeKey, &TextMap::value_type::first) !=
             metadata.end()) {
    added.kind = Kind::source;
    added.scanner = NumberOf<z32u>(metadata, kScannerKey, record.place);
    added.source.name = TextOf(metadata, kNameKey);
    added.source.displayName = TextOf(metadata, kDisplayNameKey);
    added.source.dataType = NumberOf<z16u>(metadata, kDataTypeKey, record.place);
    added.source.arrayed = NumberOf<z8u>(metadata, kArrayedKey, record.place);
    added.source.reserved = NumberOf<z64u>(metadata, kReservedKey, record.place);
    if (added.source.arrayed > 1) {
      ThrowDamage(record.place, "the channel's \"%s\" is %u, not 0 or 1", kArrayedKey,
                  added.source.arrayed);
    }
  }
  channels_.emplace(channel.id, std::move(added));
}

void ReplayChannels::AddScanner(const TextMap& metadata) {
  scanners_.push_back({std::string(TextOf(metadata, kFamilyKey)),
                       std::string(TextOf(metadata, kIdKey)),
                       std::string(TextOf(metadata, kNameKey)),
                       {}});
}

ReplayChannels::Kind ReplayChannels::KindOf(const Message& message, const Place& place) const {
  const auto known = channels_.find(message.channelId);
  if (known == channels_.end()) {
    ThrowDamage(place, "a message of the unknown channel %u", message.channelId);
  }
  return known->second.kind;
}

std::vector<Plovia::ReplayScannerInfo> ReplayChannels::Scanners() const {
  std::vector<Plovia::ReplayScannerInfo> scanners = scanners_;
  for (const auto& [id, channel] : channels_) {
    if (channel.kind != Kind::source) continue;
    if (channel.scanner >= scanners.size()) {
      ThrowDamage(channel.place, "channel %u belongs to scanner %u of %zu", id, channel.scanner,
                  scanners.size());
    }
    scanners[channel.scanner].sources.push_back(channel.source);
  }
  return scanners;
}

}  // namespace sdk::replay
