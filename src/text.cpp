// SPDX-License-Identifier: MIT
#include "text.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "numbers.h"
#include "sdk/object.h"

std::optional<Character> FirstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return Character{byte(0), 1};
  const std::size_t size = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < size) return std::nullopt;
  char32_t code = byte(0) & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return std::nullopt;
    code = code << 6 | (byte(i) & 0x3FU);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kLeast[size] || surrogate || code > 0x10FFFF) return std::nullopt;
  return Character{code, size};
}

namespace {

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const auto character = FirstCharacter(text);
    if (!character) return false;
    text.remove_prefix(character->size);
  }
  return true;
}

// Control characters, what turns the direction of writing, and what is not seen.
bool IsHarmful(char32_t code) {
  constexpr std::pair<char32_t, char32_t> kRanges[] = {
      {0, 0x1F},        {0x7F, 0x9F},     {0xAD, 0xAD},      {0x61C, 0x61C},
      {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x206F},
      {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F}};
  return std::ranges::any_of(
      kRanges, [code](const auto& range) { return code >= range.first && code <= range.second; });
}

}  // namespace

std::string ToUtf8(std::string_view field) {
  field = field.substr(0, field.find('\0'));
  field = field.substr(0, field.find_last_not_of(" \r\n\t") + 1);
  if (IsUtf8(field)) return std::string(field);
  std::string text;
  for (const char c : field) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | byte >> 6);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

std::string Printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto character = FirstCharacter(text);
    const std::size_t size = character ? character->size : 1;
    if (!character) {
      shown += Orv::Format("\\x%02x", static_cast<unsigned char>(text.front()));
    } else if (IsHarmful(character->code)) {
      shown += Orv::Format(character->code < 0x100 ? "\\x%02x" : "\\u%04x",
                           static_cast<unsigned>(character->code));
    } else {
      shown += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
  return shown;
}

std::string RealText(double number) {
  if (std::isnan(number)) return "nan";  // whose sign is up to the processor
  char text[kLongestReal];
  return {text, formatReal(text, number)};
}
