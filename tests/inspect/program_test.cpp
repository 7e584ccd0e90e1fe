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

// Arguments stand between blanks.
Outcome Look(const std::string& line) {
  std::istringstream words(line);
  return RunProgram(TRELVANE_INSPECT, {std::istream_iterator<std::string>(words), {}});
}

struct InspectProgram : testing::Test {
  InspectProgram() {
    std::filesystem::create_directory("d");
    for (int i = 0; i < 4; ++i) {  // each of another height
      WriteFile(Orv::Format("d/a-Frame-%04d_%s.sur", i / 2, i % 2 == 0 ? "L" : "R"),
                SurFile{.samples = {i, 11, 12, 20, 21, 22}}.Bytes());
    }
  }
  const TempDirectory directory_;
};

// The document in a page.
nlohmann::json PageIn(const std::string& name) {
  const std::string text = ReadFile(name);
  const std::string mark = "id=\"document\">";
  const zSize start = text.find(mark) + mark.size();
  return nlohmann::json::parse(text.substr(start, text.find("</", start) - start));
}

TEST_F(InspectProgram, DrawsWhatIsAskedFor) {
  std::map<std::string, Scan> scans;
  std::map<std::string, SharedRange> ranges;  // of the frames of each source
  Progress progress(1, false);
  const auto take = [&](zSize frame, z32u, const TaggedScan& scan) {
    scans[Orv::Format("%zu %s", frame, scan.source)] = scan.scan;
    ranges.try_emplace(scan.source, ColourChoice{})
        .first->second.Add(MeasureHeights(HeightsOf(scan.scan), {1, 99}));
  };
  static_cast<void>(InspectFile("d", Depth::reading,
                                {[](zSize, const std::string&) { return true; }, take}, progress));
  const struct {
    const char *options, *scans;  // in the page; the first one in the picture
    zSize points = 1'000'000;
  } rows[] = {
      {"", "0 L,0 R,1 L,1 R,"},
      {"--source R", "0 R,1 R,"},
      {"--frame 1", "1 L,1 R,"},
      {"--frame 1:7", "1 L,1 R,"},
      {"--frame 0 --source R --points 5", "0 R,", 5},
      {"--points 100000000", "0 L,0 R,1 L,1 R,", 100'000'000},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.options);
    const Outcome run = Look(std::string("--png x.png --html x.html d ") + row.options);
    EXPECT_EQ(std::to_string(run.exitCode) + run.output + run.errors, "0");
    const std::string first(row.scans, 3);
    const std::string source = first.substr(2);
    const SharedRange& range = ranges.at(source);
    const std::string title = "d, frame " + first.substr(0, 1) + ", " + source;
    const Scan& scan = scans.at(first);
    EXPECT_TRUE(ToBytes(ReadFile("x.png")) ==
                DrawPicture(scan, title, {range.All(), range.Colours(), scan.scale.z}));
    const nlohmann::json page = PageIn("x.html");
    std::string shown;
    zSize points = 0;
    for (const auto& entry : page.at("scans")) {
      shown += entry.at("frame").dump() + " " + entry.at("source").get<std::string>() + ",";
      points += entry.at("width").get<zSize>() * entry.at("length").get<zSize>();
    }
    EXPECT_EQ(shown, row.scans);
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
    WriteFile("a.rep",
              WriteRecording(scanner, std::vector<Frame>(frames, {MakeSurface(1, 1, {5})}), false));
    EXPECT_EQ(Look("--html x.html a.rep").exitCode, 0);
    const nlohmann::json facts = PageIn("x.html").at("facts");
    EXPECT_EQ(facts.at("scans").size(), 1000U);
    EXPECT_EQ(facts.at("notes").dump(),
              frames == 1000 ? "[]" : R"(["of 1001 scans, the first 1000 are listed"])");
  }
}

}  // namespace
