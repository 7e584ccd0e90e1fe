// SPDX-License-Identifier: MIT
#include "formats/csv/text.h"

#include "scan/points.h"

CsvText& CsvText::operator<<(std::string_view text) {
  while (!text.empty()) {
    const zSize line = text.find('\n');
    const std::string_view piece = text.substr(0, line);
    Append(piece);
    text.remove_prefix(piece.size());
    if (text.empty()) break;
    Append("\r\n");
    text.remove_prefix(1);
  }
  return *this;
}

CsvText& CsvText::operator<<(double number) {
  char text[kLongestReal];
  Append({text, formatReal(text, number)});
  return *this;
}

void CsvText::Append(std::string_view text) {
  const zSize start = bytes_.size();
  bytes_.resize(start + text.size());
  std::memcpy(bytes_.data() + start, text.data(), text.size());
}

char* CsvText::OpenCells(zSize size) {
  const zSize start = bytes_.size();
  bytes_.resize(start + size + kCellRoom);
  return reinterpret_cast<char*>(bytes_.data()) + start;
}

void CsvText::CloseCells(const char* end) {
  bytes_.resize(static_cast<zSize>(end - reinterpret_cast<const char*>(bytes_.data())));
}

AxisCells::AxisCells(const Axis& axis) : axis_(axis) {
  // Zeroed memory from the system costs nothing until it is touched, so a small scan pays for few
  // of these cells.
  constexpr zSize kCount = 65536;
  cells_.reset(static_cast<Cell*>(zAllocator::Default().AllocateZeroed(kCount * sizeof(Cell))));
  if (cells_ == nullptr) throw std::bad_alloc();
}

void AxisCells::Format(z16s raw) {
  Cell& cell = cells_[static_cast<z16u>(raw)];
  char* const end =
      IsValid(raw) ? WriteCell(cell.text, Real(raw, axis_)) : WriteEmptyCells(cell.text, 1);
  cell.size = static_cast<z8u>(end - cell.text);
}
