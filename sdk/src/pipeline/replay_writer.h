// SPDX-License-Identifier: MIT
// Lays a recording out as an MCAP file while its frames come.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "message/message.h"
#include "pipeline/stream_writer.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

// Throws Orv::Exception for messages without a source or a frame, for what a recording cannot hold,
// and for what cannot be written.
class ReplayWriter {
 public:
  // The stream stands at its start, and can be moved back.
  ReplayWriter(zStream stream, bool classic) : out_(stream), classic_(classic) {}

  // Before the first frame.
  void PutScanners(const std::vector<Plovia::ReplayScannerInfo>& scanners);
  void BeginFrame(z32u index);
  void PutMessage(const sdk::Message& message);
  void PutSurface(const Plovia::SurfaceStream& surface);
  void Finish();

 private:
  // Its sizes and its checksum are filled in when it ends.
  struct OpenChunk {
    Chunk fields;
    z64u start, recordsStart;  // in the stream
    std::map<z16u, IndexEntries> entries;
  };

  void PutHead();
  void PutMetadata(const Metadata& metadata);
  void PutSchema();
  void PutChannels();
  void BeginMessage(const sdk::Message& message, zSize size);
  void PutMessageHead(z16u channel, z64u publishTime, z64u dataSize);
  void OpenNextChunk();
  void CloseChunk();
  void PutSummary();
  Statistics FinishedStatistics();

  StreamWriter out_;
  bool classic_;
  std::vector<Plovia::ReplayScannerInfo> scanners_;
  bool headWritten_ = false;
  z16u sourceCount_ = 0;
  z64u frameCount_ = 0;
  zSize messagesInFrame_ = 0;
  std::optional<OpenChunk> chunk_;
  std::vector<MetadataIndex> metadataIndexes_;
  std::vector<ChunkIndex> chunkIndexes_;
  std::map<z16u, z64u> messageCounts_;
  Statistics statistics_;
};

}  // namespace sdk::replay
