// SPDX-License-Identifier: MIT
// bare_copy <from> <bytes> [<to>...]: reads a whole file into one buffer and writes so many bytes
// of it to each of the other files, the least that a converter does which holds a file in memory.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <span>

namespace {

// Goes on through the buffer where the last file ended, and begins it again where it ends.
bool WriteFile(const char* path, std::span<const char> buffer, std::size_t& position,
               std::size_t bytes) {
  std::FILE* to = std::fopen(path, "wb");
  if (to == nullptr) return false;
  bool written = !buffer.empty();
  while (written && bytes > 0) {
    if (position == buffer.size()) position = 0;
    const std::size_t part = std::min(bytes, buffer.size() - position);
    written = std::fwrite(buffer.data() + position, 1, part, to) == part;
    position += part;
    bytes -= part;
  }
  return std::fclose(to) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: bare_copy <from> <bytes> [<to>...]\n", stderr);
    return 2;
  }
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(argv[1], error);
  std::FILE* from = error ? nullptr : std::fopen(argv[1], "rb");
  if (from == nullptr) return 1;
  const std::unique_ptr<char[]> buffer(new char[size]);  // not cleared first
  bool good = std::fread(buffer.get(), 1, size, from) == size;
  std::fclose(from);
  std::size_t position = 0;
  for (int i = 3; good && i < argc; ++i) {
    good = WriteFile(argv[i], {buffer.get(), size}, position, std::strtoul(argv[2], nullptr, 10));
  }
  return good ? 0 : 1;
}
