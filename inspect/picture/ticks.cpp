// SPDX-License-Identifier: MIT
#include "inspect/picture/ticks.h"

#include <charconv>

namespace {

// As many digits as tell ticks apart that are `step` from each other.
std::string Label(z64f value, z64f step, z64f largest) {
  if (value == 0) return "0";
  const z64f digits = std::floor(std::log10(step) + 1e-9);
  char text[400];
  std::to_chars_result end{};
  if (largest < 1e7 && digits > -8) {
    const int decimals = static_cast<int>(std::max(0.0, -digits));
    end = std::to_chars(text, std::end(text), value, std::chars_format::fixed, decimals);
  } else {
    const z64f span = std::floor(std::log10(largest)) - digits;
    const int decimals = static_cast<int>(std::clamp(span, 0.0, 9.0));
    end = std::to_chars(text, std::end(text), value, std::chars_format::scientific, decimals);
  }
  return {text, end.ptr};
}

z64f NiceStep(z64f least) {
  const z64f power = std::pow(10, std::floor(std::log10(least)));
  for (const z64f factor : {1, 2, 5}) {
    if (factor * power >= least * (1 - 1e-9)) return factor * power;
  }
  return 10 * power;
}

}  // namespace

std::vector<Tick> TicksWithin(const AxisRange& range, int most) {
  const z64f largest = std::max(std::abs(range.low), std::abs(range.high));
  const z64f step = NiceStep(range.Size() / most);
  // Too small to be told apart: the one number to as many digits as a float32 has.
  if (!(range.Size() > largest * 1e-14) || !(step > 1e-300)) {
    char text[32];
    const auto end = std::to_chars(text, std::end(text), range.low, std::chars_format::general, 7);
    return {{range.low, {text, end.ptr}}};
  }
  std::vector<Tick> ticks;
  const z64f first = std::ceil(range.low / step - 1e-9);
  for (int i = 0; i <= most; ++i) {
    const z64f multiple = first + i;
    if (multiple * step > range.high + step * 1e-9) break;
    const z64f value = multiple == 0 ? 0 : multiple * step;  // no minus before a zero
    ticks.push_back({value, Label(value, step, largest)});
  }
  return ticks;
}
