// SPDX-License-Identifier: MIT
#include "numbers.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace {

// Runs a conversion of the C library, which follows the "C" locale: the tool never sets another.
template <class Convert>
auto Parse(const std::string& text, const char* invalid, const char* outOfRange,
           const Convert& convert) {
  char* end = nullptr;
  errno = 0;
  const auto number = convert(text.c_str(), &end);
  if (end == text.c_str()) throw std::invalid_argument(invalid);
  if (errno == ERANGE) throw std::out_of_range(outOfRange);
  return number;
}

}  // namespace

int parseInteger(const std::string& text) {
  constexpr const char* kOutOfRange = "stoi argument out of range";
  const long number =
      Parse(text, "invalid stoi argument", kOutOfRange,
            [](const char* start, char** end) { return std::strtol(start, end, 10); });
  if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
    throw std::out_of_range(kOutOfRange);
  }
  return static_cast<int>(number);
}

double parseReal(const std::string& text) {
  return Parse(text, "invalid stod argument", "stod argument out of range",
               [](const char* start, char** end) { return std::strtod(start, end); });
}

char* formatReal(char* text, double number) {
  return std::to_chars(text, text + kLongestReal, number, std::chars_format::general, 6).ptr;
}
