// SPDX-License-Identifier: MIT
// bare_copy <from> <to>: reads a whole file into one buffer and writes it out again, the least that
// a converter does which holds a file in memory.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: bare_copy <from> <to>\n", stderr);
    return 2;
  }
  std::error_code error;
  const std::uintmax_t bytes = std::filesystem::file_size(argv[1], error);
  std::FILE* from = error ? nullptr : std::fopen(argv[1], "rb");
  std::FILE* to = from ? std::fopen(argv[2], "wb") : nullptr;
  if (!to) return 1;
  const std::unique_ptr<char[]> buffer(new char[bytes]);  // not cleared first
  const bool copied = std::fread(buffer.get(), 1, bytes, from) == bytes &&
                      std::fwrite(buffer.get(), 1, bytes, to) == bytes;
  std::fclose(from);
  return std::fclose(to) == 0 && copied ? 0 : 1;
}
