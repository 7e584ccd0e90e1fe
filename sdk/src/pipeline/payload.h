// SPDX-License-Identifier: MIT
// Messages as FlatBuffers (scan_message.fbs).
#pragma once

#include <flatbuffers/flatbuffers.h>

#include "message/message.h"
#include "pipeline/field_reader.h"
#include "pipeline/payload_layouts.h"
#include "pipeline/stream_writer.h"

namespace trelvane {
struct ScanMessage;
}

namespace sdk::replay {

// An array without items in memory, and a surface without points there. Throw std::bad_alloc.
Owned<Array> MakeHollowArray(zType type, z32u width, z32u length);
Owned<Surface> MakeHollowSurface(zType pointType, z32u width, z32u length);

// A message's FlatBuffer, built without copying the message's arrays: their places in the buffer
// stay holes until the buffer is appended to a stream. The message must stay as it is until then.
class PayloadBuilder {
 public:
  // Throws Orv::Exception for a message that does not fit into 2 GiB.
  explicit PayloadBuilder(const sdk::Message& message);

  zSize Size() const { return builder_.GetSize(); }
  // `fill` appends an array that has no items in memory.
  void AppendTo(StreamWriter& writer, const std::function<void()>& fill = {}) const;
  // All that stands in front of the arrays.
  Bytes Head() const;

 private:
  struct Hole {
    zSize fromEnd;  // of the buffer, to the hole's first byte
    const Array* array;
  };

  template <class Item>
  flatbuffers::Offset<flatbuffers::Vector<Item>> LeaveHole(const Array& array);
  flatbuffers::Offset<trelvane::ScanMessage> BuildScan(const Scan& scan);

  flatbuffers::FlatBufferBuilder builder_;
  std::vector<Hole> holes_;  // from the end of the buffer to its start
};

// Reads payloads, one after the other. Each is copied into aligned memory and verified there: in a
// stream nothing is aligned, and what is verified must not change any more. The arrays of the
// message lie in the copy, whose memory serves the next payload as soon as nobody holds it.
class PayloadReader {
 public:
  // The message in a payload of `size` bytes, before which the reader stands at `place`. Throws
  // Orv::Exception for damage.
  Orv::Object<void*> Read(PieceReader& reader, z64u size, const Place& place);
  // Of payloads that need not be read to be known as intact.
  const PayloadLayouts& Layouts() const { return layouts_; }

 private:
  Block copy_;
  zSize capacity_ = 0;
  PayloadLayouts layouts_;
};

}  // namespace sdk::replay
