// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "commandargsoperator/commandargsoperator.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"

namespace {

// Where and how `process` gives up.
std::string Failure(const ParsedArgs& args) {
  try {
    CommandArgsOperator().process(args);
  } catch (const Orv::Exception& failure) {
    return failure.Function() + " " + failure.File() + ":" + std::to_string(failure.Line()) + " " +
           std::to_string(failure.Status());
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return {};
}

// Nothing is imported from a name that does not exist, so that what fails after it tells the order
// of the steps.
TEST(Driver, NamesTheSourceOfEachFailure) {
  const TempDirectory directory;
  WriteFile("a.sur", SurFile{}.Bytes());
  std::filesystem::create_directories("d");
  WriteFile("d/a-Frame-0000_T.sur", SurFile{}.Bytes());
  const auto own = [](int line, int status) {
    return "CommandArgsOperator::process commandargsoperator:" + std::to_string(line) + " " +
           std::to_string(status);
  };
  const auto converter = [](const std::string& operation, int line) {
    return "SurfaceFileConverter::" + operation + " surfacefileconverter:" + std::to_string(line) +
           " -988";
  };
  const struct {
    ParsedArgs args;
    std::string failure;
  } rows[] = {
      {{{"-o", "b.rep"}, {"-w", "0"}}, own(274, -990)},
      {{{"-i", ""}, {"--input", "a.sur"}}, own(236, -997)},  // the short form goes first
      {{{"-i", "none"}}, converter("isRecordingData", 479)},
      {{{"-i", "none"}, {"-f", "x"}, {"-w", "0"}}, converter("isRecordingData", 479)},
      {{{"-i", "a.sur"}, {"-f", "x"}, {"-w", "0"}}, own(278, -997)},
      {{{"-i", "none"}, {"--width", "0"}, {"-h", "0"}}, own(294, -997)},
      {{{"-i", "none"}, {"-w", "1"}, {"-h", "0"}}, converter("setPcdWidth", 434)},
      {{{"-i", "none"}, {"--height", "-1"}, {"-s", "2"}}, own(301, -997)},
      {{{"-i", "none"}, {"-h", "1"}, {"-s", "2"}}, converter("setPcdHeight", 442)},
      {{{"-i", "none"}, {"--swap", "-1"}, {"-r", ""}}, own(308, -997)},
      {{{"-i", "none"}, {"-s", "1"}, {"-r", ""}}, converter("setPcdFlipXZEnabled", 450)},
      {{{"-i", "none"}, {"-r", ""}, {"-z", "0"}}, own(316, -997)},
      {{{"-i", "none"}, {"-r", "1,2,3"}}, own(316, -997)},
      {{{"-i", "none"}, {"--remove", "("}, {"-z", "0"}}, own(319, -997)},
      {{{"-i", "none"}, {"-r", "(1,2,3,)"}}, converter("setInvalidPoint", 457)},
      {{{"-i", "none"}, {"-r", "1,2,3)"}}, "invalid stod argument"},
      {{{"-i", "none"}, {"--zoom", "-0"}}, own(331, -997)},
      {{{"-i", "none"}, {"-z", "nan"}}, converter("setPcdZoom", 468)},
      {{{"-i", "d"}, {"-a", ""}}, own(358, -997)},
  };
  testing::internal::CaptureStdout();
  for (const auto& row : rows) EXPECT_EQ(Failure(row.args), row.failure);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "[INFO] Successfully imported 'a.sur'.\n"
            "[INFO] Successfully imported all the files in the directory (d).\n.\n");
}

}  // namespace
