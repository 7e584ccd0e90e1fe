// SPDX-License-Identifier: MIT
// Which heights the colours of a map stand for.
#pragma once

#include <optional>
#include <string_view>

#include "inspect/measure/figures.h"
#include "inspect/measure/span.h"

struct ColourChoice {
  enum class Kind : z8u { automatic, full, percentiles, values };

  Kind kind = Kind::automatic;
  z64f low = 1, high = 99;  // percents; of values, heights in the unit that the file tells

  // "auto", "full", "5,95" or "-1.5:2"; nothing for what is none of them.
  static std::optional<ColourChoice> FromText(std::string_view text);
  // The two that the range depends on.
  std::vector<z64f> Percents() const;
};

// The scans that share their colours, as the frames of one source do.
class SharedRange {
 public:
  explicit SharedRange(const ColourChoice& choice) : choice_(choice) {}

  // Statistics whose first percentiles are those of the choice.
  void Add(const HeightStatistics& scan);
  // Of all heights.
  const Span& All() const { return all_; }
  // Of the colours. Automatic: between the percentiles where all heights take more than twice as
  // much; of several scans, from the least to the greatest.
  Span Colours() const;

 private:
  ColourChoice choice_;
  Span all_, most_;
};
