// SPDX-License-Identifier: MIT
// Numbers from texts: option values, indexes in file names.
#pragma once

#include <string>

// The standard conversions (leading white space skipped, trailing text ignored), with texts of
// their own that are the same on every platform: std::invalid_argument "invalid stoi argument" and
// std::out_of_range "stoi argument out of range", and likewise for stod.
int parseInteger(const std::string& text);  // base 10
double parseReal(const std::string& text);  // also hexadecimal, infinities and not-a-number
