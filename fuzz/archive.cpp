// SPDX-License-Identifier: MIT
// Recording archives, and the job inside them, which is an archive with documents.
#include <nlohmann/json.hpp>

#include "fuzz.h"
#include "surfacefileconverter/recordingarchive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const zBytes archive(data, data + size);
  Attempt([&] { GetReplayData(archive, DefaultAlloc()); });
  zBytes job;
  Attempt([&] { GetResourceData(archive, "jobs/live/_live.ovjob", job, DefaultAlloc()); });
  nlohmann::json scanner;
  Attempt([&] { GetScannerConfig(job, "r4xxx", scanner, DefaultAlloc()); });
  Attempt([&] { GetScannerConfig(archive, "r4xxx", scanner, DefaultAlloc()); });
  return 0;
}
