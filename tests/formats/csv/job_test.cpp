// SPDX-License-Identifier: MIT
// The settings of a job as the rows Info and DeviceInfo of a CSV file show them.
#include <gmock/gmock.h>

#include <regex>
#include <sstream>

#include "support/csv_export.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

const std::string kRows =
    "2,1,1,250.5,4,2.25,3,0.1,0.2,1e-09,100,0\r\n"
    "S1,R4,6.1,2,2,10,20.5,-,-,-,-,-,-1,-2,-3,4,5,6,11,12,13,0.817645,-1.14794,-0.500655\r\n";

// What an export with this job tells, then the two rows; or the error.
std::string Rows(const Member& job) {
  const TempDirectory directory;
  std::string told = ExportCsv(job, {{"Top", "Top", 14, 0, 0}}, {{MakeSurfaceWithIntensity(1)}});
  const std::size_t names = told.rfind("out.csv ");
  if (names == std::string::npos) return told;
  told.erase(names);
  std::ifstream lines("out.csv");
  std::string line;
  for (int number = 1; number <= 8 && std::getline(lines, line); ++number) {
    if (number == 3 || number == 8) told += line + "\n";
  }
  return told;
}

// The configuration changed by a merge patch (null removes a key) of the scanner's parameters and
// of the sensor.
Member Changed(const std::string& scanner, const std::string& sensor) {
  json config = MakeScannerConfig();
  json& entry = config["orv:scanner"]["scanner-0"];
  entry["parameters"].merge_patch(json::parse(scanner));
  entry["orv:sensor"][0].merge_patch(json::parse(sensor));
  return MakeJob(config.dump());
}

// Each line of a file in the folder of data: changes of the scanner's parameters and of the sensor,
// and what comes of them. "trigger" goes first, like all that does not stand in a group of
// "...Settings"; some numbers have single precision.
TEST(JobConfig, KnowsEveryPlaceAndFormOfASetting) {
  std::istringstream examples(ReadFile(TEST_DATA_DIR "/job_settings.txt"));
  int count = 0;
  for (std::string line; std::getline(examples, line); ++count) {
    const std::size_t sensor = line.find(" ; ") + 3, end = line.find(" => ");
    const std::string told =
        Rows(Changed(line.substr(0, sensor - 3), line.substr(sensor, end - sensor)));
    EXPECT_EQ(std::regex_replace(told, std::regex("\r?\n"), " / "), line.substr(end + 4)) << line;
  }
  EXPECT_EQ(count, 17);
}

TEST(JobConfig, TakesTheFirstFamilyAndTheFirstScannerAndSensor) {
  json config = MakeScannerConfig();
  json& scanner = config["orv:scanner"]["scanner-0"];
  std::vector<Member> members;
  for (const std::string family : {"vantel", "BrenlowConfocalLineProfiler", "BrenlowFringeSnapshot",
                                   "BrenlowLaserLineProfiler", "r7xxx", "r4xxx", "r1xxx"}) {
    scanner["orv:sensor"][0]["serialNumber"] = family;
    members.push_back({"scan/" + family + "/config.json", config.dump()});
    EXPECT_THAT(Rows(MakeJob(members)), HasSubstr("\n" + family + ","));
  }
  scanner["orv:sensor"] = {MakeScannerConfig()["orv:scanner"]["scanner-0"]["orv:sensor"][0], 0};
  const json list = {{"orv:scanner", json::array({scanner, 0})}};
  config["orv:scanner"]["scanner-1"] = 0;
  for (const json& several : {list, config}) {
    EXPECT_EQ(Rows(MakeJob(several.dump())), "2,2" + kRows.substr(3));
  }
}

// The beginning of a document, and a text repeated in its list of scanners.
Member Large(int count, const std::string& text, const std::string& end = "") {
  std::string many = R"({"orv:scanner": [)";
  for (int i = 0; i < count; ++i) many += text;
  return MakeJob(many + end);
}

TEST(JobConfig, SaysWhatIsMissingWrongOrTooLarge) {
  const std::string info = " SurfaceFileConverter::parseCSVInfoFields: ";
  const std::string noMember = "operator[] with a string argument with number";
  const std::string tooLarge = "-997 GetScannerConfig: The scanner configuration is too large";
  const struct {
    Member job;
    std::string error;
  } rows[] = {
      {{"jobs/live/other", "x"}, "-999" + info + "Fail to find the job buffer"},
      {{"jobs/live/_live.ovjob", "no archive"},
       std::to_string(zERROR_FORMAT) + " GetResourceData: Failed to construct zTar"},
      {MakeJob({{"scan/x/config.json", "{}"}}), "0" + info + "Failed to find any scanner"},
      {MakeJob(R"({"orv:scanner": [null]})"), "0" + info + "Failed to find any sensor"},
      {MakeJob(R"({"orv:scanner": [{"orv:sensor": 1, "parameters": []}]})"),
       "-997" + info + "Failed to find the trigger parameter group of R1"},
      {MakeJob("{"), "parse error"},
      {Large(99, "["), "-997 GetScannerConfig: The scanner configuration is nested too deeply"},
      {Large(98, "[", std::string(98, ']') + "]}"), "operator[]"},
      {Large(65'534, "1,"), tooLarge},
      {Large(25'000, "{\"\":1},"), tooLarge},  // objects and keys count
      {Large(1, "\"" + std::string(1 << 20, 'x')), tooLarge},
      {Large(65'532, "1,", "1]}"), noMember},
  };
  for (zSize i = 0; i < std::size(rows); ++i) {
    EXPECT_THAT(Rows(rows[i].job), HasSubstr(rows[i].error)) << "row " << i;
  }
}

}  // namespace
