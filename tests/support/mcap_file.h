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
std::string Text(const std::string& text);
std::string TextMap(const Map& map);

// Whole records.
std::string Record(z8u opcode, const std::string& content);
std::string Header();
std::string Recording(const std::string& layout = "segmented", const std::string& version = "1");
std::string Scanner();
std::string Schema(z16u id = 1);
std::string Channel(z16u id, z16u schema, const std::string& topic, const Map& metadata = {});
std::string FrameChannel(z16u id = 0);
// A channel of the source `name` of scanner 0; entries of `changes` replace the usual metadata, an
// empty text removes it.
std::string SourceChannel(z16u id, const std::string& name, const Map& changes = {});
std::string Message(z16u channel, const std::string& data);
std::string FrameIndex(const std::string& json = R"({"index":7})", z16u channel = 0);
// `compression` is "", "lz4" or "zstd"; the declared size and checksum may be wrong on purpose.
std::string Chunk(const std::string& records, const std::string& compression = "",
                  z64s sizeError = 0, z32u crc = 0);
std::string DataEnd(z32u crc = 0);
std::string Footer(z64u summaryStart = 0, z32u crc = 0);

// Magic, header, the usual description, `records`, data end, footer, magic.
zBytes File(const std::string& records);
// The same from all records between the magics.
zBytes Bare(const std::string& records);

}  // namespace mcap
