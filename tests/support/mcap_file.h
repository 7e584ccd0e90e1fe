// SPDX-License-Identifier: MIT
// MCAP files made by hand, record by record, for what our own writer never does.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "sdk/core.h"

namespace mcap {

using Map = std::map<std::string, std::string>;

// Parts of records.
template <class Number>
std::string Raw(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}
inline std::string Text(const std::string& text) {
  return Raw(static_cast<z32u>(text.size())) + text;
}
std::string TextMap(const Map& map);

// Whole records.
inline std::string Record(z8u opcode, const std::string& content) {
  return Raw(opcode) + Raw(static_cast<z64u>(content.size())) + content;
}
inline std::string Header() { return Record(0x01, Text("") + Text("by hand")); }
inline std::string Recording(const std::string& layout = "segmented",
                             const std::string& version = "1") {
  return Record(0x0C, Text("recording") + TextMap({{"layout", layout}, {"version", version}}));
}
inline std::string Scanner() {
  return Record(0x0C, Text("scanner") + TextMap({{"family", "f"}, {"id", "i"}, {"name", "n"}}));
}
inline std::string Schema(z16u id = 1) {
  return Record(0x03, Raw(id) + Text("trelvane.ScanMessage") + Text("flatbuffer") + Text(""));
}
inline std::string Channel(z16u id, z16u schema, const std::string& topic,
                           const Map& metadata = {}) {
  return Record(0x04, Raw(id) + Raw(schema) + Text(topic) + Text("") + TextMap(metadata));
}
inline std::string FrameChannel(z16u id = 0) { return Channel(id, 0, "/frame_index"); }
// A channel of the source `name` of scanner 0; entries of `changes` replace the usual metadata, an
// empty text removes it.
std::string SourceChannel(z16u id, const std::string& name, const Map& changes = {});
inline std::string Message(z16u channel, const std::string& data) {
  return Record(0x05, Raw(channel) + Raw(z32u{99}) + Raw(z64u{5}) + Raw(z64u{5}) + data);
}
inline std::string FrameIndex(const std::string& json = R"({"index":7})", z16u channel = 0) {
  return Message(channel, json);
}
// `compression` is "", "lz4" or "zstd"; the declared size and checksum may be wrong on purpose.
std::string Chunk(const std::string& records, const std::string& compression = "",
                  z64s sizeError = 0, z32u crc = 0);
inline std::string DataEnd(z32u crc = 0) { return Record(0x0F, Raw(crc)); }
inline std::string Footer(z64u summaryStart = 0, z32u crc = 0) {
  return Record(0x02, Raw(summaryStart) + Raw(z64u{0}) + Raw(crc));
}

// Magic, header, the usual description, `records`, data end, footer, magic.
zBytes File(const std::string& records);
// The same from all records between the magics.
zBytes Bare(const std::string& records);

}  // namespace mcap
