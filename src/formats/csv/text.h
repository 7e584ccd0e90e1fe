// SPDX-License-Identifier: MIT
// The text of a CSV file on its way into a stream, and a quick way from raw values to cells.
#pragma once

#include <cmath>
#include <concepts>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "numbers.h"
#include "scan/scan.h"

// Cells are written with the comma after them. They have at most kLongestCell bytes, but a fixed
// size is copied faster: of the kCellRoom bytes from its start on, a cell may overwrite all.
inline constexpr zSize kLongestCell = kLongestReal + 1;
inline constexpr zSize kCellRoom = 16;

// Lines end with CR LF on every platform, and numbers look the same under every locale.
class CsvText {
 public:
  explicit CsvText(zStream stream) : stream_(stream) {}

  // Appends a text, in which each "\n" becomes a line end.
  CsvText& operator<<(std::string_view text);
  // Appends a number; a real one has six significant digits.
  CsvText& operator<<(double number);
  template <std::integral Integer>
  CsvText& operator<<(Integer number) {
    Append(std::to_string(number));
    return *this;
  }

  // Appends values with commas between them, and a line end.
  template <class First, class... Others>
  void Row(const First& first, const Others&... others) {
    *this << first;
    ((*this << "," << others), ...);
    *this << "\n";
  }

  // Makes room for cells of at most `size` bytes past the text, and tells where they start. Memory
  // that they do not need stays untouched.
  char* OpenCells(zSize size);
  // Cells were written up to here. Long texts go into the stream; throws Orv::Exception when they
  // cannot.
  void CloseCells(const char* end);
  // The text is complete.
  void Finish();

 private:
  void Append(std::string_view text);

  zStream stream_;
  zBytes room_;
  zSize used_ = 0;  // of the room, by text that is not in the stream yet
};

// The sign of a not-a-number that arithmetic gives differs between processors; it is not shown.
inline char* WriteCell(char* to, double value) {
  to = formatReal(to, std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value);
  *to = ',';
  return to + 1;
}

// Commas alone; one of them ends the cell before.
inline char* WriteEmptyCells(char* to, zSize count) {
  std::memset(to, ',', count);
  return to + count;
}

// Turns the comma after the last cell into a line end. A line without cells gets none.
inline char* EndCells(const char* start, char* end) {
  if (end == start) return end;
  end[-1] = '\r';
  *end = '\n';
  return end + 1;
}

// The cells of one axis. There are only 65 536 raw values: the text of each is made once, when it
// occurs first.
class AxisCells {
 public:
  explicit AxisCells(const Axis& axis);

  // Writes the cell of a raw value, which is empty for an invalid one.
  char* Write(char* to, z16s raw) {
    const Cell& cell = cells_[static_cast<z16u>(raw)];
    if (cell.size == 0) Format(raw);
    std::memcpy(to, &cell, kCellRoom);
    return to + cell.size;
  }

 private:
  struct Cell {
    char text[kCellRoom - 1];
    z8u size;  // 0: not made yet
  };
  static_assert(sizeof(Cell) == kCellRoom && kLongestCell < kCellRoom);
  struct Free {
    void operator()(Cell* cells) const { zAllocator::Default().Free(cells); }
  };

  void Format(z16s raw);

  Axis axis_;
  std::unique_ptr<Cell[], Free> cells_;
};
