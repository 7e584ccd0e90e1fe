// SPDX-License-Identifier: MIT
// The sections that open every CSV file.
#pragma once

#include "formats/csv/job.h"
#include "formats/csv/text.h"

// Appends the sections Info, DeviceInfo and RecordingFilter. `resolution` is the scale of what
// follows.
void WriteSections(CsvText& text, const CsvInfoFields& info, const CsvDeviceInfoFields& device,
                   const zPoint3d64f& resolution);
