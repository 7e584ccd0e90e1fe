// SPDX-License-Identifier: MIT
// The settings of a job as the rows Info and DeviceInfo of a CSV file show them.
#include <gmock/gmock.h>

#include "support/csv_export.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kRows =
    "2,1,1,250.5,4,2.25,3,0.1,0.2,1e-09,100,0\n"
    "S1,R4,6.1,2,2,10,20.5,-,-,-,-,-,-1,-2,-3,4,5,6,11,12,13,0.817645,-1.14794,-0.500655\n";

// The two rows of an export with this job, or the error.
std::string Rows(const Member& job, std::string* warning = nullptr) {
  const TempDirectory directory;
  const std::string told = ExportCsv(job, {{"Top", "Top", 14, 0, 0}},
                                     {{MakeSurfaceWithIntensity(1)}}, false, false, warning);
  if (told != "out.csv ") {
    EXPECT_EQ(directory.Files(), std::set<std::string>{"in.ovrec"});
    return told;
  }
  const std::string text = ReadFile("out.csv");
  std::string rows;
  for (std::size_t end = 0; (end = text.find("\r\nEnd", end + 1)) < text.find("RecordingFilter");) {
    const std::size_t start = text.rfind('\n', end) + 1;
    rows += text.substr(start, end - start) + "\n";
  }
  return rows;
}

std::string RowsOf(const json& config, std::string* warning = nullptr) {
  return Rows(MakeJob(config.dump()), warning);
}

// The configuration changed by a merge patch (null removes a key) of the scanner's parameters and
// of the sensor's.
json Patched(const char* scanner, const char* sensor) {
  json config = MakeScannerConfig();
  json& entry = config["orv:scanner"]["scanner-0"];
  entry["parameters"].merge_patch(json::parse(scanner));
  entry["orv:sensor"][0].merge_patch(json::parse(sensor));
  return config;
}

TEST(JobConfig, KnowsEveryPlaceAndFormOfASetting) {
  const struct {
    const char* scanner;
    const char* sensor;
    std::string from, to;  // in the rows
  } cases[] = {
      {R"({"triggerSettings": 0})", "{}", "", ""},  // "trigger" goes first
      {R"({"trigger": null, "triggerSettings": {"source": true, "frameRate": 1.000025,
           "delay": 1e300, "schedulingUnits": -1}})",
       "{}", "250.5,4,2.25", "1.00003,4294967295,inf"},  // numbers of single precision
      {R"({"trigger": {"source": 2.9, "frameRate": true, "delay": -0.5}})", "{}", "1,250.5,4,2.25",
       "2,1,4,-0.5"},
      {R"({"trigger": {"source": 4294967295.5, "schedulingUnits": -0.9}})", "{}", "1,250.5,4",
       "4294967295,250.5,0"},
      {R"({"trigger": {"source": 4294967296.0, "schedulingUnits": -1.0}})", "{}", "1,250.5,4",
       "0,250.5,0"},
      {R"({"trigger": {"source": 1e300}})", "{}", "2,1,1,", "2,1,0,"},
      {R"({"scanMode": null, "scanModeSettings": {"scanMode": 7}})", "{}", "2.25,3", "2.25,7"},
      {R"({"scanModeSettings": {"scanMode": 7}})", "{}", "", ""},
      {"{}", R"({"parameters": {"exposureSettings": 0, "activeAreaSettings": 0}})", "", ""},
      {"{}", R"({"parameters": {"exposureMode": null, "multipleExposures": null, "exposureSettings":
           {"exposureMode": 1, "multipleExposures": [1, 2, 3, 4, 5, 6, 7]}}})",
       "2,2,10,20.5,-,-,-", "1,7,1,2,3,4,5"},
      {"{}", R"({"parameters": {"multipleExposures": 8.5}})", "2,10,20.5", "1,8.5,-"},
      {"{}", R"({"parameters": {"multipleExposures": {"b": 2, "a": 1}}})", "2,10,20.5", "2,1,2"},
      {"{}", R"({"parameters": {"multipleExposures": null, "exposureSettings": {}}})", "2,10,20.5",
       "0,-,-"},
      {"{}", R"({"parameters": {"activeArea": {"z": true}}})", "-1,-2,-3", "-1,-2,1"},
      {"{}", R"({"parameters": {"activeArea": {"transformMatrix":
           [0, 0, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, "not", "read", {}, null]}}})",
       "11,12,13,0.817645,-1.14794,-0.500655", "1,2,3,0,1.5708,-0"},
  };
  for (const auto& c : cases) {
    std::string rows = kRows;
    rows.replace(rows.find(c.from), c.from.size(), c.to);
    EXPECT_EQ(RowsOf(Patched(c.scanner, c.sensor)), rows) << c.scanner << c.sensor;
  }
  json moved = Patched("{}", R"({"parameters": {"activeArea": null}})");
  json& sensor = moved["orv:scanner"]["scanner-0"]["orv:sensor"][0];
  sensor["parameters"]["activeAreaSettings"]["activeArea"] =
      MakeScannerConfig()["orv:scanner"]["scanner-0"]["orv:sensor"][0]["parameters"]["activeArea"];
  EXPECT_EQ(RowsOf(moved), kRows);
}

