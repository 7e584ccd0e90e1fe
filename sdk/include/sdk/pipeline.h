// SPDX-License-Identifier: MIT
// Pipeline library: recordings as streams of bytes. docs/formats/recording.md describes the layout.
//
// Failures are Orv::Exception. Damage in a stream is reported with the byte offset at which it
// was found; a chunk that was compressed adds the offset inside its uncompressed records.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sdk/core.h"
#include "sdk/object.h"

using PloviaLib = zObject;

zStatus PloviaLib_Construct(PloviaLib* library) noexcept;

// One data source of a scanner.
struct ReplaySourceInfo {
  std::string name;
  std::string displayName;
  z16u dataType = 0;
  z8u arrayed = 0;    // 1 when each frame holds an array message for this source
  z64u reserved = 0;  // carried along, without a meaning

  bool operator==(const ReplaySourceInfo&) const = default;
};

namespace sdk::replay {
class ReplayReader;
struct FrameContent;
}  // namespace sdk::replay

namespace Plovia {

struct ReplayScannerInfo {
  std::string family;
  std::string id;
  std::string displayName;
  std::vector<ReplaySourceInfo> sources;

  bool operator==(const ReplayScannerInfo&) const = default;
};

// What concerns a recording as a whole.
struct ReplayInfo {
  bool classic;
  // The older layout: frames stand directly in the stream, not in segments.
  bool IsClassic() const noexcept { return classic; }
};

// Messages of one frame, in the order in which they were written.
using ReplayFrame = std::vector<Orv::Object<void*>>;

// A finished recording in pieces: the messages' points stand where they are and are not copied, so
// it must not outlive the serializer, and its messages must stay as they are.
class ReplayStream {
 public:
  z64u Size() const noexcept { return own_.size() + viewed_; }  // bytes
  zBytes ToBytes() const;
  // Writes all of it at the stream's position; gives the first status that is not zOK.
  zStatus WriteTo(zStream stream) const noexcept;

  void Append(std::span<const z8u> bytes) { own_.insert(own_.end(), bytes.begin(), bytes.end()); }
  // Bytes that stay in place; few are copied all the same.
  void AppendInPlace(std::span<const z8u> bytes);
  void Append(const ReplayStream& other);

 private:
  struct View {
    zSize at;  // bytes of its own that come before
    std::span<const z8u> bytes;
  };

  template <class Take>
  zStatus InOrder(const Take& take) const;

  zBytes own_;
  std::vector<View> views_;
  z64u viewed_ = 0;  // bytes of the views
};

// Something that is wrong in a recording stream.
struct ReplayProblem {
  z64u offset;                  // in the stream; of the chunk, where that is compressed
  std::optional<z64u> inChunk;  // then: in its uncompressed records
  std::string what;
  bool harmless = false;  // to reading: an index, the summary or a frame outside of segments

  bool operator==(const ReplayProblem&) const = default;
};

inline constexpr zSize kMostReplayProblems = 1000;

// Reads one recording or writes one; an object does either.
class ReplaySerializer {
 public:
  ReplaySerializer();
  ~ReplaySerializer();
  ReplaySerializer(ReplaySerializer&&) noexcept;
  ReplaySerializer& operator=(ReplaySerializer&&) noexcept;

  // Checks the stream's structure and checksums. The bytes must stay in place until the last
  // read. The messages that were read do not depend on them: with an owner of the bytes, they
  // share it and copy their points out of the stream when these are first needed, without one at
  // once.
  void LoadBuffer(std::span<const z8u> replay, std::shared_ptr<const void> owner = nullptr);
  // The same for a stream that may be damaged: what is wrong is added to the problems, up to
  // kMostReplayProblems in all, and the reading goes on after it where it can. So it does in
  // ReadData, where a message that is damaged becomes an empty handle, until there are as many
  // problems; then either of them throws. What the indexes and the summary say is verified too.
  // The list must outlive the last read.
  void LoadDamaged(std::span<const z8u> replay, std::vector<ReplayProblem>& problems);
  ReplayInfo GetReplayInfo() const;
  std::vector<Plovia::ReplayScannerInfo> ReadScannerInfo() const;

  // Segmented recordings are read segment by segment: LoadDataIndexFiles moves to the first, then
  // to the next one. A classic recording has no segments.
  z64u SegmentCount() const;
  void LoadDataIndexFiles();

  // One entry for each frame of the recording (classic) or of the current segment.
  std::vector<z32u> ReadIndexInfo() const;
  // Classic: the frame with the position `which`. Segmented: the next frame of the current
  // segment; `which`, the number of sources, is not needed to find it.
  ReplayFrame ReadData(z64u which);

  void WriteScannerInfo(const std::vector<Plovia::ReplayScannerInfo>& scanners);
  // Begins a frame with this index entry.
  void WriteIndexInfo(z32u index);
  // Adds a message to the frame. It is shared until the recording has been written out, so it must
  // not be edited before.
  void WriteData(Orv::Object<void*> message);
  // The finished recording, in the classic or the segmented layout.
  zBytes GetReplayFile(bool classic) const;
  // The same bytes without a copy of the messages.
  ReplayStream GetReplayStream(bool classic) const;

 private:
  sdk::replay::ReplayReader& Loaded(const char* function) const;

  std::vector<ReplayScannerInfo> scanners_;            // that are being written
  std::vector<sdk::replay::FrameContent> frames_;      // likewise
  std::unique_ptr<sdk::replay::ReplayReader> reader_;  // null until LoadBuffer
};

}  // namespace Plovia
