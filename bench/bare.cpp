// SPDX-License-Identifier: MIT
// bare <work> <from> <starts> <side> [<to>...]: reads scans of side x side points a block at a time
// and does with them what a conversion must, and nothing else. The file <starts> says at which
// bytes of <from> their points stand. The works, each on one scan but for `report` and `frames`:
//   record    copies heights, and puts their range and checksum before them afterwards
//   quantize  makes 16 bits of x y z in 32-bit floats, and puts a checksum before them
//   report    sums up a recording and finds the range of its heights
//   surface   does so, too, and copies heights behind the range, with another mark of invalid ones
//   frames    sums up a recording and copies the heights of each scan to its output
//   cloud     sums up a recording and writes x y z in 32-bit floats for heights

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

// The tool has versions of these loops for wide vectors, too.
#if defined(__x86_64__) && defined(__linux__)
#define WIDE [[gnu::target_clones("avx2", "default")]]
#else
#define WIDE
#endif

namespace {

constexpr std::size_t kBlock = 256 * 1024;
constexpr std::size_t kHeader = 512;  // stands before the points of an output
constexpr std::int16_t kInvalid = -32768;
constexpr auto kStep = static_cast<double>(0.01F);  // of the grid, and of heights
constexpr auto kScale = static_cast<double>(0.001F);

template <class Coordinate>
struct Point {
  Coordinate x, y, z;
};

// Without a buffer of its own: blocks are large enough.
class File {
 public:
  File(const std::string& path, const char* mode) : path_(path), file_(fopen(path.c_str(), mode)) {
    if (file_ == nullptr) throw std::runtime_error(path);
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);
  }

  void Seek(std::size_t position) {
    Require(std::fseek(file_.get(), static_cast<long>(position), SEEK_SET) == 0);
  }

  template <class Item>
  void Read(std::span<Item> items) {
    Require(std::fread(items.data(), sizeof(Item), items.size(), file_.get()) == items.size());
  }

  template <class Item>
  void Write(std::span<Item> items) {
    Require(std::fwrite(items.data(), sizeof(Item), items.size(), file_.get()) == items.size());
  }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Require(bool good) const {
    if (!good) throw std::runtime_error(path_);
  }

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
};

// Of valid heights.
class Range {
 public:
  void Include(std::span<const std::int16_t> heights) {
    std::int16_t below = below_;
    std::int16_t highest = highest_;
    for (const std::int16_t height : heights) {
      below = std::min(below, static_cast<std::int16_t>(height - 1));  // 32767 for an invalid one
      highest = std::max(highest, height);
    }
    below_ = below;
    highest_ = highest;
  }

  int Lowest() const { return below_ + 1; }
  int Highest() const { return highest_; }

 private:
  std::int16_t below_ = std::numeric_limits<std::int16_t>::max();
  std::int16_t highest_ = kInvalid;
};

class Checksum {
 public:
  template <class Item>
  void Include(std::span<Item> items) {
    value_ = libdeflate_crc32(value_, items.data(), items.size_bytes());
  }

  std::uint32_t Value() const { return value_; }

 private:
  std::uint32_t value_ = 0;
};

// What is known of a scan once all of it was seen.
struct Header {
  std::int32_t lowest = 0;
  std::int32_t highest = 0;
  std::uint32_t checksum = 0;
};

class Output : public File {
 public:
  explicit Output(const std::string& path) : File(path, "wb") { WriteHeader({}); }

  void WriteHeader(const Header& header) {
    std::array<char, kHeader> bytes{};
    std::memcpy(bytes.data(), &header, sizeof header);
    Seek(0);
    Write(std::span<char>(bytes));
  }
};

class Input {
 public:
  Input(const std::string& path, const char* starts, std::size_t side)
      : file_(path, "rb"), size_(std::filesystem::file_size(path)), side_(side) {
    std::ifstream numbers(starts);
    starts_.assign(std::istream_iterator<std::size_t>(numbers), {});
    if (starts_.empty()) throw std::runtime_error(starts);
  }

