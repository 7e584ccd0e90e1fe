// SPDX-License-Identifier: MIT
// Messages of a recording as CSV files.
#pragma once

#include <functional>

#include "formats/csv/job.h"
#include "formats/filetypes.h"
#include "sdk/message.h"

// Writes a surface message as CSV. `dataType` is the recording's. Throws Orv::Exception for a null
// message, another kind of message, a recording of profiles and a file that cannot be written, and
// what CsvJob::Device throws.
void WriteSurfaceCsv(MxMsg message, DataSourceType dataType, CsvJob& job, const std::string& path);

// One message for each frame, read when it is needed.
struct ProfileMessages {
  zSize count;
  std::function<Orv::Object<void*>(zSize frame)> read;
};

// Writes one source's profiles as CSV: one for each frame, as the first item of an array when
// `inArrays`. Throws Orv::Exception for an empty list, an empty handle or array, a message that is
// no profile or of another kind than the first one, and a file that cannot be written, and what
// CsvJob::Device throws.
void WriteProfilesCsv(const ProfileMessages& messages, bool inArrays, CsvJob& job,
                      const std::string& path);
