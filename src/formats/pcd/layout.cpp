// SPDX-License-Identifier: MIT
#include "formats/pcd/layout.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace {

constexpr z64u kFieldSize = 4;  // of the fields that are used

// The whole word as an unsigned decimal number.
template <class Number>
bool ParseNumber(std::string_view word, Number& number) {
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  return error == std::errc() && stop == end;
}

// Sums the sizes of fields up and notes where those stand that are used.
class RecordLayout {
 public:
  explicit RecordLayout(PcdCloud& cloud) : cloud_(cloud) {}

  // A field of `count` values of `size` bytes; false when the record grows out of 32 bits.
  bool Add(std::string_view name, z32u size, z32u count) {
    const auto offset = static_cast<z32u>(stride_);
    if (name == "x") x_ = offset;
    if (name == "y") y_ = offset;
    if (name == "z") z_ = offset;
    if (name == "intensity") cloud_.intensity = offset;
    if (name == "rgb" || name == "rgba") cloud_.color = offset;
    const z64u bytes = z64u{size} * count;
    constexpr z64u kLargest = std::numeric_limits<z32u>::max();
    if (bytes > kLargest - stride_) return false;
    stride_ += bytes;
    return true;
  }

  // False when a coordinate is missing or a field that is used reaches past the record.
  bool Finish() {
    cloud_.stride = static_cast<z32u>(stride_);
    if (!x_ || !y_ || !z_) return false;
    cloud_.x = *x_;
    cloud_.y = *y_;
    cloud_.z = *z_;
    const std::optional<z32u> used[] = {x_, y_, z_, cloud_.intensity, cloud_.color};
    return std::ranges::all_of(used, [&](const std::optional<z32u>& offset) {
      return !offset || *offset + kFieldSize <= stride_;
    });
  }

 private:
  PcdCloud& cloud_;
  z64u stride_ = 0;  // of the fields so far
  std::optional<z32u> x_, y_, z_;
};

class Parser {
 public:
  explicit Parser(std::string_view& file) : file_(file) {}

  bool Parse(PcdCloud& cloud) {
    return SkipComments() && (line_ == "VERSION .7" || line_ == "VERSION 0.7") &&
           ParseRecord(cloud) && ParseSize("WIDTH", cloud.width) && NextLine() &&
           ParseSize("HEIGHT", cloud.height) && NextLine() && TakeKey("VIEWPOINT") && NextLine() &&
           ParsePoints(cloud) && NextLine() && ParseData(cloud);
  }

 private:
  // The next line without its end and carriage returns; false when there is no whole line.
  bool NextLine() {
    const std::size_t end = file_.find('\n');
    if (end == file_.npos) return false;
    line_ = file_.substr(0, end);
    std::erase(line_, '\r');
    file_.remove_prefix(end + 1);
    return true;
  }

  bool SkipComments() {
    do {
      if (!NextLine()) return false;
    } while (line_.empty() || line_.starts_with('#'));
    return true;
  }

  // A line of a keyword and at least one character; gives what stands behind the keyword.
  bool NextList(std::string_view keyword, std::string& list) {
    if (!NextLine() || !line_.starts_with(keyword) || line_.size() <= keyword.size()) return false;
    list = line_.substr(keyword.size());
    return true;
  }

  // The lines from FIELDS to COUNT, and the one after them.
  bool ParseRecord(PcdCloud& cloud) {
    constexpr std::size_t kCountPrefix = 6;  // "COUNT "
    std::string names;
    std::string sizes;
    if (!NextList("FIELDS ", names) || !NextList("SIZE ", sizes)) return false;
    if (!NextLine() || !line_.starts_with("TYPE ")) return false;
    if (!NextLine()) return false;
    if (line_.find("COUNT") == line_.npos) return AddFields(cloud, names, sizes, nullptr);
    if (line_.size() <= kCountPrefix) return false;
    const std::string counts = line_.substr(kCountPrefix);
    return AddFields(cloud, names, sizes, &counts) && NextLine();
  }

  // Without counts, every field has one value.
  static bool AddFields(PcdCloud& cloud, std::string_view names, std::string_view sizes,
                        const std::string* counts) {
    RecordLayout layout(cloud);
    std::string_view countsLeft = counts == nullptr ? std::string_view() : *counts;
    std::string_view word;
    for (std::string_view name; TakePcdWord(names, name);) {
      z32u size = 0;
      z32u count = 1;
      if (!TakePcdWord(sizes, word) || !ParseNumber(word, size)) return false;
      if (counts != nullptr && !(TakePcdWord(countsLeft, word) && ParseNumber(word, count))) {
        return false;
      }
      if (!layout.Add(name, size, count)) return false;
    }
    return sizes.empty() && countsLeft.empty() && layout.Finish();
  }

  // Moves past the text up to the first blank, which must be this keyword.
  bool TakeKey(std::string_view keyword) {
    rest_ = line_;
    std::string_view key;
    return TakePcdWord(rest_, key) && key == keyword;
  }

  // A keyword and one number; blanks may follow it.
  template <class Number>
  bool ParseValue(std::string_view keyword, Number& number) {
    if (!TakeKey(keyword)) return false;
    rest_ = rest_.substr(0, rest_.find_last_not_of(' ') + 1);
    return ParseNumber(rest_, number);
  }

  bool ParseSize(std::string_view keyword, z32u& size) {
    return ParseValue(keyword, size) && size != 0;
  }

  bool ParsePoints(const PcdCloud& cloud) {
    z64u points = 0;
    return ParseValue("POINTS", points) && points == cloud.PointCount();
  }

  bool ParseData(PcdCloud& cloud) {
    cloud.binary = line_ == "DATA binary";
    return cloud.binary || line_ == "DATA ascii";
  }

  std::string_view& file_;  // what is left of it
  std::string line_;
  std::string_view rest_;  // of the line, behind its keyword
};

}  // namespace

bool TakePcdWord(std::string_view& text, std::string_view& word) {
  if (text.empty()) return false;
  word = text.substr(0, text.find(' '));
  text.remove_prefix(std::min(word.size() + 1, text.size()));
  return true;
}

std::optional<PcdCloud> ParsePcdHeader(std::string_view& file) {
  PcdCloud cloud;
  if (!Parser(file).Parse(cloud)) return std::nullopt;
  return cloud;
}

std::string FormatPcdHeader(z32u width, z32u height, bool hasIntensities) {
  std::string header =
      "# .PCD v0.7 - Point Cloud Data file format\n"
      "# Saved by Brenlow\n"
      "VERSION 0.7\n";
  header += hasIntensities ? "FIELDS x y z intensity\nSIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1\n"
                           : "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\n";
  header += "WIDTH " + std::to_string(width) + "\nHEIGHT " + std::to_string(height) + "\n";
  header += "VIEWPOINT 0 0 0 1 0 0 0\n";
  header += "POINTS " + std::to_string(z64u{width} * height) + "\nDATA binary\n";
  return header;
}
