// SPDX-License-Identifier: MIT
#include "inspect/inspect.h"

#include <algorithm>

#include "formats/filetypes.h"
#include "wholefile.h"

namespace {

// By FileType.
constexpr FileKind kKinds[] = {FileKind::srf,       FileKind::sur,     FileKind::pro,
                               FileKind::pcd,       FileKind::unknown, FileKind::recording,
                               FileKind::recording, FileKind::archive};

void Describe(const zBytes& bytes, bool check, Findings& findings) {
  switch (findings.facts.kind) {
    case FileKind::recording:
      return DescribeRecording(bytes, 0, check, findings);
    case FileKind::archive:
      return DescribeArchive(bytes, check, findings);
    default:
      return DescribeScanFile(bytes, findings);
  }
}

void DescribeFile(const std::string& path, bool check, Findings& findings, Progress& progress) {
  zBytes bytes;
  try {
    ReadFileBuffer(path, bytes);
  } catch (const Orv::Exception& failure) {
    return findings.Problem({}, "%s", failure.what());
  }
  findings.facts.size = bytes.size();
  Describe(bytes, check, findings);
  // A recording's were counted scan by scan.
  if (!findings.facts.recording) progress.AddBytes(bytes.size());
}

void NoteEmptyScans(Findings& findings) {
  const auto isEmpty = [](const PlacedScan& scan) { return !scan.facts.box; };
  const auto count = std::ranges::count_if(findings.facts.scans, isEmpty);
  if (count > 0) {
    findings.Note("%lld of %zu scans are empty for a conversion", static_cast<long long>(count),
                  findings.facts.scans.size());
  }
}

}  // namespace

std::optional<FileKind> KindOfPath(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  if (dot == path.npos) return std::nullopt;
  const std::optional<FileType> type = ImportType(std::string_view(path).substr(dot));
  if (!type) return std::nullopt;
  return kKinds[*type];
}

std::string SourceTypeName(z16u dataType) {
  const auto known = dataSourceTypeNames.find(static_cast<DataSourceType>(dataType));
  return known == dataSourceTypeNames.end() ? Orv::Format("type %u", dataType) : known->second;
}

FileFacts InspectFile(const std::string& path, bool check, const ScanVisitor& visit,
                      Progress& progress) {
  FileFacts facts;
  facts.path = path;
  Findings findings(facts, visit, progress);
  if (zDirectory_Exists(path.c_str())) {
    facts.kind = FileKind::directory;
    DescribeDirectory(path, findings);
  } else if (const auto kind = KindOfPath(path)) {
    facts.kind = *kind;
    DescribeFile(path, check, findings, progress);
  } else {
    findings.Problem({},
                     "the ending of the name is none of .sur, .pro, .srf, .pcd, .rep, .rec, "
                     ".ovrec");
  }
  NoteEmptyScans(findings);
  progress.FileDone();
  return facts;
}
