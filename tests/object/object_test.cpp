// SPDX-License-Identifier: MIT
#include "sdk/object.h"

#include <gmock/gmock.h>

#include "support/scans.h"

namespace {

using Orv::Format;

TEST(Format, FollowsPrintf) {
  EXPECT_EQ(Format("%d|%5d|%-5d|%05d|%+d|% d", 1, 2, 3, 4, 5, 6), "1|    2|3    |00004|+5| 6");
  EXPECT_EQ(Format("%u %d %zu", ~0U, ~0ULL, sizeof(char)), "4294967295 18446744073709551615 1");
  EXPECT_EQ(Format("%d %lld %hhd", -1, INT64_MIN, 300), "-1 -9223372036854775808 300");
  EXPECT_EQ(Format("%x %X %#x %o %c|%3c", 255, 255, 255, 8, 'A', 66U), "ff FF 0xff 10 A|  B");
  EXPECT_EQ(Format("%f %.2f %g %e", 0.5, 1.005, 1e10, 2.0), "0.500000 1.00 1e+10 2.000000e+00");
  EXPECT_EQ(Format("%s|%6s|%-6s|%.2s", "abc", "abc", std::string("abc"), "abc"),
            "abc|   abc|abc   |ab");
  EXPECT_EQ(Format("%*d|%-*d|%.*f|%*d", 4, 1, 4, 2, 1, 0.25, -3, 7), "   1|2   |0.2|7  ");
  EXPECT_EQ(Format("%.*f|%4096d", -1, 0.5, 7).substr(0, 9), "0.500000|");
}

TEST(Format, PrintsAsItStandsWhatHasNoArgument) {
  for (const char* text : {"%d", "%s", "%2000000000d", "%99999999999999999999d", "%n", "%", "100%",
                           "%5", "%l", "%*d", "%.*f", "%y", "%-", "%.", "a%sb%fc%n"}) {
    EXPECT_EQ(Format(text), text);
  }
  for (const char* text : {"%.-5d", "%lhd", "%hhhd", "%5%", "from 50% - 60%.", "%4097d", "%s"}) {
    EXPECT_EQ(Format(text, 1), text);
  }
  for (const char* text : {"%d", "%f", "%c", "%p", "%*d"}) EXPECT_EQ(Format(text, "text"), text);
  EXPECT_EQ(Format("100%% %n%%y%d", 1), "100% %n%y1");
  EXPECT_EQ(Format("%s %d", 1, "text"), "%s 1");
}

TEST(Exception, TellsItsMessageAndOneLineForTheLog) {
  const Orv::Exception failure(120, "unit", -997, "Unit::work", "File %s\n%s", "a\tb", 5);
  EXPECT_STREQ(failure.what(), "File a\tb\n%s");
  EXPECT_THAT(failure.to_string(0),
              testing::MatchesRegex("[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+Z status -997 in "
                                    "Unit::work \\(unit:120\\): File a\\\\x09b\\\\x0A%s"));
}

TEST(Object, SharesWhatItHolds) {
  Handle first = MakeStream();
  Handle second = first;
  first.Reset();
  EXPECT_FALSE(first);
  EXPECT_EQ(zStream_Write(second.Get(), "x", 1), zOK);
  Handle& same = second;
  second = same;
  second = std::move(same);
  first = std::move(second);
  EXPECT_FALSE(second);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(zMemory_Bytes(first.Get()).size(), 1U);
}

TEST(Object, ResetReportsAReleaseThatFails) {
  if (!zFile_Exists("/dev/full")) GTEST_SKIP() << "no full device";
  Handle file;
  MustBeOk(zFile_Construct(file.Out(), "/dev/full", zFILE_WRITE, DefaultAlloc()));
  MustBeOk(zStream_Write(file.Get(), "x", 1));
  zMemory next = nullptr;
  MustBeOk(zMemory_Construct(&next, DefaultAlloc()));
  EXPECT_THAT(Thrown([&] { file.Reset(next); }),
              testing::StartsWith(std::to_string(zERROR_STREAM) + " Orv::Object<void *>::Reset:"));
  EXPECT_EQ(file.Get(), next);
}

}  // namespace
