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
    zSize first = 0;
    zSize end = sound.size();
    if (!classic) {  // the records before its chunk have no checksum
      first = std::string(sound.begin(), sound.end()).find("/frame_index") + 2000;
      end = first + 1000;
    }
    zBytes changed = sound;
    for (zSize i = first; i < end; ++i) {
      changed[i] ^= 0x04;
      EXPECT_THAT(Complaints(changed), Not(IsEmpty())) << i;
      changed[i] = sound[i];
    }
  }
}

TEST(RecordingCheck, GoesOnAfterAProblem) {
  const std::string frame = mcap::FrameIndex() + mcap::Message(1, payloads::Surface());
  const std::string bad = mcap::FrameIndex() + mcap::Message(1, std::string(64, '\xFF'));
  const zBytes file =
      mcap::File(mcap::Message(77, "") + mcap::Chunk(frame, "", 0, 1) + mcap::Chunk(bad) +
                 mcap::FrameIndex("{}") + mcap::Chunk(bad, "lz4") + mcap::Chunk(frame, "bz2"));
  const std::vector<Plovia::ReplayProblem> problems = CheckReplay(file);
  EXPECT_THAT(Complaints(file),
              ElementsAre(HasSubstr("unknown channel 77"), HasSubstr("checksum of the chunk"),
                          HasSubstr("no intact FlatBuffer"), HasSubstr("frame index is not"),
                          HasSubstr("no intact FlatBuffer"), HasSubstr("unknown compression")));
  for (zSize i = 0; i + 1 < problems.size(); ++i) {
    EXPECT_LT(problems[i].offset, problems[i + 1].offset);
    EXPECT_EQ(problems[i].inChunk.has_value(), i == 4);
  }
}

// A message index is compared with the chunk before it, not with what is left of an earlier one.
TEST(RecordingCheck, SaysNothingOfTheMessagesOfAnUnreadableChunk) {
  using mcap::Raw;
  const std::string records = mcap::FrameIndex();
  const auto index = [](z64u offset) {
    return mcap::Record(0x07, Raw(z16u{0}) + Raw(z32u{16}) + Raw(z64u{5}) + Raw(offset));
  };
  EXPECT_THAT(Complaints(mcap::File(mcap::Chunk(records) + index(0) + mcap::Chunk(records, "bz2") +
                                    index(7))),
              ElementsAre(HasSubstr("unknown compression")));
  EXPECT_THAT(Complaints(mcap::File(mcap::Chunk(records, "lz4") + index(0) + index(7))),
              ElementsAre(HasSubstr("at byte 7 of the chunk before")));
}

TEST(RecordingCheck, GivesUpAfterManyProblems) {
  std::string records;
  for (zSize i = 0; i < 2 * Plovia::kMostReplayProblems; ++i) records += mcap::Message(77, "");
  EXPECT_EQ(Complaints(mcap::File(records)).size(), Plovia::kMostReplayProblems);
}

