// SPDX-License-Identifier: MIT
// What stands in a recording archive (.ovrec), a tar archive: first the platform's configuration,
// copied from files, then the recording. The job in it is a tar archive too.
#pragma once

inline constexpr const char* kConfigMember = "config.json";
inline constexpr const char* kJobsFolder = "jobs";
inline constexpr const char* kJobsConfigMember = "jobs/config.json";
inline constexpr const char* kLiveFolder = "jobs/live";
inline constexpr const char* kJobMember = "jobs/live/_live.ovjob";
inline constexpr const char* kReplayFolder = "replay";
inline constexpr const char* kReplayMember = "replay/buffer";

// In a job: the configuration of each scanner, under the scanner's id.
inline constexpr const char* kScannerFolder = "scan/";
inline constexpr const char* kScannerConfig = "/config.json";
