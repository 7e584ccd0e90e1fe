// SPDX-License-Identifier: MIT
// Numbers from texts (option values, indexes in file names) and to texts.
#pragma once

#include <string>

// The standard conversions (leading white space skipped, trailing text ignored), with texts of
// their own that are the same on every platform: std::invalid_argument "invalid stoi argument" and
// std::out_of_range "stoi argument out of range", and likewise for stod.
int parseInteger(const std::string& text);  // base 10
double parseReal(const std::string& text);  // also hexadecimal, infinities and not-a-number

// Writes a number as printf's "%.6g" does in the "C" locale, whatever the locale is, without a zero
// at the end; returns the end of the text, which has at most kLongestReal characters.
inline constexpr int kLongestReal = 13;
char* formatReal(char* text, double number);
