// SPDX-License-Identifier: MIT
#include "inspect/sourcetable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "text.h"

namespace {

template <class Value>
void Include(std::optional<Range<Value>>& range, const Range<Value>& other) {
  range = range ? Range<Value>{std::min(range->lowest, other.lowest),
                               std::max(range->highest, other.highest)}
                : other;
}

// What the scans of a source have in common, and between what they lie.
struct Source {
  std::set<zSize> frames;
  zSize scans = 0, cautioned = 0;
  bool lines = true;  // profiles, without rows
  std::optional<Range<z32u>> width, length;
  std::optional<Range<z64f>> share;  // of valid points
  std::string lowestShare, highestShare;
  std::optional<Range<z64f>> heights;
  std::optional<Range<z8u>> intensity;

  void Add(const PlacedScan& placed) {
    const ScanFacts& scan = placed.facts;
    frames.insert(placed.frame);
    ++scans;
    if (!scan.cautions.empty()) ++cautioned;
    lines = lines && scan.kind >= ScanKind::profile;
    Include(width, {scan.width, scan.width});
    Include(length, {scan.length, scan.length});
    AddShare(scan);
    if (scan.heights) Include(heights, *scan.heights);
    if (scan.intensity) Include(intensity, *scan.intensity);
  }

 private:
  void AddShare(const ScanFacts& scan) {
    if (scan.points == 0) return;
    const z64f valid = static_cast<z64f>(scan.validPoints) / static_cast<z64f>(scan.points);
    if (!share || valid < share->lowest) lowestShare = ShareText(scan.validPoints, scan.points);
    if (!share || valid > share->highest) highestShare = ShareText(scan.validPoints, scan.points);
    Include(share, {valid, valid});
  }
};

std::string FromTo(const std::string& from, const std::string& to) {
  return from == to ? from : from + " to " + to;
}

std::string SizeText(const Range<z32u>& size) {
  return size.lowest == size.highest ? std::to_string(size.lowest)
                                     : Orv::Format("%u-%u", size.lowest, size.highest);
}

std::string CountText(zSize frames, zSize scans) {
  return frames == scans ? std::to_string(frames) : Orv::Format("%zu (%zu scans)", frames, scans);
}

std::string PercentText(const Source& source) {
  if (!source.share) return "none";
  if (source.lowestShare == source.highestShare) return source.lowestShare;
  const std::string& lowest = source.lowestShare;
  return lowest.substr(0, lowest.find(" %")) + " to " + source.highestShare;
}

using Row = std::array<std::string, 7>;

Row RowOf(const std::string& name, const Source& source) {
  const auto& heights = source.heights;
  const auto& intensity = source.intensity;
  return {Printable(name),
          CountText(source.frames.size(), source.scans),
          SizeText(*source.width) + (source.lines ? "" : " x " + SizeText(*source.length)),
          PercentText(source),
          heights ? FromTo(RealText(heights->lowest), RealText(heights->highest)) + " mm" : "-",
          intensity ? FromTo(std::to_string(intensity->lowest), std::to_string(intensity->highest))
                    : "-",
          source.cautioned == 0 ? "-" : Orv::Format("%zu of %zu", source.cautioned, source.scans)};
}

// Columns on a terminal.
zSize WidthOf(std::string_view text) {
  zSize width = 0;
  for (; !text.empty(); ++width) {
    const auto character = FirstCharacter(text);
    text.remove_prefix(character ? character->size : 1);
  }
  return width;
}

}  // namespace

std::string ShareText(zSize part, zSize whole) {
  if (whole == 0) return "none";
  // A share that is not whole never reads as one.
  const double percent = 100.0 * static_cast<double>(part) / static_cast<double>(whole);
  if (part != whole && percent >= 99.95) {
    return Orv::Format("%.3f %%", std::min(std::floor(percent * 1000) / 1000, 99.999));
  }
  return Orv::Format(part != 0 && percent < 0.05 ? "%.3g %%" : "%.1f %%", percent);
}

std::vector<std::string> SourceTable(const std::vector<PlacedScan>& scans) {
  std::map<std::string, zSize> numbers;
  std::vector<std::pair<std::string, Source>> sources;
  for (const PlacedScan& scan : scans) {
    const auto [number, isNew] = numbers.try_emplace(scan.source, sources.size());
    if (isNew) sources.emplace_back(scan.source, Source{});
    sources[number->second].second.Add(scan);
  }
  std::vector<Row> rows = {
      {"source", "frames", "points", "valid", "heights", "intensity", "with cautions"}};
  for (const auto& [name, source] : sources) rows.push_back(RowOf(name, source));

  constexpr zSize kWidest = 40;  // a longer cell moves the others of its line
  std::vector<std::string> lines(rows.size());
  for (zSize column = 0; column < rows[0].size(); ++column) {
    zSize widest = 0;
    for (const Row& row : rows) widest = std::max(widest, WidthOf(row[column]));
    widest = std::min(widest, kWidest) + 2;
    for (zSize i = 0; i < rows.size(); ++i) {
      const std::string& cell = rows[i][column];
      lines[i] += cell;
      const bool isLast = column + 1 == rows[i].size();
      if (!isLast) lines[i].append(std::max(widest, WidthOf(cell) + 2) - WidthOf(cell), ' ');
    }
  }
  return lines;
}

std::vector<std::string> SummedCautions(const std::vector<PlacedScan>& scans) {
  constexpr zSize kMostTexts = 4;
  struct Kind {
    std::string_view key;
    std::vector<std::pair<std::string_view, zSize>> texts;  // and how many scans have them
    zSize others = 0;
  };
  std::vector<Kind> kinds;
  for (const PlacedScan& scan : scans) {
    for (const Caution& caution : scan.facts.cautions) {
      auto kind = std::ranges::find(kinds, caution.key, &Kind::key);
      if (kind == kinds.end()) kind = kinds.insert(kinds.end(), {caution.key, {}});
      auto text =
          std::ranges::find(kind->texts, caution.text, &std::pair<std::string_view, zSize>::first);
      if (text != kind->texts.end()) {
        ++text->second;
      } else if (kind->texts.size() < kMostTexts) {
        kind->texts.emplace_back(caution.text, 1);
      } else {
        ++kind->others;
      }
    }
  }
  std::vector<std::string> lines;
  for (const Kind& kind : kinds) {
    for (const auto& [text, count] : kind.texts) {
      lines.push_back(Orv::Format("%zu of %zu scans: %s", count, scans.size(), text));
    }
    if (kind.others > 0) {
      lines.push_back(Orv::Format("%zu more like that, which --all tells", kind.others));
    }
  }
  return lines;
}
