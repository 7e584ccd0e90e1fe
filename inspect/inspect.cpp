// SPDX-License-Identifier: MIT
#include "inspect/inspect.h"

#include <algorithm>
#include <filesystem>

#include "filesource.h"
#include "formats/filetypes.h"
#include "inspect/conversion.h"
#include "statuses.h"

namespace {

// By FileType.
constexpr FileKind kKinds[] = {FileKind::srf,       FileKind::sur,     FileKind::pro,
                               FileKind::pcd,       FileKind::unknown, FileKind::recording,
                               FileKind::recording, FileKind::archive};

std::optional<FileType> ImportTypeOf(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  return dot == path.npos ? std::nullopt : ImportType(std::string_view(path).substr(dot));
}

void Describe(const zSourcePtr& file, Depth depth, Findings& findings) {
  switch (findings.facts.kind) {
    case FileKind::recording:
      return DescribeRecording(file, 0, depth, findings);
    case FileKind::archive:
      return DescribeArchive(file, depth, findings);
    default:
      return DescribeScanFile(*file, findings);
  }
}

// What a conversion takes without a word, though what comes out has nothing to do with the file.
void RefuseNonsense(Findings& findings) {
  for (const PlacedScan& scan : findings.facts.scans) {
    for (const Caution& caution : scan.facts.cautions) {
      if (caution.key != kCoordinateType && caution.key != kRangeTooWide) continue;
      findings.Problem({}, "a conversion makes nonsense of it: %s", caution.text);
    }
  }
}

void DescribeFile(const std::string& path, Depth depth, Findings& findings, Progress& progress) {
  findings.facts.size = SizeOf(path);
  try {
    const zSourcePtr file = OpenFile(path);
    Describe(file, depth, findings);
    if (depth == Depth::check && findings.facts.problems.empty()) {
      RefuseNonsense(findings);
      findings.Refuse(RefusalOf(*ImportTypeOf(path), file));
    }
    // A recording's were counted scan by scan.
    if (!findings.facts.recording) progress.AddBytes(file->Size());
  } catch (const Orv::Exception& failure) {
    if (failure.Status() != kBadInput) throw;
    findings.Problem({}, "the file cannot be read: %s", failure.what());
  }
}

// What several scans may have in common.
void SumUp(Findings& findings) {
  const std::vector<PlacedScan>& scans = findings.facts.scans;
  const auto count = [&](const auto& is) {
    return static_cast<zSize>(std::ranges::count_if(scans, is));
  };
  const zSize empty = count([](const PlacedScan& scan) { return !scan.facts.box; });
  if (empty > 0) {
    findings.Warn("scans-empty", "%zu of %zu scans are empty for a conversion", empty,
                  scans.size());
  }
  const zSize unwritable = count([](const PlacedScan& scan) {
    return std::ranges::count(scan.facts.cautions, kNotWritable, &Caution::key) > 0;
  });
  if (unwritable > 0 && findings.facts.kind >= FileKind::recording) {
    findings.Warn(kNotWritable, "a conversion refuses to write %zu of %zu scans as .sur or .pro",
                  unwritable, scans.size());
  }
}

}  // namespace

std::optional<FileKind> KindOfPath(const std::string& path) {
  const std::optional<FileType> type = ImportTypeOf(path);
  if (!type) return std::nullopt;
  return kKinds[*type];
}

std::optional<z64u> SizeOf(const std::string& path) {
  std::error_code unknown;
  const auto size = std::filesystem::file_size(path, unknown);
  return unknown ? std::nullopt : std::optional<z64u>(size);
}

std::string SourceTypeName(z16u dataType) {
  const std::string_view known = DataSourceTypeName(dataType);
  return known.empty() ? Orv::Format("type %u", dataType) : std::string(known);
}

FileFacts InspectFile(const std::string& path, Depth depth, const ScanVisitor& visit,
                      Progress& progress) {
  FileFacts facts;
  facts.path = path;
  Findings findings(facts, visit, progress);
  if (zDirectory_Exists(path.c_str())) {
    facts.kind = FileKind::directory;
    DescribeDirectory(path, depth, findings);
  } else if (const auto kind = KindOfPath(path)) {
    facts.kind = *kind;
    DescribeFile(path, depth, findings, progress);
  } else {
    findings.Problem({},
                     "the ending of the name is none of .sur, .pro, .srf, .pcd, .rep, .rec, "
                     ".ovrec");
  }
  SumUp(findings);
  progress.FileDone();
  return facts;
}
