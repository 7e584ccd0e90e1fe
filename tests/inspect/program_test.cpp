// SPDX-License-Identifier: MIT
// The program trelvane-inspect as an operator runs it.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "inspect/inspect.h"
#include "inspect/picture/picture.h"
#include "support/recordings.h"
#include "support/run_program.h"
#include "support/sur_file.h"

namespace {

using testing::HasSubstr;

// Arguments stand between blanks.
Outcome Look(const std::string& line) {
  std::istringstream words(line);
  return RunProgram(TRELVANE_INSPECT, {std::istream_iterator<std::string>(words), {}});
}

struct InspectProgram : testing::Test {
  InspectProgram() {
    WriteFile("good.sur", SurFile{}.Bytes());
    WriteFile("bad.sur", First(SurFile{}.Bytes(), 515));
    std::filesystem::create_directory("d");
    for (int i = 0; i < 4; ++i) {  // each of another height
      WriteFile(Orv::Format("d/a-Frame-%04d_%s.sur", i / 2, i % 2 == 0 ? "L" : "R"),
                SurFile{.samples = {i, 11, 12, 20, 21, 22}}.Bytes());
    }
  }
  const TempDirectory directory_;
};

TEST_F(InspectProgram, EndsWithAnExitCodeThatTells) {
  const std::tuple<std::string, int, std::string, std::string> rows[] = {
      // output, errors
      {"good.sur bad.sur", 1, "bad.sur\n  kind        Digital Surf surface\n", ""},
      {"--check good.sur d", 0, "good.sur: whole\nd: whole\n", ""},
      {"--check bad.sur good.sur", 1, "bad.sur: at byte 515: 3 x 2 samples", ""},
      {"--json bad.sur good.sur", 1, "\n{\"file\":\"good.sur\"", ""},
      {"--help", 0, "--check", ""},
      {"--version", 0, "trelvane-inspect 1.0.0.4\n", ""},
      {"", 2, "", "FILE"},
      {"--\x1B[31m good.sur", 2, "", "--\\x1b[31m"},
      {"--frame -1 --png x.png good.sur", 2, "", "--frame"},
      {"--frame 0 good.sur", 2, "", "--frame requires --png or --html"},
      {"--source L d", 2, "", "--source requires --png or --html"},
      {"--points 1 --png x.png d", 2, "", "--points requires --html"},
      {"--points 0 --html x.html d", 2, "", "--points"},
      {"--points 100000001 --html x.html d", 2, "", "--points"},
      {"--png x.png good.sur bad.sur", 2, "", "FILE"},
      {"--html x.html --frame 1 good.sur", 1, "", "good.sur: There is no such scan"},
      {"--png x.png --source l d", 1, "", "d: There is no such scan"},
      {"--png x.png bad.sur", 1, "", "bad.sur: 3 x 2 samples"},
      {"--html none/x.html good.sur", 1, "", "Failed to open none/x.html"},
      {"--png ./good.sur good.sur", 1, "", "Failed to write ./good.sur"},
      {"--html d/a-Frame-0001_L.sur d", 1, "", "Failed to write d/a-Frame-0001_L.sur"},
      {"--png x --html ./x good.sur", 1, "", "Two outputs have the name ./x"},
      {"--check --png x.png --html x.html good.sur", 0, "good.sur: whole\n", ""},
  };
  for (const auto& [arguments, exitCode, output, errors] : rows) {
    const Outcome run = Look(arguments);
    EXPECT_EQ(run.exitCode, exitCode) << arguments;
    EXPECT_THAT(run.output, output.empty() ? testing::Matcher<std::string>("") : HasSubstr(output))
        << arguments;
    EXPECT_THAT(run.errors, errors.empty() ? testing::Matcher<std::string>("") : HasSubstr(errors))
        << arguments;
  }
}

TEST_F(InspectProgram, RefusesToDrawIntoAFileWithoutAName) {
  for (const std::string option : {"--png", "--html"}) {
    const Outcome run = RunProgram(TRELVANE_INSPECT, {option, "", "good.sur"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr(option + ": the name of the file is empty"));
  }
}

// The document in a page.
nlohmann::json PageIn(const std::string& name) {
  const std::string text = ReadFile(name);
  const std::string mark = "id=\"document\">";
  const zSize start = text.find(mark) + mark.size();
  return nlohmann::json::parse(text.substr(start, text.find("</", start) - start));
}

TEST_F(InspectProgram, DrawsWhatIsAskedFor) {
  std::map<std::string, zBytes> pictures;
  Progress progress(1, false);
  const auto draw = [&](zSize frame, z32u, const TaggedScan& scan) {
    const std::string place = Orv::Format("%zu %s", frame, scan.source);
    pictures[place] = DrawPicture(scan.scan, Orv::Format("d, frame %zu, %s", frame, scan.source));
  };
  static_cast<void>(InspectFile("d", false, draw, progress));
  const struct {
    const char *options, *scans;  // in the page; the first one in the picture
    zSize points = 1'000'000;
  } rows[] = {
      {"", "0 L,0 R,1 L,1 R,"},
      {"--source R", "0 R,1 R,"},
      {"--frame 1", "1 L,1 R,"},
      {"--frame 0 --source R --points 5", "0 R,", 5},
      {"--points 100000000", "0 L,0 R,1 L,1 R,", 100'000'000},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.options);
    const Outcome run = Look(std::string("--png x.png --html x.html d ") + row.options);
    EXPECT_EQ(std::to_string(run.exitCode) + run.output + run.errors, "0");
    EXPECT_EQ(ToBytes(ReadFile("x.png")), pictures.at(std::string(row.scans, 3)));
    const nlohmann::json page = PageIn("x.html");
    std::string scans;
    zSize points = 0;
    for (const auto& scan : page.at("scans")) {
      scans += scan.at("frame").dump() + " " + scan.at("source").get<std::string>() + ",";
      points += scan.at("width").get<zSize>() * scan.at("length").get<zSize>();
    }
    EXPECT_EQ(scans, row.scans);
    EXPECT_EQ(page.at("name"), "d");
    EXPECT_EQ(page.at("budget"), row.points);
    EXPECT_LE(points, row.points);
    EXPECT_EQ(page.at("facts").at("scans").size(), 4U);
  }
}

TEST_F(InspectProgram, ListsTheFirstThousandScansInAPage) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  for (const zSize frames : {1000U, 1001U}) {
    WriteFile(
        "a.rep",
        WriteRecording(scanner, std::vector<Plovia::ReplayFrame>(frames, {MakeSurface(1, 1, {5})}),
                       false));
    EXPECT_EQ(Look("--html x.html a.rep").exitCode, 0);
    const nlohmann::json facts = PageIn("x.html").at("facts");
    EXPECT_EQ(facts.at("scans").size(), 1000U);
    EXPECT_EQ(facts.at("notes").dump(),
              frames == 1000 ? "[]" : R"(["of 1001 scans, the first 1000 are listed"])");
  }
}

}  // namespace
