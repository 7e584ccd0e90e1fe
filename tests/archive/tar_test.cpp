// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "support/archives.h"

namespace {

using testing::ElementsAre;

// Members as "name type size content", up to where the walk ends.
std::vector<std::string> List(const zBytes& archive) {
  const zSourcePtr source = SourceOf(archive);
  Handle tar;
  if (zTar_Open(tar.Out(), source, DefaultAlloc()) != zOK) return {"no archive"};
  std::vector<std::string> members;
  zTarMember member;
  while (zTar_Next(tar.Get(), &member) == zOK) {
    std::string content = "unreadable";
    if (member.offset + member.size <= archive.size()) {
      content.resize(member.size);
      source->Read(member.offset, content.data(), content.size());
    }
    members.push_back(Orv::Format("%s %d %u %s", member.name, member.type, member.size, content));
  }
  return members;
}

// An archive of one member whose header has other bytes at `at`, and a checksum to match.
zBytes Changed(zSize at, std::string_view bytes) {
  zBytes archive = MakeArchive({{"a", std::string(600, 'a')}});
  std::ranges::copy(bytes, archive.begin() + static_cast<std::ptrdiff_t>(at));
  std::ranges::fill_n(archive.begin() + 148, 8, ' ');
  int sum = 0;
  for (zSize i = 0; i < 512; ++i) sum += archive[i];
  std::ranges::copy(Orv::Format("%06o", sum), archive.begin() + 148);
  return archive;
}

TEST(Tar, ReadsBackItsOwnMembersAndWritesPlainHeaders) {
  const std::string longName = std::string(150, 'n') + "/x";
  const zBytes archive =
      MakeArchive({{"a.json", "{}"}, {"jobs", "", zTAR_DIRECTORY}, {"empty", ""}, {longName, "l"}});
  EXPECT_THAT(List(archive),
              ElementsAre("a.json 0 2 {}", "jobs/ 1 0 ", "empty 0 0 ", longName + " 0 1 l"));
  // One ustar header: mode, owner, group, size, time, checksum, type, magic.
  const std::string header(archive.begin(), archive.begin() + 512);
  EXPECT_EQ(header.substr(100, 24), std::string("000644 \000000000 \000000000 \0", 24));
  EXPECT_EQ(header.substr(124, 24), "00000000002 00000000000 ");
  EXPECT_EQ(header.substr(156, 1) + header.substr(257, 6), std::string("0ustar\0", 7));
}

TEST(Tar, ReadsOddAndDamagedArchivesAsFarAsTheyGo) {
  const std::string unreadable = "a 0 600 unreadable";
  const zBytes archive = MakeArchive({{"a", std::string(600, 'a')}, {"b", "b"}});
  for (zSize size = 0; size < archive.size(); size += 64) {
    const std::vector<std::string> members = List(First(archive, size));
    EXPECT_LE(members.size(), 2U) << size;
    EXPECT_EQ(std::ranges::count(members, unreadable), size >= 512 && size < 1112) << size;
  }
  const struct {
    const char* what;
    zBytes archive;
    std::string first;
  } rows[] = {
      {"no archive", zBytes(10240, 'x'), "no archive"},
      {"a size beyond the end", Changed(124, "77777777777"), "a 0 8589934591 unreadable"},
      {"a symbolic link", Changed(156, "2"), "a 2 0 "},
      {"a hard link", Changed(156, "1target"), "a 2 "},
      {"a plain file of old programs", Changed(156, std::string_view("\0", 1)), "a 0 600 a"},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(List(row.archive), ElementsAre(testing::StartsWith(row.first))) << row.what;
  }
}

}  // namespace
