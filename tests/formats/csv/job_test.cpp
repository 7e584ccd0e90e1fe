// SPDX-License-Identifier: MIT
// The settings of a job as the rows Info and DeviceInfo of a CSV file show them.
#include <gmock/gmock.h>

#include "support/csv_export.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

const std::string kRows =
    "2,1,1,250.5,4,2.25,3,0.1,0.2,1e-09,100,0\n"
    "S1,R4,6.1,2,2,10,20.5,-,-,-,-,-,-1,-2,-3,4,5,6,11,12,13,0.817645,-1.14794,-0.500655\n";

// What an export with this job tells, then the two rows; or the error.
std::string Rows(const Member& job) {
  const TempDirectory directory;
  std::string told = ExportCsv(job, {{"Top", "Top", 14, 0, 0}}, {{MakeSurfaceWithIntensity(1)}});
  if (!told.ends_with("out.csv ")) {
    EXPECT_EQ(directory.Files(), std::set<std::string>{"in.ovrec"});
    return told;
  }
  told.erase(told.size() - std::string("out.csv ").size());
  const std::string text = ReadFile("out.csv");
  for (std::size_t end = 0; (end = text.find("\r\nEnd", end + 1)) < text.find("RecordingFilter");) {
    const std::size_t start = text.rfind('\n', end) + 1;
    told += text.substr(start, end - start) + "\n";
  }
  return told;
}

std::string RowsOf(const json& config) { return Rows(MakeJob(config.dump())); }

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
      {R"({"trigger": {"schedulingUnits": null}})", "{}", "2,1,1,250.5,4",
       "Fail to find the field \"schedulingUnits\" ([json.exception.type_error.302] type must be "
       "number, but is null) \n2,1,1,250.5,0"},
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

// One sensor with other parameters, or with "model": 4.
Member Sensor(const std::string& changes) { return MakeJob(Patched("{}", changes.c_str()).dump()); }
Member Scanner(const char* changes) { return MakeJob(Patched(changes, "{}").dump()); }

std::string Matrix(int elements) {
  return R"({"parameters": {"activeArea": {"transformMatrix": )" +
         json(std::vector<int>(static_cast<zSize>(elements), 1)).dump() + "}}}";
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
  const std::string noJob = "-999" + info + "Fail to find the job buffer";
  const std::string noScanner = "0" + info + "Failed to find any scanner";
  const std::string noSensor = "0" + info + "Failed to find any sensor";
  const std::string tooDeep = "-997 GetScannerConfig: The scanner configuration is nested too deep";
  const std::string tooLarge = "-997 GetScannerConfig: The scanner configuration is too large";
  const struct {
    Member job;
    std::string error;
  } rows[] = {
      {{"jobs/live/other", "x"}, noJob},
      {{"jobs/live/_live.ovjob", ""}, noJob},
      {{"jobs/live/_live.ovjob", "no archive"},
       std::to_string(zERROR_FORMAT) + " GetResourceData: Failed to construct zTar"},
      {MakeJob({{"scan/x/config.json", "{}"}}), noScanner},
      {MakeJob(R"({"orv:scanner": []})"), noScanner},
      {MakeJob(R"({"orv:scanner": [null]})"), noSensor},
      {MakeJob(R"({"orv:scanner": [{"orv:sensor": {}}]})"), noSensor},
      {MakeJob(R"({"orv:scanner": [{"orv:sensor": 1, "parameters": []}]})"),
       "-997" + info + "Failed to find the trigger parameter group of R1"},
      {MakeJob("{"), "parse error"},
      {MakeJob(R"({"orv:scanner": 7})"), "operator[] with a string argument with number"},
      {Scanner(R"({"trigger": 1})"), "operator[] with a string argument with number"},
      {Scanner(R"({"trigger": {"delay": "1"}})"), "type must be number, but is string"},
      {Scanner(R"({"scanMode": null})"), "type must be number, but is null"},
      {Sensor(R"({"model": 4})"), "type must be string, but is number"},
      {Sensor(R"({"parameters": {"multipleExposures": [1, []]}})"), "number, but is array"},
      {Sensor(Matrix(15)), matrix},
      {Sensor(Matrix(17)), matrix},
      {Large(1'000'000, "["), tooDeep},
      {Large(99, "["), tooDeep},
      {Large(98, "[", std::string(98, ']') + "]}"), "operator[]"},
      {Large(1 << 16, "{},"), tooLarge},
      {Large(1 << 16, "1,"), tooLarge},
      {Large(25'000, "{\"\":1},"), tooLarge},  // keys count
      {Large(1, "\"" + std::string(1 << 20, 'x')), tooLarge},
      {Large(65'000, "1,", "1]}"), "operator[]"},
  };
  for (zSize i = 0; i < std::size(rows); ++i) {
    EXPECT_THAT(Rows(rows[i].job), HasSubstr(rows[i].error)) << "row " << i;
  }
}

}  // namespace