  std::size_t Side() const { return side_; }

  // Gives items of one scan in blocks of so many to `use`, which may change them.
  template <class Item, class Use>
  void ReadScan(std::size_t scan, std::size_t most, Use use) {
    Read<Item>(starts_.at(scan), side_ * side_, most, use);
  }

  // Sums up the whole file, and gives the heights of each scan to `use`.
  template <class Use>
  Checksum Check(Use use) {
    Checksum checksum;
    const auto include = [&](auto items) { checksum.Include(items); };
    std::size_t position = 0;
    for (const std::size_t start : starts_) {
      Read<char>(position, start - position, kBlock, include);
      Read<std::int16_t>(start, side_ * side_, kBlock / sizeof(std::int16_t), [&](auto heights) {
        checksum.Include(heights);
        use(heights);
      });
      position = start + side_ * side_ * sizeof(std::int16_t);
    }
    Read<char>(position, size_ - position, kBlock, include);
    return checksum;
  }

 private:
  template <class Item, class Use>
  void Read(std::size_t start, std::size_t count, std::size_t most, Use use) {
    file_.Seek(start);
    while (count > 0) {
      const std::span block(reinterpret_cast<Item*>(block_.get()), std::min(count, most));
      file_.Read(block);
      use(block);
      count -= block.size();
    }
  }

  File file_;
  std::size_t size_;
  std::size_t side_;
  std::vector<std::size_t> starts_;
  std::unique_ptr<unsigned char[]> block_{new unsigned char[kBlock]};
};

template <class Use>
void ForEachBlockOfHeights(Input& input, std::size_t scan, Use use) {
  input.ReadScan<std::int16_t>(scan, kBlock / sizeof(std::int16_t), use);
}

using Outputs = std::vector<std::string>;

void Record(Input& input, const Outputs& outputs) {
  Output output(outputs.at(0));
  Range range;
  Checksum checksum;
  ForEachBlockOfHeights(input, 0, [&](std::span<std::int16_t> heights) {
    range.Include(heights);
    checksum.Include(heights);
    output.Write(heights);
  });
  output.WriteHeader({range.Lowest(), range.Highest(), checksum.Value()});
}

// Turns what lies between the extremes of an axis into 16 bits.
class Axis {
 public:
  void Include(float value) {
    lowest_ = std::min(lowest_, value);  // not by a NaN
    highest_ = std::max(highest_, value);
  }

  void Fit() {
    offset_ = static_cast<double>(highest_ + lowest_) * 0.5;
    scale_ = static_cast<double>(highest_ - lowest_) * 0.5 / 32767;
  }

  std::int16_t Raw(bool valid, float value) const {
    const double step = (static_cast<double>(valid ? value : lowest_) - offset_) / scale_;
    const auto raw = static_cast<std::int32_t>(step + std::copysign(0.5, step));
    return static_cast<std::int16_t>(valid ? raw : kInvalid);
  }

 private:
  float lowest_ = std::numeric_limits<float>::max();
  float highest_ = -std::numeric_limits<float>::max();
  double offset_ = 0;
  double scale_ = 1;
};

bool IsFinite(const Point<float>& point) {
  // Differences are 0 or NaN.
  return (point.x - point.x) + (point.y - point.y) + (point.z - point.z) == 0;
}

struct Axes {
  Axis x, y, z;
};

WIDE void FindExtremes(std::span<const Point<float>> points, Axes& axes) {
  auto [x, y, z] = axes;
  for (const Point<float>& point : points) {
    x.Include(point.x);
    y.Include(point.y);
    z.Include(point.z);
  }
  axes = {x, y, z};
}

WIDE void FindRaws(std::span<const Point<float>> points, const Axes& axes,
                   Point<std::int16_t>* raws) {
  const auto [x, y, z] = axes;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Point<float>& point = points[i];
    const bool valid = IsFinite(point);
    raws[i] = {x.Raw(valid, point.x), y.Raw(valid, point.y), z.Raw(valid, point.z)};
  }
}

