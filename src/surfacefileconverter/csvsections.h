// SPDX-License-Identifier: MIT
// The sections that open every CSV file.
#pragma once

#include "surfacefileconverter/csvtext.h"
#include "surfacefileconverter/jobconfig.h"

// Appends the sections Info, DeviceInfo and RecordingFilter.
void WriteSections(CsvText& text, const CsvInfoFields& info, const CsvDeviceInfoFields& device);
