// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdio>
#include <optional>

#include "sdk/object.h"

namespace Orv {

namespace {

// Longer fields stand in no text of this tool; one that asks for more is malformed.
constexpr int kLongestField = 4096;

bool IsOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

// A conversion such as "%-08.3llf", taken apart.
struct Conversion {
  std::string flags;
  int width = 0;
  std::optional<int> precision;
  char kind = 0;
};

class Formatter {
 public:
  Formatter(std::string_view format, std::initializer_list<FormatArgument> arguments)
      : left_(format), next_(arguments.begin()), end_(arguments.end()) {}

  std::string Run() {
    while (!left_.empty()) {
      const std::size_t percent = std::min(left_.find('%'), left_.size());
      text_ += left_.substr(0, percent);
      left_.remove_prefix(percent);
      if (!left_.empty() && !Convert()) {
        text_ += left_.front();  // as it stands; what follows it is ordinary text
        left_.remove_prefix(1);
      }
    }
    return std::move(text_);
  }

 private:
  // Replaces the conversion at the start of what is left; false, with nothing used, for one that
  // is malformed or has no argument of its kind.
  bool Convert() {
    if (left_.starts_with("%%")) {
      text_ += '%';
      left_.remove_prefix(2);
      return true;
    }
    const std::string_view leftBefore = left_;
    const FormatArgument* const nextBefore = next_;
    left_.remove_prefix(1);
    const std::optional<Conversion> conversion = Parse();
    if (conversion && Print(*conversion)) return true;
    left_ = leftBefore;
    next_ = nextBefore;
    return false;
  }

  std::optional<Conversion> Parse() {
    Conversion conversion;
    while (!left_.empty() && IsOneOf(left_.front(), "-+ #0")) conversion.flags += TakeCharacter();
    const std::optional<int> width = TakeNumber();
    if (!width) return {};
    conversion.width = *width;
    if (conversion.width < 0) {  // from an argument: left-aligned
      conversion.flags += '-';
      conversion.width = -conversion.width;
    }
    if (!left_.empty() && left_.front() == '.') {
      left_.remove_prefix(1);
      conversion.precision = TakeNumber();
      if (!conversion.precision) return {};
      if (*conversion.precision < 0) conversion.precision.reset();  // as if there were none
    }
    SkipLength();
    if (left_.empty()) return {};
    conversion.kind = TakeCharacter();
    return conversion;
  }

  char TakeCharacter() {
    const char first = left_.front();
    left_.remove_prefix(1);
    return first;
  }

  // An argument knows its own length.
  void SkipLength() {
    for (const std::string_view length : {"hh", "h", "ll", "l", "j", "z", "t", "L"}) {
      if (left_.starts_with(length)) {
        left_.remove_prefix(length.size());
        return;
      }
    }
  }

  // Digits (none count as 0), or "*" for the next argument; nothing when it is no useful number.
  std::optional<int> TakeNumber() {
    long long number = 0;
    if (!left_.empty() && left_.front() == '*') {
      left_.remove_prefix(1);
      if (next_ == end_) return {};
      const auto* argument = std::get_if<long long>(next_++);
      if (argument == nullptr) return {};
      number = *argument;
    } else {
      unsigned digits = 0;  // has no sign to read
      const auto [stop, error] = std::from_chars(left_.data(), left_.data() + left_.size(), digits);
      if (error == std::errc::result_out_of_range) return {};
      left_.remove_prefix(static_cast<std::size_t>(stop - left_.data()));
      number = digits;
    }
    if (number < -kLongestField || number > kLongestField) return {};
    return static_cast<int>(number);
  }

  bool Print(const Conversion& conversion) {
    if (next_ == end_) return false;
    const FormatArgument& argument = *next_++;
    if (IsOneOf(conversion.kind, "diouxX")) return PrintInteger(conversion, argument);
    if (IsOneOf(conversion.kind, "fFeEgGaA")) return PrintAs<double>(conversion, "", argument);
    if (conversion.kind == 's') return PrintText(conversion, argument);
    if (conversion.kind == 'c') return PrintCharacter(conversion, argument);
    if (conversion.kind == 'p') return PrintAs<const void*>(conversion, "", argument);
    return false;
  }

  // An unsigned value prints in full, whichever sign the conversion speaks of.
  bool PrintInteger(Conversion conversion, const FormatArgument& argument) {
    if (PrintAs<long long>(conversion, "ll", argument)) return true;
    if (IsOneOf(conversion.kind, "di")) conversion.kind = 'u';
    return PrintAs<unsigned long long>(conversion, "ll", argument);
  }

  bool PrintText(const Conversion& conversion, const FormatArgument& argument) {
    const auto* text = std::get_if<std::string_view>(&argument);
    if (text == nullptr) return false;
    Pad(conversion,
        text->substr(0, conversion.precision ? static_cast<std::size_t>(*conversion.precision)
                                             : std::string_view::npos));
    return true;
  }

  bool PrintCharacter(const Conversion& conversion, const FormatArgument& argument) {
    const auto* code = std::get_if<long long>(&argument);
    const auto* natural = std::get_if<unsigned long long>(&argument);  // where char is unsigned
    if (code == nullptr && natural == nullptr) return false;
    const char character =
        static_cast<char>(code != nullptr ? *code : static_cast<long long>(*natural));
    Pad(conversion, {&character, 1});
    return true;
  }

  void Pad(const Conversion& conversion, std::string_view text) {
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::string padding(width > text.size() ? width - text.size() : 0, ' ');
    const bool left = IsOneOf('-', conversion.flags);
    text_ += left ? std::string(text) + padding : padding + std::string(text);
  }

  // False for an argument of another type.
  template <class Value>
  bool PrintAs(const Conversion& conversion, std::string_view length,
               const FormatArgument& argument) {
    const auto* value = std::get_if<Value>(&argument);
    if (value == nullptr) return false;
    std::string format = "%" + conversion.flags;
    if (conversion.width > 0) format += std::to_string(conversion.width);
    if (conversion.precision) format += "." + std::to_string(*conversion.precision);
    format += length;
    format += conversion.kind;
    const int size = std::snprintf(nullptr, 0, format.c_str(), *value);
    if (size <= 0) return true;
    std::string printed(static_cast<std::size_t>(size) + 1, '\0');
    static_cast<void>(std::snprintf(printed.data(), printed.size(), format.c_str(), *value));
    printed.pop_back();
    if constexpr (std::is_same_v<Value, double>) UnifyPoint(printed);
    text_ += printed;
    return true;
  }

  // A program that uses the library may have set a locale with another decimal point.
  static void UnifyPoint(std::string& number) {
    const std::string_view point = std::localeconv()->decimal_point;
    const std::size_t place = number.find(point);
    if (place != std::string::npos) number.replace(place, point.size(), ".");
  }

  std::string_view left_;
  const FormatArgument* next_;
  const FormatArgument* end_;
  std::string text_;
};

}  // namespace

std::string FormatText(std::string_view format, std::initializer_list<FormatArgument> arguments) {
  return Formatter(format, arguments).Run();
}

}  // namespace Orv
