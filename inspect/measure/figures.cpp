// SPDX-License-Identifier: MIT
#include "inspect/measure/figures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "inspect/measure/ranks.h"

namespace {

constexpr z64f kNone = std::numeric_limits<z64f>::quiet_NaN();
constexpr zSize kFineParts = 65'536;
constexpr zSize kLanes = 4;  // sums that do not wait for each other

// Adds `Count` terms of each height of a block to `total`.
template <zSize Count, class Terms>
void AddTerms(const HeightBlock& block, std::array<z64f, Count>& total, Terms terms) {
  const auto heights = block.heights;
  std::array<std::array<z64f, kLanes>, Count> sums{};  // of a block, so that they keep digits
  const auto addAll = [&](auto countOf) {
    const auto add = [&](zSize i, zSize lane) {
      const std::array<z64f, Count> values = terms(heights[i]);
      for (zSize j = 0; j < Count; ++j) sums[j][lane] += values[j] * countOf(i);
    };
    zSize i = 0;
    for (; i + kLanes <= heights.size(); i += kLanes) {
      for (zSize lane = 0; lane < kLanes; ++lane) add(i + lane, lane);
    }
    for (; i < heights.size(); ++i) add(i, 0);
  };
  if (block.counts.empty()) {
    addAll([](zSize) { return 1.0; });
  } else {
    addAll([&block](zSize i) { return block.counts[i]; });
  }
  for (zSize j = 0; j < Count; ++j) total[j] += sums[j][0] + sums[j][1] + sums[j][2] + sums[j][3];
}

void Include(std::span<const z64f> heights, Figures& figures) {
  std::array<z64f, kLanes> low, high;
  low.fill(figures.lowest);
  high.fill(figures.highest);
  for (zSize i = 0; i < heights.size(); ++i) {
    z64f& lowest = low[i % kLanes];
    z64f& highest = high[i % kLanes];
    lowest = heights[i] < lowest ? heights[i] : lowest;
    highest = heights[i] > highest ? heights[i] : highest;
  }
  figures.lowest = std::ranges::min(low);
  figures.highest = std::ranges::max(high);
}

// Number, extent and mean. Heights count from one of them, so that large offsets cost no digits.
Figures MeasureMean(const HeightBlocks& blocks) {
  Figures figures{0,     HUGE_VAL, -HUGE_VAL, kNone, kNone, kNone,
                  kNone, kNone,    kNone,     kNone, kNone, kNone};
  std::array<z64f, 2> total{};
  z64f base = kNone;
  blocks([&](const HeightBlock& block) {
    if (block.heights.empty()) return;
    if (std::isnan(base)) base = block.heights.front();
    Include(block.heights, figures);
    AddTerms(block, total, [base](z64f z) { return std::array{1.0, z - base}; });
  });
  figures.validPoints = static_cast<zSize>(total[0]);
  if (figures.validPoints == 0) {
    figures.lowest = figures.highest = kNone;
  } else {
    figures.mean = base + total[1] / total[0];
  }
  return figures;
}

// What is counted about the mean; fills the histogram on the way.
void MeasureMoments(const HeightBlocks& blocks, Figures& figures, Histogram& histogram) {
  std::array<z64f, 4> total{};
  blocks([&](const HeightBlock& block) {
    histogram.Add(block);
    AddTerms(block, total, [mean = figures.mean](z64f z) {
      const z64f d = z - mean;
      return std::array{std::abs(d), d * d, d * d * d, d * d * d * d};
    });
  });
  for (z64f& sum : total) sum /= static_cast<z64f>(figures.validPoints);
  figures.sa = total[0];
  figures.sq = std::sqrt(total[1]);
  figures.sp = figures.highest - figures.mean;
  figures.sv = figures.mean - figures.lowest;
  figures.sz = figures.highest - figures.lowest;
  if (!(figures.sq > 0)) return;
  figures.ssk = total[2] / std::pow(figures.sq, 3);
  figures.sku = total[3] / std::pow(figures.sq, 4);
}

// The percentiles, whose heights come by twos, a percentile between them.
std::vector<z64f> Percentiles(const HeightBlocks& blocks, const Histogram& histogram, zSize count,
                              const std::vector<z64f>& percents) {
  const auto last = static_cast<z64f>(count - 1);
  std::vector<z64f> ranks;
  for (const z64f percent : percents) {
    const z64f rank = std::floor(percent / 100 * last);
    ranks.insert(ranks.end(), {rank, std::min(rank + 1, last)});
  }
  std::vector<z64f> ascending = ranks;
  std::ranges::sort(ascending);
  const std::vector<z64f> heights = HeightsOfRanks(blocks, histogram, ascending);
  const auto heightOf = [&](z64f rank) {
    return heights[static_cast<zSize>(std::ranges::lower_bound(ascending, rank) -
                                      ascending.begin())];
  };
  std::vector<z64f> found;
  for (zSize i = 0; i < percents.size(); ++i) {
    const z64f low = heightOf(ranks[2 * i]);
    const z64f share = percents[i] / 100 * last - ranks[2 * i];
    found.push_back(low + (heightOf(ranks[2 * i + 1]) - low) * share);
  }
  return found;
}

}  // namespace

HeightStatistics MeasureHeights(const HeightBlocks& blocks, const std::vector<z64f>& percents) {
  HeightStatistics statistics{MeasureMean(blocks), {}, {}};
  Figures& figures = statistics.figures;
  statistics.percentiles.assign(percents.size(), kNone);
  statistics.histogram.assign(kHistogramParts, 0);
  if (figures.validPoints == 0) return statistics;
  Histogram histogram(figures.lowest, figures.highest, kFineParts);
  MeasureMoments(blocks, figures, histogram);
  for (zSize i = 0; i < kFineParts; ++i) {
    statistics.histogram[i * kHistogramParts / kFineParts] += histogram.Counts()[i];
  }
  std::vector<z64f> wanted = percents;
  wanted.push_back(50);
  statistics.percentiles = Percentiles(blocks, histogram, figures.validPoints, wanted);
  figures.median = statistics.percentiles.back();
  statistics.percentiles.pop_back();
  return statistics;
}

ScanFigures MeasureFigures(const Scan& scan) {
  const std::vector<z64f> percents(std::begin(kToldPercents), std::end(kToldPercents));
  return {MeasureHeights(HeightsOf(scan), percents),
          MeasureHeights(HeightsOver(scan, FitPlane(scan)), percents)};
}
