// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <cmath>
#include <stdexcept>

#include "commandargsoperator/commandargsoperator.h"
#include "numbers.h"

namespace {

TEST(CommandLine, IsCutIntoOptionsAndValues) {
  const struct {
    const char* line;
    ParsedArgs args;
  } rows[] = {
      {"", {}},
      {"no options -x 5 ", {}},
      {"-i a.sur -o b.pcd ", {{"-i", "a.sur"}, {"-o", "b.pcd"}}},
      {"-i my file.sur -a ", {{"-i", "my file.sur"}, {"-a", ""}}},
      {"-i \" a b \" -o \"\" ", {{"-i", "a b"}, {"-o", ""}}},
      {"-r (1, 2, 3) -o out.pcd", {{"-r", "(1, 2, 3)"}, {"-o", "out.pcd"}}},
      {"-i a -x 5 -a stray text", {{"-i", "a -x 5"}, {"-a", "stray text"}}},
      {"-i a -i b -o c", {{"-i", "a -i b"}, {"-o", "c"}}},
      {"--height 5", {{"--height", "5"}}},
      {"-h 5 --height 6", {{"-h", "5"}, {"--height", "6"}}},
      {"--height 6 -h 5", {{"--height", "6 -h 5"}}},  // "-h" occurs first inside "--height"
      {"--help -h 5", {{"--help", "-h 5"}}},
      {"-o out-i -i in.sur", {{"-o", "out-i -i in.sur"}}},
      {"-o out-i.sur -i in.sur", {{"-o", "out-i.sur -i in.sur"}}},
      {"-i\ta -o b", {{"-o", "b"}}},  // only a blank separates words
      {"-i", {{"-i", ""}}},
      {"--input x --output y", {{"--input", "x"}, {"--output", "y"}}},
  };
  const CommandArgsOperator commandArgs;
  for (const auto& row : rows) {
    EXPECT_EQ(parseCommandLine(row.line, commandArgs.getKnownOptions()), row.args) << row.line;
  }
}

template <class Parse>
std::string Failure(Parse parse) {
  try {
    parse();
  } catch (const std::logic_error& failure) {
    return failure.what();
  }
  return "none";
}

TEST(Numbers, AreReadLikeTheStandardConversions) {
  EXPECT_EQ(parseInteger(" \t+12x"), 12);
  EXPECT_EQ(parseInteger("-2147483648"), INT32_MIN);
  EXPECT_EQ(parseReal(" +.5e1 and more"), 5);
  EXPECT_EQ(parseReal("5."), 5);
  EXPECT_EQ(parseReal("0x10p1"), 32);
  EXPECT_EQ(parseReal("-Infinity"), -INFINITY);
  EXPECT_TRUE(std::isnan(parseReal("nan")));
  for (const char* text : {"", " ", "abc", "+", "--1", ".5"}) {
    EXPECT_EQ(Failure([&] { parseInteger(text); }), "invalid stoi argument") << text;
  }
  for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
    EXPECT_EQ(Failure([&] { parseInteger(text); }), "stoi argument out of range") << text;
  }
  for (const char* text : {"", "(1", ".", "+-1", "e5"}) {
    EXPECT_EQ(Failure([&] { parseReal(text); }), "invalid stod argument") << text;
  }
  for (const char* text : {"1e999", "-1e999", "1e-400"}) {
    EXPECT_EQ(Failure([&] { parseReal(text); }), "stod argument out of range") << text;
  }
}

}  // namespace
