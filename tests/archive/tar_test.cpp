// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "support/archives.h"

namespace {

// Members as "name type size content", up to where the walk ends.
std::vector<std::string> List(const zBytes& archive, zSize capacity = 512) {
  const Handle stream = MakeStream();
  MustBeOk(zMemory_Attach(stream.Get(), archive.data(), 0, archive.size(), archive.size()));
  Handle tar;
  if (zTar_Construct(tar.Out(), stream.Get(), zTAR_READ, DefaultAlloc()) != zOK)
    return {"no archive"};
  std::vector<std::string> members;
  std::string name(capacity, '\0');
  z32s type = 0;
  z64u size = 0;
  while (zTar_BeginRead(tar.Get(), name.data(), name.size(), &type, &size) == zOK) {
    std::string content(std::min<z64u>(size, 100000), '\0');
    const zStatus status = zStream_Read(tar.Get(), content.data(), content.size());
    members.push_back(std::string(name.c_str()) + " " + std::to_string(type) + " " +
                      std::to_string(size) + " " + (status == zOK ? content : "unreadable"));
  }
  return members;
}

TEST(Tar, ReadsBackItsOwnMembersAndWritesTheSameBytes) {
  const std::vector<Member> files = {{"a.json", "{}"},
                                     {"jobs", "", zTAR_DIRECTORY},
                                     {"empty", ""},
                                     {std::string(150, 'n') + "/x", "long name"}};
  const zBytes archive = MakeArchive(files);
  EXPECT_EQ(MakeArchive(files), archive);
  EXPECT_THAT(List(archive), testing::ElementsAre("a.json 0 2 {}", "jobs/ 1 0 ", "empty 0 0 ",
                                                  std::string(150, 'n') + "/x 0 9 long name"));
  EXPECT_THAT(List(archive, 4), testing::Contains("a.j 2 2 {}"));  // cut names are no files
  // One ustar header: mode, owner, group, size, time, type, magic.
  const std::string header(archive.begin(), archive.begin() + 512);
  EXPECT_EQ(header.substr(100, 8), std::string("000644 \0", 8));
  EXPECT_STREQ(header.substr(108, 7).c_str(), "000000 ");
  EXPECT_EQ(header.substr(124, 24), std::string("00000000002 00000000000 "));
  EXPECT_EQ(header[156], '0');
  EXPECT_EQ(header.substr(257, 8), std::string("ustar\0", 6) + "00");
}

TEST(Tar, EndsWhereAnArchiveIsDamaged) {
  const zBytes archive = MakeArchive({{"a", std::string(600, 'a')}, {"b", "b"}});
  for (zSize size = 0; size < archive.size(); size += 64) {
    EXPECT_LE(List(First(archive, size)).size(), 2U) << size;
  }
  zBytes absurd = archive;
  std::ranges::copy(std::string_view("77777777777"), absurd.begin() + 124);
  EXPECT_THAT(List(absurd), testing::ElementsAre("no archive"));  // its checksum is wrong
  EXPECT_THAT(List(zBytes(10240, 'x')), testing::Not(testing::Contains(testing::HasSubstr(" 0 "))));
}

TEST(Tar, RefusesWrongUse) {
  Handle tar;
  const Handle stream = MakeStream();
  EXPECT_EQ(zTar_Construct(tar.Out(), nullptr, zTAR_READ, DefaultAlloc()), zERROR_PARAMETER);
  EXPECT_EQ(zTar_Construct(tar.Out(), stream.Get(), zTAR_READ, DefaultAlloc()), zERROR_PARAMETER);
  EXPECT_EQ(zTar_Construct(tar.Out(), stream.Get(), 3, DefaultAlloc()), zERROR_PARAMETER);
  MustBeOk(zTar_Construct(tar.Out(), stream.Get(), zTAR_WRITE, DefaultAlloc()));
  EXPECT_EQ(zTar_BeginWrite(tar.Get(), "d", zTAR_DIRECTORY, 1), zERROR_PARAMETER);
  EXPECT_EQ(zTar_WriteFile(tar.Get(), "short", MakeStream().Get(), 1), zERROR_STREAM);
  EXPECT_EQ(zStream_Write(tar.Get(), "xy", 2), zERROR_PARAMETER);  // more than was announced
  EXPECT_EQ(tar.Release(), zERROR_STREAM);                         // "short" is not whole
}

}  // namespace
