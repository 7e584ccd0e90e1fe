// SPDX-License-Identifier: MIT
// The frames of a recording that the converter can export.
#pragma once

#include <vector>

#include "sdk/pipeline.h"
#include "surfacefileconverter/filetypes.h"

// Reads every frame of the loaded recording. Sources that cannot be exported are dropped: `sources`
// gains the kept ones, and the last of them tells `dataType` and `arrayed`. In the classic layout
// the frames keep the messages of dropped sources. Throws Orv::Exception when the recording has not
// exactly one scanner, no exportable source, or no frame.
void GetCloudsInfoFromRecordingData(Plovia::ReplaySerializer& serializer,
                                    std::vector<ReplaySourceInfo>& sources,
                                    DataSourceType& dataType, z8u& arrayed,
                                    std::vector<Plovia::ReplayFrame>& frames);
