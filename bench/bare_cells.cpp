// SPDX-License-Identifier: MIT
// bare_cells <heights> <width> <to>: writes the 16-bit heights of a file as CSV, cells of text that
// was made for each raw value before; no more than any exporter of a surface must do.

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

namespace {

constexpr double kScale = 0.001;
constexpr std::size_t kBlock = 1 << 20;

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

// `width` cells and a line end for each row.
bool WriteRows(const std::int16_t* heights, std::size_t rows, std::size_t width, std::FILE* to) {
  const std::vector<Cell> cells = MakeCells();
  const std::size_t longestRow = (width + 1) * sizeof(Cell);
  const std::unique_ptr<char[]> block(new char[kBlock + longestRow]);
  char* end = block.get();
  for (std::size_t row = 0; row < rows; ++row, heights += width) {
    for (std::size_t column = 0; column < width; ++column) {
      const Cell& cell = cells[static_cast<std::uint16_t>(heights[column])];
      std::memcpy(end, &cell, sizeof cell);
      end += cell.size;
    }
    std::memcpy(end - 1, "\r\n", 2);
    ++end;
    if (end - block.get() < static_cast<std::ptrdiff_t>(kBlock) && row + 1 < rows) continue;
    const auto size = static_cast<std::size_t>(end - block.get());
    if (std::fwrite(block.get(), 1, size, to) != size) return false;
    end = block.get();
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: bare_cells <heights> <width> <to>\n", stderr);
    return 2;
  }
  std::error_code error;
  const std::size_t width = std::strtoul(argv[2], nullptr, 10);
  const std::uintmax_t rows =
      width == 0 ? 0 : std::filesystem::file_size(argv[1], error) / sizeof(std::int16_t) / width;
  std::FILE* from = error ? nullptr : std::fopen(argv[1], "rb");
  std::FILE* to = from != nullptr ? std::fopen(argv[3], "wb") : nullptr;
  if (to == nullptr) return 1;
  const std::unique_ptr<std::int16_t[]> heights(new std::int16_t[rows * width]);
  const bool written =
      std::fread(heights.get(), sizeof(std::int16_t), rows * width, from) == rows * width &&
      WriteRows(heights.get(), rows, width, to);
  std::fclose(from);
  return std::fclose(to) == 0 && written ? 0 : 1;
}
