// SPDX-License-Identifier: MIT
#include "formats/csv/text.h"

#include <algorithm>

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
  char* to = OpenCells(text.size());
  std::memcpy(to, text.data(), text.size());
  used_ += text.size();
}

char* CsvText::OpenCells(zSize size) {
  const zSize needed = used_ + size + kCellRoom;
  if (room_.size() < needed) room_.resize(std::max(needed, 2 * room_.size()));
  return reinterpret_cast<char*>(room_.data()) + used_;
}

void CsvText::CloseCells(const char* end) {
  constexpr zSize kLongText = zSize{128} << 10;
  used_ = static_cast<zSize>(end - reinterpret_cast<const char*>(room_.data()));
  if (used_ >= kLongText) Finish();
}

void CsvText::Finish() {
  constexpr Orv::Operation kOperation{"surfacefileconverter", "CsvText::Finish"};
  kOperation.Require(zStream_Write(stream_, room_.data(), used_), "");
  used_ = 0;
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
