// SPDX-License-Identifier: MIT
#include "inspect/selection.h"

#include <algorithm>
#include <charconv>

#include "statuses.h"

namespace {

// The whole text as a number.
std::optional<zSize> ParseFrame(std::string_view text) {
  zSize number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

// Names of sources, in their order; not more than people read.
std::string SourcesText(const FileFacts& facts) {
  constexpr zSize kMost = 8;
  std::vector<std::string_view> sources;
  for (const PlacedScan& scan : facts.scans) {
    if (std::ranges::find(sources, scan.source) != sources.end()) continue;
    if (sources.size() == kMost) {
      sources.emplace_back();  // stands for the others
      break;
    }
    sources.push_back(scan.source);
  }
  if (sources.size() == 1 && sources[0].empty()) return "without a source";
  std::string text = sources.size() == 1 ? "of the source " : "of the sources ";
  for (zSize i = 0; i < sources.size(); ++i) {
    if (i > 0) text += ", ";
    text += i == kMost ? "..." : Orv::Format("\"%s\"", std::string(sources[i]));
  }
  return text;
}

[[noreturn]] void TellWhatThereIs(const FileFacts& facts) {
  constexpr Orv::Operation kOperation{"inspection", "FindScans"};
  if (facts.scans.empty()) kOperation.Fail(kBadInput, "There is no such scan, and no other one");
  const std::string frames =
      facts.frames == 1 ? "is frame 0" : Orv::Format("are frames 0 to %zu", facts.frames - 1);
  kOperation.Fail(kBadInput, "There is no such scan; there %s %s", frames, SourcesText(facts));
}

}  // namespace

std::optional<FrameRange> ParseFrameRange(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto first = ParseFrame(text.substr(0, colon));
  const auto last = colon == text.npos ? first : ParseFrame(text.substr(colon + 1));
  if (!first || !last || *first > *last) return std::nullopt;
  return FrameRange{*first, *last};
}

FrameRange Selection::FramesOf(zSize count) const {
  return frames ? FrameRange{frames->first, std::min(frames->last, count - 1)}
                : FrameRange{0, count - 1};
}

bool Selection::FindsAny(const FileFacts& facts) const {
  const bool any = std::ranges::any_of(
      facts.scans, [&](const PlacedScan& scan) { return Wants(scan.frame, scan.source); });
  if (!any && facts.problems.empty()) TellWhatThereIs(facts);
  return any;
}

void Selection::Keep(FileFacts& facts) const {
  if (IsAll()) return;
  static_cast<void>(FindsAny(facts));
  std::erase_if(facts.scans,
                [&](const PlacedScan& scan) { return !Wants(scan.frame, scan.source); });
}
