// SPDX-License-Identifier: MIT
#include "support/mcap_file.h"

#include <lz4frame.h>
#include <zstd.h>

#include "support/scans.h"

namespace mcap {

namespace {

std::string Compress(const std::string& records, const std::string& compression) {
  if (compression != "lz4" && compression != "zstd") return records;
  const bool lz4 = compression == "lz4";
  const zSize size = records.size();
  std::string out(lz4 ? LZ4F_compressFrameBound(size, nullptr) : ZSTD_compressBound(size), '\0');
  out.resize(lz4 ? LZ4F_compressFrame(out.data(), out.size(), records.data(), size, nullptr)
                 : ZSTD_compress(out.data(), out.size(), records.data(), size, 1));
  return out;
}

}  // namespace

std::string TextMap(const Map& map) {
  std::string entries;
  for (const auto& [key, value] : map) entries += Text(key) + Text(value);
  return Text(entries);
}

std::string SourceChannel(z16u id, const std::string& name, const Map& changes) {
  Map metadata = {{"scanner", "0"},    {"name", name},   {"display_name", name},
                  {"data_type", "14"}, {"arrayed", "0"}, {"reserved", "0"}};
  for (const auto& [key, value] : changes) {
    metadata[key] = value;
    if (value.empty()) metadata.erase(key);
  }
  return Channel(id, 1, "/i/" + name, metadata);
}

std::string Chunk(const std::string& records, const std::string& compression, z64s sizeError,
                  z32u crc) {
  const auto size = static_cast<z64u>(static_cast<z64s>(records.size()) + sizeError);
  const std::string stored = Compress(records, compression);
  return Record(0x06, Raw(z64u{0}) + Raw(z64u{0}) + Raw(size) + Raw(crc) + Text(compression) +
                          Raw(static_cast<z64u>(stored.size())) + stored);
}

zBytes Bare(const std::string& records) {
  const std::string magic("\x89MCAP0\r\n", 8);
  return ToBytes(magic + records + magic);
}

zBytes File(const std::string& records) {
  return Bare(Header() + Recording() + Scanner() + Schema() + FrameChannel() +
              SourceChannel(1, "Top") + records + DataEnd() + Footer());
}

}  // namespace mcap
