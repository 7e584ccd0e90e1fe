// SPDX-License-Identifier: MIT
// Writes a small seed corpus for each fuzz target into the folder given:
//   make_seeds <folder> [<scan file>...]
// The scan files become seeds of the target of their kind.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "batch/record.h"
#include "getfilestream/getfilestream.h"
#include "support/archives.h"
#include "support/mcap_file.h"
#include "support/payloads.h"
#include "support/recordings.h"
#include "support/sur_file.h"

namespace {

namespace fs = std::filesystem;

std::string ToText(const zBytes& bytes) { return {bytes.begin(), bytes.end()}; }

class Seeds {
 public:
  explicit Seeds(fs::path folder) : folder_(std::move(folder)) {}

  // A seed of one target, and of those that take whole files when it is a file of the kind with
  // that number.
  void Add(const std::string& target, const std::string& seed, int kind = -1) {
    Write(target, seed);
    if (kind < 0) return;
    for (const char options : {'\0', '\1', '\x16'}) {
      const std::string file = std::string(1, static_cast<char>(kind)) + options + seed;
      Write("conversion", file);
      Write("inspection", file);
      Write("library", file);
    }
  }
  void Add(const std::string& target, const zBytes& seed, int kind = -1) {
    Add(target, ToText(seed), kind);
  }

 private:
  void Write(const std::string& target, const std::string& seed) {
    fs::create_directories(folder_ / target);
    std::ofstream(folder_ / target / ("seed-" + std::to_string(count_++)), std::ios::binary)
        << seed;
  }

