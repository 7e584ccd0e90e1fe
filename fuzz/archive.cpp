// SPDX-License-Identifier: MIT
// Recording archives, and the job inside them, which is an archive with documents.
#include "formats/archive/reader.h"
#include "formats/csv/job.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const zSourcePtr archive = SourceOf(zBytes(data, data + size));
  Attempt([&] { CsvJob(GetResourceData(OpenRecordingArchive(archive).job), {}).Device(); });
  Attempt([&] { CsvJob(archive, {}).Device(); });
  return 0;
}
