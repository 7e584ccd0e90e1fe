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

std::string Text(const std::string& text) { return Raw(static_cast<z32u>(text.size())) + text; }

std::string TextMap(const Map& map) {
  std::string entries;
  for (const auto& [key, value] : map) entries += Text(key) + Text(value);
  return Text(entries);
}

std::string Record(z8u opcode, const std::string& content) {
  return Raw(opcode) + Raw(static_cast<z64u>(content.size())) + content;
}

std::string Header() { return Record(0x01, Text("") + Text("by hand")); }

std::string Recording(const std::string& layout, const std::string& version) {
  return Record(0x0C, Text("recording") + TextMap({{"layout", layout}, {"version", version}}));
}

std::string Scanner() {
  return Record(0x0C, Text("scanner") + TextMap({{"family", "f"}, {"id", "i"}, {"name", "n"}}));
}

std::string Schema(z16u id) {
  return Record(0x03, Raw(id) + Text("trelvane.ScanMessage") + Text("flatbuffer") + Text(""));
}

std::string Channel(z16u id, z16u schema, const std::string& topic, const Map& metadata) {
  return Record(0x04, Raw(id) + Raw(schema) + Text(topic) + Text("") + TextMap(metadata));
}

std::string FrameChannel(z16u id) { return Channel(id, 0, "/frame_index"); }

std::string SourceChannel(z16u id, const std::string& name, const Map& changes) {
  Map metadata = {{"scanner", "0"},    {"name", name},   {"display_name", name},
                  {"data_type", "14"}, {"arrayed", "0"}, {"reserved", "0"}};
  for (const auto& [key, value] : changes) {
    metadata[key] = value;
    if (value.empty()) metadata.erase(key);
  }
  return Channel(id, 1, "/i/" + name, metadata);
}

std::string Message(z16u channel, const std::string& data) {
  return Record(0x05, Raw(channel) + Raw(z32u{99}) + Raw(z64u{5}) + Raw(z64u{5}) + data);
}

std::string FrameIndex(const std::string& json, z16u channel) { return Message(channel, json); }

std::string Chunk(const std::string& records, const std::string& compression, z64s sizeError,
                  z32u crc) {
  const auto size = static_cast<z64u>(static_cast<z64s>(records.size()) + sizeError);
  const std::string stored = Compress(records, compression);
  return Record(0x06, Raw(z64u{0}) + Raw(z64u{0}) + Raw(size) + Raw(crc) + Text(compression) +
                          Raw(static_cast<z64u>(stored.size())) + stored);
}

std::string DataEnd(z32u crc) { return Record(0x0F, Raw(crc)); }

std::string Footer(z64u summaryStart, z32u crc) {
  return Record(0x02, Raw(summaryStart) + Raw(z64u{0}) + Raw(crc));
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