  fs::path folder_;
  int count_ = 0;
};

enum Kind { kSrf, kSur, kPro, kPcd, kRec, kRep, kOvrec };

void AddSurfaces(Seeds& seeds) {
  for (const z16s bits : {z16s{16}, z16s{32}}) {
    SurFile file;
    file.bits = bits;
    file.flag = bits == 16 ? 1 : 0;
    file.zMin = 11;
    file.commentSize = 5;
    seeds.Add("sur", file.Bytes(), kSur);
    file = SurRow({-70000, 5, 70000});
    file.bits = bits;
    seeds.Add("pro", file.Bytes(), kPro);
  }
  for (const Handle& surface : {MakeSurfaceWithIntensity(1), MakeSurface(2, 1, {5, -32768})}) {
    const Handle stream = MakeStream();
    MustBeOk(GetSrfFileStream(surface.Get(), stream.Get()));
    seeds.Add("srf", BytesOf(stream.Get()), kSrf);
  }
}

void AddClouds(Seeds& seeds) {
  const std::string options(35, '\1');
  const std::string body(4 * 3 * 16, '\x41');
  const std::string head = "VERSION .7\nFIELDS x y z";
  const std::string tail =
      "\nWIDTH 4\nHEIGHT 2\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS 8\nDATA binary\n" + body;
  for (const std::string& cloud :
       {head + "\nSIZE 4 4 4\nTYPE F F F" + tail,
        head + " intensity\nSIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1" + tail,
        head + " _ rgb\r\nSIZE 4 4 4 1 4\r\nTYPE F F F U U\r\nCOUNT 1 1 1 4 1" + tail,
        "# comment\n" + head + " rgba intensity\nSIZE 4 4 4 4 4\nTYPE F F F F F" + tail}) {
    seeds.Add("pcd", cloud + options);
    seeds.Add("pcd", cloud, kPcd);
  }
}

void AddRecordings(Seeds& seeds) {
  for (const bool classic : {false, true}) {
    seeds.Add("replay", WriteRecording(MakeScanner(), {MakeFrame(1), MakeFrame(2)}, classic), kRep);
    Plovia::ReplayScannerInfo one = MakeScanner();
    one.sources = {one.sources[classic ? 1 : 2]};
    const Handle message = classic ? MakeCloud(1) : MakeProfile(zType::z16s, 1);
    seeds.Add("replay", WriteRecording(one, {{message}, {message}}, classic), kRec);
  }
  // Without checksums, so that changed bytes get past them.
  std::string frames;
  for (const std::string& payload :
       {payloads::Surface(),
        payloads::Surface({.width = 1,
        .points = {1, 2, 3},
        .intensities = {9},
        .pointType = trelvane::PointType::Point3d}),
        payloads::Profile(2, {1, 2}, trelvane::PointType::Height), payloads::RepeatedItem(3, {}),
        payloads::NestedArray(), payloads::Union(1, false)}) {
    const std::string frame = mcap::FrameIndex() + mcap::Message(1, payload);
    frames += frame;
    seeds.Add("replay", mcap::File(frame), kRep);
    for (const char* compression : {"", "lz4", "zstd"}) {
      seeds.Add("replay", mcap::File(mcap::Chunk(frame, compression)), kRep);
    }
  }
  seeds.Add("replay", mcap::File(mcap::Chunk(frames) + mcap::Chunk(frames)), kRep);
}

void AddArchives(Seeds& seeds) {
  const std::string document = R"({"orv:scanner": {"s": {"parameters": {"scanMode": 2,
"trigger": {"source": 1, "frameRate": 0.1, "delay": 0, "schedulingUnits": 0}}, "orv:sensor": [{
"serialNumber": "1", "model": "m", "version": "v", "parameters": {"exposureMode": 0,
"multipleExposures": [1, 2], "activeArea": {"x": 1, "y": 2, "z": 3, "width": 4, "length": 5,
"height": 6, "transformMatrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}}}]}}})";
  const zBytes job = MakeArchive({{"scan/r4xxx/config.json", document}});
  seeds.Add("archive", job);
  for (const bool surface : {true, false}) {
    Plovia::ReplayScannerInfo one = MakeScanner();
    one.sources = {one.sources[surface ? 0 : 2]};
    const Handle message = surface ? MakeSurfaceWithIntensity(1) : MakeProfile(zType::z16s, 1);
    seeds.Add("archive",
              MakeArchive({{"config.json", "{}"},
                           {"jobs", "", zTAR_DIRECTORY},
                           {"jobs/live/_live.ovjob", ToText(job)},
                           {"replay/buffer", ToText(WriteRecording(one, {{message}}, false))}}),
              kOvrec);
  }
}

void AddCommandLines(Seeds& seeds) {
  for (const char* line :
       {"-i a.srf -o b.rep ", "--input a.srf -f 0 ", "-i a.pcd -w 10 -h 5 -s 1 -r (1,2,3) -z 2.5 ",
        "--help -i \"a b.sur\" --output c.rep -a ", "--width x --zoom 1e999 --remove (1,,) ",
        "%s%n%5.3f %-08lld %% -i x.%*d "}) {
    seeds.Add("command_line", std::string(line));
  }
}

// A file from elsewhere, by its extension.
void AddFile(Seeds& seeds, const fs::path& path) {
  constexpr const char* kTargets[] = {".srf", ".sur", ".pro", ".pcd"};
  for (int kind = 0; kind < static_cast<int>(std::size(kTargets)); ++kind) {
    if (path.extension() != kTargets[kind]) continue;
    std::ifstream file(path, std::ios::binary);
    const std::string seed{std::istreambuf_iterator<char>(file), {}};
    seeds.Add(std::string(kTargets[kind] + 1), seed, kind);
  }
}

}  // namespace

void AddBatch(Seeds& seeds) {
  seeds.Add("batch", std::string("{folder}/{stem}-{frame}{{{source}}}"));
  seeds.Add("batch", std::string("a b.sur\r\n\nc/d.rep"));
  const std::string zeros("a.sur\0b\nc.pcd\0", 14);
  seeds.Add("batch", zeros);
  seeds.Add("batch",
            Entry{"a.sur", {1, 0.5}, {"b.rep"}, 2, {1.5}, true, {"[INFO] x"}, 0.1}.ToLine());
}

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: make_seeds <folder> [<scan file>...]\n";
    return 2;
  }
  Seeds seeds(argv[1]);
  AddSurfaces(seeds);
  AddClouds(seeds);
  AddRecordings(seeds);
  AddArchives(seeds);
  AddCommandLines(seeds);
  AddBatch(seeds);
  for (int i = 2; i < argc; ++i) AddFile(seeds, argv[i]);
  return 0;
}
