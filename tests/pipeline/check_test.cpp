// SPDX-License-Identifier: MIT
// The check of whole recordings: nothing is wrong with sound ones, and several problems are told.
#include <gmock/gmock.h>

#include "support/mcap_file.h"
#include "support/payloads.h"
#include "support/recordings.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> Complaints(const zBytes& file) {
  std::vector<std::string> texts;
  for (const Plovia::ReplayProblem& problem : CheckReplay(file)) {
    texts.push_back(problem.what);
  }
  return texts;
}

TEST(RecordingCheck, FindsEveryChangedByteOfASealedRecording) {
  for (const bool classic : {false, true}) {
    const zBytes sound = WriteRecording(MakeScanner(), {MakeFrame(1), MakeFrame(2)}, classic);
    EXPECT_THAT(Complaints(sound), IsEmpty());
    // Only the chunk of a segmented one has a checksum, not the records before it.
    const std::string text(sound.begin(), sound.end());
    const zSize first = classic ? 0 : text.find("/frame_index") + 2000;
    const zSize end = classic ? sound.size() : first + 1000;
    zBytes changed = sound;
    for (zSize i = first; i < end; ++i) {
      changed[i] ^= 0x04;
      EXPECT_THAT(Complaints(changed), Not(IsEmpty())) << (classic ? "classic " : "chunk ") << i;
      changed[i] = sound[i];
    }
  }
}

TEST(RecordingCheck, GoesOnAfterAProblemButNotForever) {
  using namespace mcap;
  const std::string frame = FrameIndex() + Message(1, payloads::Surface());
  const std::string bad = FrameIndex() + Message(1, std::string(64, '\xFF'));
  const zBytes file = File(Message(77, "") + Chunk(frame, "", 0, 1) + Chunk(bad) +
                           FrameIndex("{}") + Chunk(bad, "lz4") + Chunk(frame, "bz2"));
  EXPECT_THAT(Complaints(file),
              ElementsAre(HasSubstr("unknown channel 77"), HasSubstr("checksum of the chunk"),
                          HasSubstr("no intact FlatBuffer"), HasSubstr("frame index is not"),
                          HasSubstr("no intact FlatBuffer"), HasSubstr("unknown compression")));
  const std::vector<Plovia::ReplayProblem> problems = CheckReplay(file);
  for (zSize i = 0; i < problems.size(); ++i) {
    EXPECT_LT(i == 0 ? 0 : problems[i - 1].offset, problems[i].offset) << i;
    EXPECT_EQ(problems[i].inChunk.has_value(), i == 4) << i;
    EXPECT_FALSE(problems[i].harmless) << i;
  }
  std::string records;
  for (zSize i = 0; i < 2 * Plovia::kMostReplayProblems; ++i) records += Message(77, "");
  EXPECT_EQ(Complaints(File(records)).size(), Plovia::kMostReplayProblems);
}

