// SPDX-License-Identifier: MIT
// Pipeline library: recordings as streams of bytes. docs/formats/recording.md describes the layout.
//
// Failures are Orv::Exception. Damage in a stream is reported with the byte offset at which it
// was found; a chunk that was compressed adds the offset inside its uncompressed records.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sdk/message.h"
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

// A uniform surface whose heights come about while it is written, or are read while it is looked
// at.
struct SurfaceStream {
  z32u width, length;
  zPoint3d64f scale, offset;  // mm
  MxStamp stamp{};
  Orv::Object<void*> intensities{};  // length x width z8u, or empty
  // Gives all heights to `put`, row by row, and returns the box. From a file or a recording it does
  // so as often as it is asked to, unless a visitor is given it.
  using Put = std::function<void(std::span<const z16s> heights)>;
  std::function<BoundingBox6(const Put& put)> heights{};
};

// What the summary of a recording tells; nothing where it does not, or is damaged.
struct ReplaySummary {
  std::optional<z64u> frames, chunks;
};

// Takes each message of a recording, with its number: while it is in memory, or as a stream whose
// heights are to be read at once.
struct MessageVisitor {
  std::function<void(z64u number, zObject message)> message;
  std::function<void(z64u number, const SurfaceStream& surface)> surface;
};

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
  // last. Each message that is whole is given to one of the visitor's functions, both or none of
  // which are there.
  void LoadDamaged(zSourcePtr replay, std::vector<ReplayProblem>& problems,
                   const MessageVisitor& visit = {});
  // Loads a stream up to the end of its first frame; besides, only its summary is read. No checksum
  // is verified.
  ReplaySummary LoadFirstFrame(zSourcePtr replay);
  // Loads a whole stream by the heads of its records alone, in a time that hardly depends on its
  // size in bytes: no checksum is verified, and no message looked at before it is asked for.
  void LoadHeads(zSourcePtr replay);
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
  // The same of a uniform surface without intensities that is laid out as WriteData does it, whose
  // heights are read when they are asked for; nothing for another message. While they are read, no
  // message may be.
  std::optional<SurfaceStream> OpenSurface(z64u number) const;
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
  void WriteData(const SurfaceStream& surface);
  // Completes the recording.
  void EndReplay();

 private:
  sdk::replay::ReplayReader& Loaded(const char* function) const;
  sdk::replay::ReplayWriter& Begun(const char* function) const;

  std::unique_ptr<sdk::replay::ReplayReader> reader_;  // null until it is loaded
  std::unique_ptr<sdk::replay::ReplayWriter> writer_;  // null until it is begun, and after its end
};

}  // namespace Plovia
