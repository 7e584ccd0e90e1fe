// SPDX-License-Identifier: MIT
// The settings of a job as the rows Info and DeviceInfo of a CSV file show them.
#include <gmock/gmock.h>

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
Member Changed(const char* scanner, const char* sensor = "{}") {
  json config = MakeScannerConfig();
  json& entry = config["orv:scanner"]["scanner-0"];
  entry["parameters"].merge_patch(json::parse(scanner));
  entry["orv:sensor"][0].merge_patch(json::parse(sensor));
  return MakeJob(config.dump());
}
Member ChangedSensor(const char* sensor) { return Changed("{}", sensor); }

TEST(JobConfig, KnowsEveryPlaceAndFormOfASetting) {
  const struct {
    Member job;
    std::string from, to;  // in the rows
  } rows[] = {
      // "trigger" goes first, like all that does not stand in a group of "...Settings".
      {Changed(R"({"triggerSettings": 0, "scanModeSettings": {"scanMode": 7}})",
               R"({"parameters": {"exposureSettings": 0, "activeAreaSettings": 0}})"),
       "", ""},
      {Changed(R"({"trigger": null, "triggerSettings": {"source": true, "frameRate": 1.000025,
           "delay": 1e300, "schedulingUnits": -1}, "scanMode": null,
           "scanModeSettings": {"scanMode": 7}})"),
       "250.5,4,2.25,3", "1.00003,4294967295,inf,7"},  // numbers of single precision
      {Changed(R"({"trigger": {"source": 2.9, "frameRate": true, "delay": -0.5}})"),
       "1,250.5,4,2.25", "2,1,4,-0.5"},
      {Changed(R"({"trigger": {"source": 4294967295.5, "schedulingUnits": -0.9}})"), "1,250.5,4",
       "4294967295,250.5,0"},
      {Changed(R"({"trigger": {"source": 4294967296.0, "schedulingUnits": -1.0}})"), "1,250.5,4",
       "0,250.5,0"},
      {Changed(R"({"trigger": {"schedulingUnits": null}})"), "2,1,1,250.5,4",
       "Fail to find the field \"schedulingUnits\" ([json.exception.type_error.302] type must be "
       "number, but is null) \n2,1,1,250.5,0"},
      {ChangedSensor(R"({"parameters": {"exposureMode": null, "multipleExposures": null,
           "exposureSettings": {"exposureMode": 1, "multipleExposures": [1, 2, 3, 4, 5, 6, 7]}}})"),
       "2,2,10,20.5,-,-,-", "1,7,1,2,3,4,5"},
      {ChangedSensor(R"({"parameters": {"multipleExposures": 8.5}})"), "2,10,20.5", "1,8.5,-"},
      {ChangedSensor(R"({"parameters": {"multipleExposures": {"b": 2, "a": 1}}})"), "2,10,20.5",
       "2,1,2"},
      {ChangedSensor(R"({"parameters": {"multipleExposures": null, "exposureSettings": {}}})"),
       "2,10,20.5", "0,-,-"},
      {ChangedSensor(R"({"parameters": {"activeArea": null, "activeAreaSettings": {"activeArea":
           {"x": 9, "y": 8, "z": true, "width": 1, "length": 2, "height": 3, "transformMatrix":
           [0, 0, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, "not", "read", {}, null]}}}})"),
       "-1,-2,-3,4,5,6,11,12,13,0.817645,-1.14794,-0.500655", "9,8,1,1,2,3,1,2,3,0,1.5708,0"},
  };
  for (const auto& row : rows) {
    std::string expected = kRows;
    EXPECT_EQ(Rows(row.job), expected.replace(expected.find(row.from), row.from.size(), row.to));
  }
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
  const std::string matrix =
      "0 SurfaceFileConverter::parseCSVDeviceInfoFields: The transformMatrix is not right";
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
      {Changed(R"({"trigger": 1})"), noMember},
      {Changed(R"({"trigger": {"delay": "1"}})"), "type must be number, but is string"},
      {Changed(R"({"scanMode": null})"), "type must be number, but is null"},
      {ChangedSensor(R"({"parameters": {"activeArea": {"transformMatrix": [1]}}})"), matrix},
      {ChangedSensor(R"({"parameters": {"activeArea": {"transformMatrix":
           [0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]}}})"),
       matrix},
      {Large(99, "["), "-997 GetScannerConfig: The scanner configuration is nested too deeply"},
      {Large(98, "[", std::string(98, ']') + "]}"), "operator[]"},
      {Large(1 << 16, "1,"), tooLarge},
      {Large(25'000, "{\"\":1},"), tooLarge},  // objects and keys count
      {Large(1, "\"" + std::string(1 << 20, 'x')), tooLarge},
      {Large(65'000, "1,", "1]}"), noMember},
  };
  for (zSize i = 0; i < std::size(rows); ++i) {
    EXPECT_THAT(Rows(rows[i].job), HasSubstr(rows[i].error)) << "row " << i;
  }
}

}  // namespace