void Quantize(Input& input, const Outputs& outputs) {
  constexpr std::size_t kMost = kBlock / sizeof(Point<float>);
  Axes axes;
  input.ReadScan<Point<float>>(0, kMost, [&](auto points) { FindExtremes(points, axes); });
  for (Axis* axis : {&axes.x, &axes.y, &axes.z}) axis->Fit();
  const std::unique_ptr<Point<std::int16_t>[]> raws(new Point<std::int16_t>[kMost]);
  Output output(outputs.at(0));
  Checksum checksum;
  input.ReadScan<Point<float>>(0, kMost, [&](auto points) {
    FindRaws(points, axes, raws.get());
    checksum.Include(std::span(raws.get(), points.size()));
    output.Write(std::span(raws.get(), points.size()));
  });
  output.WriteHeader({0, 0, checksum.Value()});
}

Header CheckHeights(Input& input) {
  Range range;
  const Checksum checksum = input.Check([&](auto heights) { range.Include(heights); });
  return {range.Lowest(), range.Highest(), checksum.Value()};
}

void Report(Input& input, const Outputs&) {
  const Header header = CheckHeights(input);
  std::printf("%d to %d, %08x\n", header.lowest, header.highest, header.checksum);
}

void Surface(Input& input, const Outputs& outputs) {
  const Header header = CheckHeights(input);
  const auto mark = static_cast<std::int16_t>(header.lowest - 2);
  Output output(outputs.at(0));
  output.WriteHeader(header);
  ForEachBlockOfHeights(input, 0, [&](std::span<std::int16_t> heights) {
    for (std::int16_t& height : heights) height = height == kInvalid ? mark : height;
    output.Write(heights);
  });
}

Header CheckAlone(Input& input) {
  const Checksum checksum = input.Check([](auto) {});
  return {0, 0, checksum.Value()};
}

void Frames(Input& input, const Outputs& outputs) {
  const Header header = CheckAlone(input);
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    Output output(outputs[i]);
    output.WriteHeader(header);
    ForEachBlockOfHeights(input, i, [&](auto heights) { output.Write(heights); });
  }
}

void PlaceRow(std::span<const std::int16_t> heights, std::size_t row, Point<float>* points) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const auto y = static_cast<float>(static_cast<double>(row) * kStep);
  for (std::size_t i = 0; i < heights.size(); ++i) {
    const bool valid = heights[i] != kInvalid;
    const auto x = static_cast<float>(static_cast<std::int32_t>(i) * kStep);
    const auto z = static_cast<float>(heights[i] * kScale);
    points[i] = {valid ? x : kNaN, valid ? y : kNaN, valid ? z : kNaN};
  }
}

void Cloud(Input& input, const Outputs& outputs) {
  const Header header = CheckAlone(input);
  const std::size_t side = input.Side();
  const std::size_t most = std::max(kBlock / (side * sizeof(Point<float>)), std::size_t{1}) * side;
  const std::unique_ptr<Point<float>[]> points(new Point<float>[most]);
  Output output(outputs.at(0));
  output.WriteHeader(header);
  std::size_t row = 0;
  input.ReadScan<std::int16_t>(0, most, [&](std::span<std::int16_t> heights) {
    for (std::size_t start = 0; start < heights.size(); start += side, ++row) {
      PlaceRow(heights.subspan(start, side), row, points.get() + start);
    }
    output.Write(std::span(points.get(), heights.size()));
  });
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void(Input&, const Outputs&)>> works{
      {"record", Record},   {"quantize", Quantize}, {"report", Report},
      {"surface", Surface}, {"frames", Frames},     {"cloud", Cloud}};
  const auto work = argc < 5 ? works.end() : works.find(argv[1]);
  if (work == works.end()) {
    std::fputs("usage: bare <work> <from> <starts> <side> [<to>...]\n", stderr);
    return 2;
  }
  try {
    Input input(argv[2], argv[3], std::strtoul(argv[4], nullptr, 10));
    work->second(input, {argv + 5, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bare: %s\n", error.what());
    return 1;
  }
  return 0;
}