TEST(RecordingCheck, ComparesIndexesAndSummaryWithTheData) {
  using mcap::Raw;
  const std::string metadata =
      mcap::Record(0x0C, mcap::Text("note") + mcap::TextMap({{"key", "value"}}));
  const std::string chunk = mcap::Chunk(mcap::FrameIndex() + mcap::Message(1, payloads::Surface()));
  const std::string start = mcap::Header() + mcap::Recording() + mcap::Scanner() + mcap::Schema() +
                            mcap::FrameChannel() + mcap::SourceChannel(1, "Top") + metadata;
  const z64u chunkAt = 8 + start.size();
  const z64u metadataAt = chunkAt - metadata.size();
  const auto index = [](z16u channel, z64u time, z64u offset) {
    return mcap::Record(0x07, Raw(channel) + mcap::Text(Raw(time) + Raw(offset)));
  };
  const auto statistics = [](z64u messages, z32u attachments, z32u metadataCount, z32u chunks,
                             z64u ofSource) {
    return mcap::Record(0x0B, Raw(messages) + Raw(z16u{1}) + Raw(z32u{2}) + Raw(attachments) +
                                  Raw(metadataCount) + Raw(chunks) + Raw(z64u{0}) + Raw(z64u{0}) +
                                  mcap::Text(Raw(z16u{1}) + Raw(ofSource)));
  };
  const auto chunkIndex = [&](z64u offset, z64u length, z64u sizeError) {
    const z64u size = chunk.size() - 9 - 8 - 8 - 8 - 4 - 4 - 8;
    return mcap::Record(0x08, Raw(z64u{0}) + Raw(z64u{0}) + Raw(offset) + Raw(length) +
                                  mcap::Text("") + Raw(z64u{0}) + mcap::Text("") + Raw(size) +
                                  Raw(size + sizeError));
  };
  const auto metadataIndex = [](z64u offset, z64u length, const char* name) {
    return mcap::Record(0x0D, Raw(offset) + Raw(length) + mcap::Text(name));
  };
  const auto group = [](z8u opcode, z64u offset, z64u length) {
    return mcap::Record(0x0E, Raw(opcode) + Raw(offset) + Raw(length));
  };
  const auto attachment = [](z32u crc) { return mcap::Record(0x09, "attached" + Raw(crc)); };
  const z64u chunkSize = chunk.size();
  const z64u metadataSize = metadata.size();
  const struct {
    const char* complaint;  // "": none
    std::string behindChunk;
    std::string summary;
  } rows[] = {
      {"", index(0, 5, 0) + index(1, 5, 42), statistics(2, 0, 3, 1, 1)},
      {"channel 1 at time 5 is said to stand at byte 43", index(1, 5, 43), ""},
      {"channel 1 at time 6", index(1, 6, 42), ""},
      {"channel 0 at time 5 is said to stand at byte 42", index(0, 5, 42), ""},
      {"3 messages, there are 2", "", statistics(3, 0, 3, 1, 1)},
      {"1 attachments, there are 0", "", statistics(2, 1, 3, 1, 1)},
      {"2 metadata records, there are 3", "", statistics(2, 0, 2, 1, 1)},
      {"2 chunks, there are 1", "", statistics(2, 0, 3, 2, 1)},
      {"2 messages of a channel, there are 1", "", statistics(2, 0, 3, 1, 2)},
      {"", "", chunkIndex(chunkAt, chunkSize, 0) + metadataIndex(metadataAt, metadataSize, "note")},
      {"a chunk of", "", chunkIndex(chunkAt, chunkSize + 1, 0)},
      {"a chunk of", "", chunkIndex(metadataAt, metadataSize, 0)},
      {"tells other sizes", "", chunkIndex(chunkAt, chunkSize, 1)},
      {"a metadata record of", "", metadataIndex(metadataAt + 1, metadataSize, "note")},
      {"has another name", "", metadataIndex(metadataAt, metadataSize, "nota")},
      {"", "", group(0x0C, metadataAt, metadataSize)},
      {"type 0x0d are said", "", group(0x0D, metadataAt, metadataSize)},
      {"type 0x0c are said", "", group(0x0C, metadataAt, z64u{1} << 63)},
      {"type 0x0c are said", "", group(0x0C, z64u{1} << 63, 0)},
      {"", attachment(0x68A76288), ""},
      {"checksum of the attachment", attachment(1), ""},
      {"attachment has no checksum", mcap::Record(0x09, "abc"), ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.complaint);
    const auto complaints = Complaints(mcap::Bare(start + chunk + row.behindChunk +
                                                  mcap::DataEnd() + row.summary + mcap::Footer()));
    if (std::string_view(row.complaint).empty()) {
      EXPECT_THAT(complaints, IsEmpty());
    } else {
      EXPECT_THAT(complaints, ElementsAre(HasSubstr(row.complaint)));
    }
  }
}

}  // namespace
