// SPDX-License-Identifier: MIT
#include "numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>

namespace {

TEST(FormatReal, WritesWhatTheStandardFormatterDoes) {
  const auto expectAsPrinted = [](double number) {
    char text[kLongestReal + 1];
    char expected[64];
    *formatReal(text, number) = '\0';
    std::snprintf(expected, sizeof expected, "%.6g", number);
    ASSERT_STREQ(text, expected) << std::hexfloat << number;
  };
  using Limits = std::numeric_limits<double>;
  for (const double number :
       {0.0, -0.0, 0.1, 100.0, 1234567.0, 999999.5, 0.0001, 0.00001, Limits::max(),
        -Limits::denorm_min(), -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN()}) {
    expectAsPrinted(number);
  }
  std::mt19937_64 random(1);
  for (int i = 0; i < 700'000; ++i) {
    expectAsPrinted(std::bit_cast<double>(random()));
    // Decimals as scanners give them, and those half way between two texts.
    const auto digits = static_cast<double>(random() % 20'000'001) - 10'000'000;
    expectAsPrinted(digits * 0.001);
    expectAsPrinted((digits + 0.5) / std::pow(10, static_cast<double>(random() % 13)));
  }
}

}  // namespace
