// SPDX-License-Identifier: MIT
#include "support/mcap_file.h"

#include <lz4frame.h>
#include <zstd.h>

namespace mcap {

namespace {

std::string Compress(const std::string& records, const std::string& compression) {
  std::string out;
  if (compression == "lz4") {
    out.resize(LZ4F_compressFrameBound(records.size(), nullptr));
    out.resize(LZ4F_compressFrame(out.data(), out.size(), records.data(), records.size(), nullptr));
  } else if (compression == "zstd") {
    out.resize(ZSTD_compressBound(records.size()));
    out.resize(ZSTD_compress(out.data(), out.size(), records.data(), records.size(), 1));
  } else {
    out = records;
  }
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
  const std::string file = magic + records + magic;
  const auto* bytes = reinterpret_cast<const z8u*>(file.data());
  return {bytes, bytes + file.size()};
}

zBytes File(const std::string& records) {
  return Bare(Header() + Recording() + Scanner() + Schema() + FrameChannel() +
              SourceChannel(1, "Top") + records + DataEnd() + Footer());
}

}  // namespace mcap
