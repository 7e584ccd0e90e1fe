// SPDX-License-Identifier: MIT
// What is known about a file or a directory of surfaces.
#pragma once

#include <string>
#include <vector>

#include "formats/digitalsurf/facts.h"
#include "formats/pcd/facts.h"
#include "inspect/scanfacts.h"
#include "sdk/pipeline.h"

enum class FileKind : z8u { unknown, sur, pro, srf, pcd, recording, archive, directory };

// How much of a file is looked at.
enum class Depth : z8u {
  quick,    // of a recording, its summary and its first frame
  reading,  // what a conversion reads
  check,    // all that can be verified
};

// Something that is wrong in a file.
struct Problem {
  std::optional<z64u> offset;  // bytes from the start of the file
  std::string text;
};

struct RecordingFacts {
  bool classic = false;
  z64u segments = 0;  // of a segmented one
  std::vector<Plovia::ReplayScannerInfo> scanners;
};

// A file in an archive, or in a directory.
struct StoredFile {
  std::string name;
  std::optional<z64u> size;  // nothing where it cannot be known
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
  std::optional<z64u> size;  // bytes; of a directory, of all its files
  std::optional<DigitalSurfFacts> digitalSurf;
  std::optional<CloudFacts> cloud;
  std::optional<RecordingFacts> recording;
  std::vector<StoredFile> members;  // of an archive or directory
  zSize frames = 0;
  std::vector<PlacedScan> scans;
  std::vector<std::string> notes;  // what a conversion drops without harm, and what may surprise
  std::vector<Caution> cautions;   // about the whole; each scan has its own
  std::vector<Problem> problems;
};

// The kind that a path's ending tells; nothing for another ending.
std::optional<FileKind> KindOfPath(const std::string& path);

// Bytes of a file; nothing where its size cannot be known.
std::optional<z64u> SizeOf(const std::string& path);

// "SURFACE_POINT_CLOUD" for 15; "type 99" for an unknown one.
std::string SourceTypeName(z16u dataType);
