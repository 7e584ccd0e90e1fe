// SPDX-License-Identifier: MIT
#include "inspect/picture/lettering.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <cmath>

#include "font_ttf.h"
#include "sdk/object.h"
#include "text.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kEllipsis = 0x2026;

bool IsPrintable(char32_t c) {
  const auto within = [c](char32_t first, char32_t last) { return c >= first && c <= last; };
  return !(c < 0x20 || within(0x7F, 0x9F) || within(0x200B, 0x200F) || within(0x2028, 0x202E) ||
           within(0x2060, 0x206F) || c == 0xFEFF);
}

void MustBeDone(FT_Error error) {
  constexpr Orv::Operation kOperation{"inspection", "Lettering"};
  kOperation.Require(error == 0 ? zOK : zERROR_MEMORY,
                     "Failed to prepare the font: error %d of FreeType", error);
}

}  // namespace

std::u32string ToPrintable(std::string_view utf8) {
  std::u32string text;
  while (!utf8.empty()) {
    const auto character = FirstCharacter(utf8);
    text += character && IsPrintable(character->code) ? character->code : kReplacement;
    utf8.remove_prefix(character ? character->size : 1);
  }
  return text;
}

struct Lettering::Font {
  FT_Library library = nullptr;
  FT_Face face = nullptr;

  Font() = default;
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  ~Font() { FT_Done_FreeType(library); }  // and its faces

  // Null for one that cannot be drawn.
  FT_GlyphSlot Load(char32_t character, FT_Int32 flags) const {
    const FT_Error error = FT_Load_Char(face, character, FT_LOAD_NO_HINTING | flags);
    return error == 0 ? face->glyph : nullptr;
  }
};

Lettering::Lettering(int height) : font_(std::make_unique<Font>()) {
  MustBeDone(FT_Init_FreeType(&font_->library));
  MustBeDone(FT_New_Memory_Face(font_->library, font_ttf, sizeof font_ttf, 0, &font_->face));
  MustBeDone(FT_Set_Pixel_Sizes(font_->face, 0, static_cast<FT_UInt>(height)));
}

Lettering::~Lettering() = default;

z32f Lettering::Advance(char32_t character) const {
  FT_GlyphSlot glyph = font_->Load(character, FT_LOAD_DEFAULT);
  return glyph == nullptr ? 0 : static_cast<z32f>(glyph->advance.x) / 64;
}

int Lettering::Width(std::string_view utf8) const {
  z32f width = 0;
  for (const char32_t character : ToPrintable(utf8)) width += Advance(character);
  return static_cast<int>(std::ceil(width));
}

// What is kept is found from both ends.
std::u32string Lettering::Cut(std::u32string text, int mostWidth) const {
  z32f room = static_cast<z32f>(mostWidth);
  zSize front = 0;
  zSize back = text.size();
  bool fits = true;
  while (fits && front < back) {
    const bool atFront = front <= text.size() - back;
    room -= Advance(text[atFront ? front : back - 1]);
    fits = room >= 0;
    if (fits) atFront ? ++front : --back;
  }
  if (front == back) return text;
  room -= Advance(kEllipsis);
  while (room < 0 && front > 0) room += Advance(text[--front]);
  return text.substr(0, front) + kEllipsis + text.substr(back);
}

void Lettering::Draw(Canvas& canvas, int x, int baseline, std::string_view utf8, Rgb color,
                     int mostWidth) const {
  z32f pen = static_cast<z32f>(x);
  for (const char32_t character : Cut(ToPrintable(utf8), mostWidth)) {
    FT_GlyphSlot glyph = font_->Load(character, FT_LOAD_RENDER);
    if (glyph == nullptr) continue;
    const FT_Bitmap& bitmap = glyph->bitmap;
    const int left = static_cast<int>(std::lround(pen)) + glyph->bitmap_left;
    const int top = baseline - glyph->bitmap_top;
    for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
      for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
        const z8u ink = bitmap.buffer[row * bitmap.pitch + column];
        canvas.Blend(left + column, top + row, color, static_cast<z32f>(ink) / 255);
      }
    }
    pen += static_cast<z32f>(glyph->advance.x) / 64;
  }
}
