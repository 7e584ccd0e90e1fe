// SPDX-License-Identifier: MIT
// Texts from files, made fit for people.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct Character {
  char32_t code;
  std::size_t size;  // bytes
};

// The UTF-8 character at the front of a text that is not empty; nothing when its bytes are none.
std::optional<Character> FirstCharacter(std::string_view text);

// A text field of a file as UTF-8: it ends at its first zero, blanks at its end are dropped, and
// bytes that are no UTF-8 are taken as Latin-1.
std::string ToUtf8(std::string_view field);

// The text as a terminal can show it without harm: control characters, characters that turn the
// direction of writing or are not seen, and bytes that are no UTF-8 become escapes such as \x1b.
std::string Printable(std::string_view text);

// A number with six significant digits, as printf's "%.6g" gives it in the "C" locale; "nan" has no
// sign.
std::string RealText(double number);
