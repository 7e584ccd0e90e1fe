// SPDX-License-Identifier: MIT
// The texts by which a recording's records are known.
#pragma once

#include <string_view>

#include "sdk/core.h"

namespace sdk::replay {

inline constexpr std::string_view kProfile = "trelvane-replay";
inline constexpr std::string_view kLibrary = "Trelvane 1.0.0.4";

inline constexpr std::string_view kRecordingMetadata = "recording";
inline constexpr std::string_view kLayoutKey = "layout";
inline constexpr std::string_view kSegmentedLayout = "segmented";
inline constexpr std::string_view kClassicLayout = "classic";
inline constexpr std::string_view kVersionKey = "version";
inline constexpr std::string_view kVersion = "1";

inline constexpr std::string_view kScannerMetadata = "scanner";
inline constexpr std::string_view kFamilyKey = "family";
inline constexpr std::string_view kIdKey = "id";
inline constexpr std::string_view kNameKey = "name";

inline constexpr std::string_view kSchemaName = "trelvane.ScanMessage";
inline constexpr std::string_view kFlatBufferEncoding = "flatbuffer";
inline constexpr std::string_view kJsonEncoding = "json";

inline constexpr z16u kFrameIndexChannel = 0;
inline constexpr std::string_view kFrameIndexTopic = "/frame_index";

// Metadata of a source's channel, in decimal text where they are numbers.
inline constexpr std::string_view kScannerKey = "scanner";
inline constexpr std::string_view kDisplayNameKey = "display_name";
inline constexpr std::string_view kDataTypeKey = "data_type";
inline constexpr std::string_view kArrayedKey = "arrayed";
inline constexpr std::string_view kReservedKey = "reserved";

}  // namespace sdk::replay
