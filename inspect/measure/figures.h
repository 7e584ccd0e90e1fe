// SPDX-License-Identifier: MIT
// What heights are in numbers.
#pragma once

#include <vector>

#include "inspect/measure/heights.h"

// As ISO 25178-2 defines them, about the mean, of the valid points alone, unfiltered; of a profile,
// they are Ra, Rq, Rz, Rp, Rv, Rsk and Rku of the whole line. Lengths in the unit of z. NaN where
// there is none: all without a height, `ssk` and `sku` of a level scan.
struct Figures {
  zSize validPoints = 0;
  z64f lowest, highest;
  z64f mean, median;
  z64f sa, sq;      // arithmetic mean and root mean square of the heights
  z64f sz, sp, sv;  // greatest height, highest peak, deepest valley; sz = sp + sv
  z64f ssk, sku;    // skewness, kurtosis
};

struct HeightStatistics {
  Figures figures;
  std::vector<z64f> percentiles;  // as asked for
  std::vector<z64f> histogram;    // of 256 equal parts from the lowest to the highest height
};

inline constexpr zSize kHistogramParts = 256;

// Of those that are told to people.
inline constexpr z64f kToldPercents[] = {1, 5, 25, 75, 95, 99};

// `percents` are from 0 to 100: so many percent of the heights are no higher than the
// percentile, which lies on the line between two heights where it falls between them.
HeightStatistics MeasureHeights(const HeightBlocks& blocks, const std::vector<z64f>& percents);

// Of a scan as it is, and over the plane that it lies on.
struct ScanFigures {
  HeightStatistics plain, levelled;  // with the percentiles that are told
};
ScanFigures MeasureFigures(const Scan& scan);