TEST(RecordingCheck, ComparesIndexesAndSummaryWithTheData) {
  using namespace mcap;
  const std::string metadata = Record(0x0C, Text("note") + TextMap({{"key", "value"}}));
  const std::string chunk = Chunk(FrameIndex() + Message(1, payloads::Surface()));
  const std::string start = Header() + Recording() + Scanner() + Schema() + FrameChannel() +
                            SourceChannel(1, "Top") + metadata;
  const z64u chunkAt = 8 + start.size();
  const z64u metadataAt = chunkAt - metadata.size();
  const auto index = [](z16u channel, z64u time, z64u offset) {
    return Record(0x07, Raw(channel) + Text(Raw(time) + Raw(offset)));
  };
  const auto statistics = [](z64u messages = 2, z16u schemas = 1, z32u channels = 2,
                             z32u attachments = 0, z32u metadatas = 3, z32u chunks = 1,
                             z64u ofSource = 1) {
    return Record(0x0B, Raw(messages) + Raw(schemas) + Raw(channels) + Raw(attachments) +
                            Raw(metadatas) + Raw(chunks) + Raw(z64u{0}) + Raw(z64u{0}) +
                            Text(Raw(z16u{1}) + Raw(ofSource)));
  };
  const z64u chunkSize = chunk.size(), metadataSize = metadata.size();
  const auto chunkIndex = [&](z64u length, const char* compression = "", z64u storedError = 0,
                              z64u sizeError = 0) {
    const z64u size = chunkSize - 9 - 8 - 8 - 8 - 4 - 4 - 8;
    return Record(0x08, Raw(z64u{0}) + Raw(z64u{0}) + Raw(chunkAt) + Raw(length) + Text("") +
                            Raw(z64u{0}) + Text(compression) + Raw(size + storedError) +
                            Raw(size + sizeError));
  };
  const auto metadataIndex = [](z64u offset, z64u length, const char* name) {
    return Record(0x0D, Raw(offset) + Raw(length) + Text(name));
  };
  const auto group = [](z8u opcode, z64u offset, z64u length) {
    return Record(0x0E, Raw(opcode) + Raw(offset) + Raw(length));
  };
  const struct {
    const char* complaint;  // "": none
    std::string behindChunk;
    std::string summary;
  } rows[] = {
      {"", index(0, 5, 0) + index(1, 5, 42), statistics()},
      {"channel 1 at time 5 is said to stand at byte 43", index(1, 5, 43), ""},
      {"channel 1 at time 6", index(1, 6, 42), ""},
      {"channel 0 at time 5 is said to stand at byte 42", index(0, 5, 42), ""},
      // Not with what is left of an earlier chunk.
      {"unknown compression", Chunk(FrameIndex(), "bz2") + index(0, 5, 7), ""},
      {"byte 42 of", Chunk(FrameIndex(), "lz4") + index(0, 5, 0) + index(1, 5, 42), ""},
      {"3 messages, there are 2", "", statistics(3)},
      {"0 schemas, there are 1", "", statistics(2, 0)},
      {"3 channels, there are 2", "", statistics(2, 1, 3)},
      {"1 attachments, there are 0", "", statistics(2, 1, 2, 1)},
      {"2 metadata records, there are 3", "", statistics(2, 1, 2, 0, 2)},
      {"2 chunks, there are 1", "", statistics(2, 1, 2, 0, 3, 2)},
      {"2 messages of a channel, there are 1", "", statistics(2, 1, 2, 0, 3, 1, 2)},
      {"", "", chunkIndex(chunkSize) + metadataIndex(metadataAt, metadataSize, "note")},
      {"a chunk of", "", chunkIndex(chunkSize + 1)},
      {"tells other sizes", "", chunkIndex(chunkSize, "lz4")},
      {"tells other sizes", "", chunkIndex(chunkSize, "", 1)},
      {"tells other sizes", "", chunkIndex(chunkSize, "", 0, 1)},
      {"a metadata record of", "", metadataIndex(metadataAt + 1, metadataSize, "note")},
      {"has another name", "", metadataIndex(metadataAt, metadataSize, "nota")},
      {"", "", group(0x0C, metadataAt, metadataSize)},
      {"type 0x0d are said", "", group(0x0D, metadataAt, metadataSize)},
      {"type 0x0c are said", "", group(0x0C, metadataAt, z64u{1} << 63)},
      {"type 0x0c are said", "", group(0x0C, z64u{1} << 63, 0)},
      {"", Record(0x09, "attached" + Raw(0x68A76288)), statistics(2, 1, 2, 1)},
      {"checksum of the attachment", Record(0x09, "attached" + Raw(1)), ""},
      {"attachment has no checksum", Record(0x09, "abc"), ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows << ": " << row.complaint);
    const zBytes file = Bare(start + chunk + row.behindChunk + DataEnd() + row.summary + Footer());
    const auto problems = CheckReplay(file);
    EXPECT_EQ(problems.size(), *row.complaint == '\0' ? 0U : 1U);
    for (const Plovia::ReplayProblem& problem : problems) {
      EXPECT_THAT(problem.what, HasSubstr(row.complaint));
      EXPECT_EQ(problem.harmless, !problem.what.ends_with("compression \"bz2\""));
    }
  }
}

}  // namespace
