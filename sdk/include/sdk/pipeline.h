// SPDX-License-Identifier: MIT
// Pipeline library: recordings as streams of bytes. docs/formats/recording.md describes the layout.
//
// Failures are Orv::Exception. Damage in a stream is reported with the byte offset at which it
// was found; a chunk that was compressed adds the offset inside its uncompressed records.
#pragma once

#include <functional>
#include <memory>
#include <optional>
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
class ReplayWriter;
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

// A frame of a recording that is read: its index entry, and its messages by their numbers in the
// whole recording, in the order in which they were written.
struct ReplayFrame {
  z32u index;
  z64u firstMessage;
  zSize messageCount;
};

// What the summary of a recording tells; nothing where it does not, or is damaged.
struct ReplaySummary {
  std::optional<z64u> frames, chunks;
};

// Takes a message while it is in memory, with its number in the recording.
using MessageVisitor = std::function<void(z64u number, zObject message)>;

// Something that is wrong in a recording stream.
struct ReplayProblem {
  z64u offset;                  // in the stream; of the chunk, where that is compressed
  std::optional<z64u> inChunk;  // then: in its uncompressed records
  std::string what;
  bool harmless = false;  // to reading: an index, the summary or a frame outside of segments
  std::optional<z64u> message = {};  // the number of the one that is damaged

  bool operator==(const ReplayProblem&) const = default;
};

inline constexpr zSize kMostReplayProblems = 1000;

// Reads one recording or writes one; an object does either. Nothing large is held: the source is
// read from beginning to end once, and then where a message is asked for; what is written goes into
// the stream at once.
class ReplaySerializer {
 public:
  ReplaySerializer();
  ~ReplaySerializer();
  ReplaySerializer(ReplaySerializer&&) noexcept;
  ReplaySerializer& operator=(ReplaySerializer&&) noexcept;

  // Checks the structure, the checksums and the messages of a stream. What the source throws passes
  // through these and all that follow.
  void LoadBuffer(zSourcePtr replay);
  // The same for a stream that may be damaged: what is wrong is added to the problems, up to
  // kMostReplayProblems in all, and the reading goes on after it where it can; otherwise it throws.
  // What the indexes and the summary say is verified too, and messages that are damaged are told
  // last. Each message that is whole is given to `visit`.
  void LoadDamaged(zSourcePtr replay, std::vector<ReplayProblem>& problems,
                   const MessageVisitor& visit = {});
  // Loads a stream up to the end of its first frame; besides, only its summary is read. No checksum
  // is verified.
  ReplaySummary LoadFirstFrame(zSourcePtr replay);
  ReplayInfo GetReplayInfo() const;
  std::vector<Plovia::ReplayScannerInfo> ReadScannerInfo() const;

  // Segmented recordings are read segment by segment: LoadDataIndexFiles moves to the first, then
  // to the next one. A classic recording has no segments.
  z64u SegmentCount() const;
  void LoadDataIndexFiles();

  // One entry for each frame of the recording (classic) or of the current segment.
  std::vector<z32u> ReadIndexInfo() const;
  // Classic: the frame with the position `which`. Segmented: the next frame of the current
  // segment; `which`, the number of sources, is not needed to find it. Unless LoadDamaged has told
  // it, a message of the frame that is damaged is an error.
  ReplayFrame ReadData(z64u which);
  // A message by its number, which is read and checked again.
  Orv::Object<void*> ReadMessage(z64u number) const;
  // How many items an array message has; 0 for another one.
  zSize ItemCount(z64u number) const;

  // Begins a recording in the classic or the segmented layout, which is written to a stream that
  // can be moved back, from its start on. The stream must outlive the writing.
  void BeginReplay(zStream stream, bool classic);
  void WriteScannerInfo(const std::vector<Plovia::ReplayScannerInfo>& scanners);
  // Begins a frame with this index entry.
  void WriteIndexInfo(z32u index);
  // Adds a message to the frame.
  void WriteData(const Orv::Object<void*>& message);
  // Completes the recording.
  void EndReplay();

 private:
  sdk::replay::ReplayReader& Loaded(const char* function) const;
  sdk::replay::ReplayWriter& Begun(const char* function) const;

  std::unique_ptr<sdk::replay::ReplayReader> reader_;  // null until it is loaded
  std::unique_ptr<sdk::replay::ReplayWriter> writer_;  // null until it is begun, and after its end
};

}  // namespace Plovia
