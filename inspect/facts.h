// SPDX-License-Identifier: MIT
// What is known about a file or a directory of surfaces.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "inspect/scanfacts.h"
#include "sdk/pipeline.h"

enum class FileKind : z8u { unknown, sur, pro, srf, pcd, recording, archive, directory };

// Something that is wrong in a file.
struct Problem {
  std::optional<z64u> offset;  // bytes from the start of the file
  std::string text;
};

// What a Digital Surf file tells and a conversion does not use.
struct DigitalSurfFacts {
  std::string objectName, operatorName, comment;
  std::string acquired;  // "2024-05-31 12:00:00", empty when no date is set
  z16s objectType = 0;   // 1 profile, 2 surface
  z16s objectCount = 0;
  z16s bitsPerPoint = 0;
  bool specialPoints = false;  // samples below the smallest one are not measured
  std::array<std::string, 3> axes, stepUnits, lengthUnits;  // of x, y and z
  z64u privateBytes = 0, bytesAfterSamples = 0;
};

// What a point cloud's header tells.
struct CloudFacts {
  std::string fields;     // separated by blanks
  std::string viewpoint;  // not used by a conversion
  bool binary = false;
};

struct RecordingFacts {
  bool classic = false;
  z64u segments = 0;  // of a segmented one
  std::vector<Plovia::ReplayScannerInfo> scanners;
};

// A file in an archive, or in a directory.
struct StoredFile {
  std::string name;
  z64u size;
};

struct PlacedScan {
  zSize frame;     // counted from 0
  z32u index = 0;  // the frame's own, in a recording
  std::string source;
  std::optional<zSize> item;  // in an array message
  ScanFacts facts;
};

struct FileFacts {
  std::string path;
  FileKind kind = FileKind::unknown;
  z64u size = 0;  // bytes; of a directory, of all its files
  std::optional<DigitalSurfFacts> digitalSurf;
  std::optional<CloudFacts> cloud;
  std::optional<RecordingFacts> recording;
  std::vector<StoredFile> members;  // of an archive or directory
  zSize frames = 0;
  std::vector<PlacedScan> scans;
  std::vector<std::string> notes;  // what may mislead
  std::vector<Problem> problems;
};

// The kind that a path's ending tells; nothing for another ending.
std::optional<FileKind> KindOfPath(const std::string& path);

// "SURFACE_POINT_CLOUD" for 15; "type 99" for an unknown one.
std::string SourceTypeName(z16u dataType);