TEST(JobConfig, WarnsOfAMissingTriggerDelayDomain) {
  std::string warning;
  const std::string rows =
      RowsOf(Patched(R"({"trigger": {"schedulingUnits": null}})", "{}"), &warning);
  EXPECT_EQ(warning,
            "Fail to find the field \"schedulingUnits\" ([json.exception.type_error.302] "
            "type must be number, but is null) ");
  EXPECT_THAT(rows, StartsWith("2,1,1,250.5,0,2.25,3,"));
}

TEST(JobConfig, TakesTheFirstFamilyAndTheFirstScannerAndSensor) {
  json other = MakeScannerConfig();
  other["orv:scanner"]["scanner-0"]["orv:sensor"][0]["serialNumber"] = "other";
  json several = MakeScannerConfig();
  several["orv:scanner"]["scanner-1"] = 0;
  several["orv:scanner"]["scanner-0"]["orv:sensor"].push_back(0);
  EXPECT_EQ(Rows(MakeJob({{"scan/vantel/config.json", other.dump()},
                          {"scan/r1xxx/config.json", "{}"},
                          {"scan/r4xxx/config.json", several.dump()}})),
            "2,2" + kRows.substr(3));
  for (const std::string family :
       {"r1xxx", "r4xxx", "r7xxx", "BrenlowLaserLineProfiler", "BrenlowFringeSnapshot",
        "BrenlowConfocalLineProfiler", "vantel"}) {
    EXPECT_THAT(Rows(MakeJob({{"scan/" + family + "/config.json", other.dump()}})),
                HasSubstr("\nother,"));
  }
  json list;
  list["orv:scanner"] = json::array({MakeScannerConfig()["orv:scanner"]["scanner-0"], 0});
  EXPECT_EQ(RowsOf(list), kRows);
}

TEST(JobConfig, SaysWhatIsMissingOrWrong) {
  const std::string info = " SurfaceFileConverter::parseCSVInfoFields: ";
  const std::string device = " SurfaceFileConverter::parseCSVDeviceInfoFields: ";
  const struct {
    Member job;
    std::string error;
  } rows[] = {
      {{"jobs/live/other", "x"}, "-999" + info + "Fail to find the job buffer"},
      {{"jobs/live/_live.ovjob", ""}, "-999" + info + "Fail to find the job buffer"},
      {{"jobs/live/_live.ovjob", "no archive"},
       std::to_string(zERROR_FORMAT) + " GetResourceData: Failed to construct zTar"},
      {MakeJob({{"scan/x/config.json", "{}"}}), "0" + info + "Failed to find any scanner"},
      {MakeJob(R"({"orv:scanner": []})"), "0" + info + "Failed to find any scanner"},
      {MakeJob(R"({"orv:scanner": [null]})"), "0" + info + "Failed to find any sensor"},
      {MakeJob(R"({"orv:scanner": [{"orv:sensor": {}}]})"),
       "0" + info + "Failed to find any sensor"},
      {MakeJob(R"({"orv:scanner": [{"orv:sensor": 1, "parameters": []}]})"),
       "-997" + info + "Failed to find the trigger parameter group of R1"},
      {MakeJob("{"), "parse error"},
      {MakeJob(R"({"orv:scanner": 7})"),
       "cannot use operator[] with a string argument with number"},
      {MakeJob(Patched(R"({"trigger": 1})", "{}").dump()),
       "cannot use operator[] with a string argument with number"},
      {MakeJob(Patched(R"({"trigger": {"delay": "1"}})", "{}").dump()),
       "type must be number, but is string"},
      {MakeJob(Patched(R"({"scanMode": null})", "{}").dump()), "type must be number, but is null"},
      {MakeJob(Patched("{}", R"({"model": 4})").dump()), "type must be string, but is number"},
      {MakeJob(Patched("{}", R"({"parameters": {"multipleExposures": [1, []]}})").dump()),
       "type must be number, but is array"},
      {MakeJob(Patched("{}", R"({"parameters": {"activeArea": {"transformMatrix":
           [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0]}}})")
                   .dump()),
       "0" + device + "The transformMatrix is not right"},
      {MakeJob(Patched("{}", R"({"parameters": {"activeArea": {"transformMatrix": [1, 0, 0, 0, 0, 1,
           0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0]}}})")
                   .dump()),
       "0" + device + "The transformMatrix is not right"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.error);
    EXPECT_THAT(Rows(row.job), HasSubstr(row.error));
  }
}

TEST(JobConfig, RefusesADocumentThatWouldTakeTheStackOrTheMemory) {
  const auto repeat = [](int count, const std::string& text) {
    std::string many = R"({"orv:scanner": [)";
    for (int i = 0; i < count; ++i) many += text;
    return many;
  };
  const std::string tooDeep = "The scanner configuration is nested too deeply";
  const std::string tooLarge = "The scanner configuration is too large";
  const struct {
    std::string document, error;
  } rows[] = {
      {repeat(1'000'000, "["), tooDeep},
      {repeat(99, "["), tooDeep},
      {repeat(98, "[") + std::string(98, ']') + "]}", "operator[]"},
      {repeat(1 << 16, "{},"), tooLarge},
      {repeat(1 << 16, "1,"), tooLarge},
      {repeat(25'000, "{\"\":1},"), tooLarge},  // keys count
      {repeat(1, "\"" + std::string(1 << 20, 'x')), tooLarge},
      {repeat(65'000, "1,") + "1]}", "operator[]"},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(Rows(MakeJob(row.document)), HasSubstr(row.error)) << row.document.substr(0, 50);
  }
}

}  // namespace
