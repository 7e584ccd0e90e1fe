// SPDX-License-Identifier: MIT
// bare_cells <heights> <width> <to>: writes the 16-bit heights of a file as CSV, a block at a
// time, in cells of text that was made for each raw value before; no more than any exporter of a
// surface must do.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

constexpr double kScale = 0.001;
constexpr std::size_t kBlock = 256 * 1024;

struct Cell {
  char text[15] = {};
  std::uint8_t size = 0;
};

std::vector<Cell> MakeCells() {
  std::vector<Cell> cells(65536);
  for (std::size_t raw = 0; raw < cells.size(); ++raw) {
    char* end = cells[raw].text;
    if (const auto value = static_cast<std::int16_t>(raw); value != -32768) {
      end = std::to_chars(end, end + 14, value * kScale, std::chars_format::general, 6).ptr;
    }
    *end = ',';
    cells[raw].size = static_cast<std::uint8_t>(end + 1 - cells[raw].text);
  }
  return cells;
}

// Rows go out when they fill a block.
class RowWriter {
 public:
  RowWriter(std::FILE* to, std::size_t width)
      : to_(to), text_(kBlock + (width + 1) * sizeof(Cell)) {}

  void Append(std::span<const std::int16_t> row) {
    char* end = end_;
    for (const std::int16_t height : row) {
      const Cell& cell = cells_[static_cast<std::uint16_t>(height)];
      std::memcpy(end, &cell, sizeof cell);
      end += cell.size;
    }
    std::memcpy(end - 1, "\r\n", 2);
    end_ = end + 1;
    if (end_ - text_.data() >= static_cast<std::ptrdiff_t>(kBlock)) Flush();
  }

  bool Finish() {
    Flush();
    return written_;
  }

 private:
  void Flush() {
    const auto size = static_cast<std::size_t>(end_ - text_.data());
    written_ = std::fwrite(text_.data(), 1, size, to_) == size && written_;
    end_ = text_.data();
  }

  std::FILE* to_;
  std::vector<Cell> cells_ = MakeCells();
  std::vector<char> text_;
  char* end_ = text_.data();
  bool written_ = true;
};

bool Convert(std::FILE* from, std::size_t width, std::FILE* to) {
  const std::size_t rowSize = width * sizeof(std::int16_t);
  std::vector<std::int16_t> heights(std::max(kBlock / rowSize, std::size_t{1}) * width);
  RowWriter writer(to, width);
  while (const std::size_t rows =
             std::fread(heights.data(), rowSize, heights.size() / width, from)) {
    for (std::size_t row = 0; row < rows; ++row) {
      writer.Append(std::span(heights).subspan(row * width, width));
    }
  }
  return writer.Finish() && std::ferror(from) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t width = argc == 4 ? std::strtoul(argv[2], nullptr, 10) : 0;
  if (width == 0) {
    std::fputs("usage: bare_cells <heights> <width> <to>\n", stderr);
    return 2;
  }
  std::FILE* from = std::fopen(argv[1], "rb");
  std::FILE* to = from != nullptr ? std::fopen(argv[3], "wb") : nullptr;
  if (to == nullptr) return 1;
  std::setvbuf(to, nullptr, _IONBF, 0);
  const bool written = Convert(from, width, to);
  std::fclose(from);
  return std::fclose(to) == 0 && written ? 0 : 1;
}
