// SPDX-License-Identifier: MIT
#include "inspect/report.h"

#include <algorithm>
#include <cmath>

#include "inspect/measure/units.h"
#include "inspect/sourcetable.h"
#include "text.h"

namespace {

constexpr zSize kMostInDetail = 4;  // scans, and files of a directory

constexpr const char* kKinds[] = {
    "unknown",           "Digital Surf surface", "Digital Surf profile",
    "compact surface",   "point cloud (PCD)",    "recording",
    "recording archive", "directory of surfaces"};

std::string BytesText(z64u bytes) {
  if (bytes < 1000) return Orv::Format("%llu bytes", bytes);
  double size = static_cast<double>(bytes);
  const char* unit = "";
  for (const char* larger : {"kB", "MB", "GB", "TB"}) {
    if (size < 1000) break;
    size /= 1000;
    unit = larger;
  }
  return Orv::Format("%.3g %s (%llu bytes)", size, unit, bytes);
}

std::string PointText(const zPoint3d64f& point, const char* separator = ", ") {
  return RealText(point.x) + separator + RealText(point.y) + separator + RealText(point.z);
}

// One line with a name in front.
class Lines {
 public:
  explicit Lines(std::ostream& out) : out_(out) {}

  void operator()(std::string_view name, std::string_view text) {
    out_ << Orv::Format("  %-11s %s\n", name, Printable(text));
  }

 private:
  std::ostream& out_;
};

// As it is laid out, but not all of a long one.
void WriteComment(std::string_view comment, Lines& line) {
  constexpr int kMostLines = 8;
  std::string_view name = "comment";
  for (int i = 0; i < kMostLines && !comment.empty(); ++i) {
    std::string_view text = comment.substr(0, comment.find('\n'));
    comment.remove_prefix(std::min(text.size() + 1, comment.size()));
    if (text.ends_with('\r')) text.remove_suffix(1);
    line(name, text);
    name = "";
  }
  if (!comment.empty())
    line("", Orv::Format("... and %zu bytes more, which --json shows", comment.size()));
}

void WriteDigitalSurf(const DigitalSurfFacts& facts, Lines& line) {
  line("object", Orv::Format("\"%s\", type %d, %d in the file, %d bits a point", facts.objectName,
                             facts.objectType, facts.objectCount, facts.bitsPerPoint));
  if (!facts.operatorName.empty()) line("operator", "\"" + facts.operatorName + "\"");
  if (!facts.acquired.empty()) line("acquired", facts.acquired);
  line("units", "steps in \"" + facts.stepUnits[0] + "\", \"" + facts.stepUnits[1] + "\", \"" +
                    facts.stepUnits[2] + "\"; lengths in \"" + facts.lengthUnits[0] + "\", \"" +
                    facts.lengthUnits[1] + "\", \"" + facts.lengthUnits[2] + "\"");
  if (!facts.comment.empty()) WriteComment(facts.comment, line);
}

void WriteRecording(const RecordingFacts& facts, zSize frames, Lines& line) {
  line("layout", facts.classic ? "classic"
                               : Orv::Format("segmented, %llu segment%s", facts.segments,
                                             facts.segments == 1 ? "" : "s"));
  line("frames", std::to_string(frames));
  for (const Plovia::ReplayScannerInfo& scanner : facts.scanners) {
    line("scanner", "\"" + scanner.displayName + "\", family \"" + scanner.family + "\", id \"" +
                        scanner.id + "\"");
    for (const ReplaySourceInfo& source : scanner.sources) {
      line("source", "\"" + source.displayName + "\", " + SourceTypeName(source.dataType) +
                         (source.arrayed != 0 ? ", in arrays" : ""));
    }
  }
}

bool IsEmpty(const MxStamp& stamp) {
  return stamp.frame == 0 && stamp.time == 0 && stamp.encoder == 0 && stamp.zEncoder == 0 &&
         stamp.inputs == 0;
}

void WriteCautions(const std::vector<Caution>& cautions, Lines& line) {
  for (const Caution& caution : cautions) line("CAUTION", caution.text);
}

constexpr z64f kRounding = 1e-12;  // of all heights, what they may be off by

// What is nothing beside `whole` but for rounding is 0.
std::string LengthText(z64f mm, z64f whole) {
  if (std::abs(mm) <= whole * kRounding) return "0 mm";
  const ShownUnit unit = FittingUnit(AxisUnit(), std::abs(mm));
  return RealText(unit.Shown(mm)) + " " + unit.name;
}

// Two columns: as it is, and levelled.
void WriteFigures(const ScanFigures& figures, bool profile, Lines& line) {
  const auto row = [&](const std::string& name, const std::string& plain,
                       const std::string& levelled) {
    constexpr zSize kColumn = 18;
    const auto letters = static_cast<zSize>(
        std::ranges::count_if(plain, [](char c) { return (c & 0xC0) != 0x80; }));  // UTF-8
    line(name, plain + std::string(letters < kColumn ? kColumn - letters : 1, ' ') + levelled);
  };
  const Figures& plain = figures.plain.figures;
  const Figures& levelled = figures.levelled.figures;
  const std::string letter = profile ? "R" : "S";
  row("figures", "as measured", "over a plane");
  const auto length = [&](const std::string& name, z64f Figures::*of) {
    row(name, LengthText(plain.*of, plain.sz), LengthText(levelled.*of, plain.sz));
  };
  const auto number = [&](const std::string& name, z64f Figures::*of) {
    const auto text = [&](const Figures& one) {
      return one.sz > plain.sz * kRounding ? RealText(one.*of) : std::string("-");
    };
    row(name, text(plain), text(levelled));
  };
  length("mean", &Figures::mean);
  length("median", &Figures::median);
  length(letter + "a", &Figures::sa);
  length(letter + "q", &Figures::sq);
  length(letter + "z", &Figures::sz);
  length(letter + "p", &Figures::sp);
  length(letter + "v", &Figures::sv);
  number(letter + "sk", &Figures::ssk);
  number(letter + "ku", &Figures::sku);
  for (zSize i = 0; i < std::size(kToldPercents); ++i) {
    row(RealText(kToldPercents[i]) + " % below", LengthText(figures.plain.percentiles[i], plain.sz),
        LengthText(figures.levelled.percentiles[i], plain.sz));
  }
}

void WriteScan(const ScanFacts& scan, Lines& line) {
  const bool profile = scan.kind >= ScanKind::profile;
  const bool cloud = scan.kind == ScanKind::cloud || scan.kind == ScanKind::pointProfile;
  line(profile ? "profile"
       : cloud ? "cloud"
               : "surface",
       (profile ? Orv::Format("%u points", scan.width)
                : Orv::Format("%u x %u points", scan.width, scan.length)) +
           ", " +
           Orv::Format("%zu valid (%s)", scan.validPoints,
                       ShareText(scan.validPoints, scan.points)));
  line("scale", PointText(scan.scale) + " mm");
  line("offset", PointText(scan.offset) + " mm");
  if (scan.heights) {
    const auto& [lowest, highest] = *scan.heights;
    const ShownUnit unit = FittingUnit(AxisUnit(), Span{lowest, highest});
    line("heights", unit.RangeText(lowest, highest, std::abs(scan.scale.z)));
  }
  if (scan.box) {
    line("box",
         PointText(scan.box->size, " x ") + " mm about (" + PointText(scan.box->center) + ") mm");
  }
  if (scan.intensity) {
    line("intensity", Orv::Format("%u to %u", scan.intensity->lowest, scan.intensity->highest));
  }
  if (scan.stamp && !IsEmpty(*scan.stamp)) {
    line("stamp",
         Orv::Format("frame %llu, time %llu, encoder %lld, z encoder %lld, inputs 0x%04llx",
                     scan.stamp->frame, scan.stamp->time, scan.stamp->encoder, scan.stamp->zEncoder,
                     scan.stamp->inputs));
  }
  if (scan.figures) WriteFigures(*scan.figures, profile, line);
  WriteCautions(scan.cautions, line);
}

// A table, how to see more, and the cautions of the scans.
void WriteSources(const std::vector<PlacedScan>& scans, Lines& line, std::ostream& out) {
  out << " all scans\n";
  for (const std::string& row : SourceTable(scans)) out << "  " << row << '\n';
  line("more", "--frame N, --frame FIRST:LAST, --source TAG and --all tell of scans one by one");
  for (const std::string& caution : SummedCautions(scans)) line("CAUTION", caution);
}

void WriteScans(const FileFacts& facts, Lines& line, std::ostream& out) {
  const bool single = !facts.recording && facts.kind != FileKind::directory;
  for (const PlacedScan& scan : facts.scans) {
    if (!single) {
      std::string title = Orv::Format("frame %zu", scan.frame);
      title += ", " + scan.source;
      if (scan.item) title += Orv::Format(" [%zu]", *scan.item);
      out << ' ' << Printable(title) << '\n';
    }
    WriteScan(scan.facts, line);
  }
}

std::string ProblemText(const Problem& problem) {
  return (problem.offset ? Orv::Format("at byte %llu: ", *problem.offset) : "") + problem.text;
}

}  // namespace

void WriteReport(const FileFacts& facts, ScanDetails details, std::ostream& out) {
  const bool each = details != ScanDetails::ofFew || facts.scans.size() <= kMostInDetail;
  out << Printable(facts.path) << '\n';
  Lines line(out);
  line("kind", kKinds[static_cast<zSize>(facts.kind)]);
  if (facts.size) line("size", BytesText(*facts.size));
  if (facts.digitalSurf) WriteDigitalSurf(*facts.digitalSurf, line);
  if (facts.cloud) line("fields", facts.cloud->fields);
  const bool isDirectory = facts.kind == FileKind::directory;
  if (isDirectory && details != ScanDetails::all && facts.members.size() > kMostInDetail) {
    line("files", std::to_string(facts.members.size()));
  } else {
    for (const StoredFile& member : facts.members) {
      line(isDirectory ? "file" : "member",
           member.name + ", " + (member.size ? BytesText(*member.size) : "cannot be read"));
    }
  }
  if (facts.recording) {
    WriteRecording(*facts.recording, facts.frames, line);
  } else if (isDirectory) {
    line("frames", std::to_string(facts.frames));
  }
  if (each) {
    WriteScans(facts, line, out);
  } else {
    WriteSources(facts.scans, line, out);
  }
  WriteCautions(facts.cautions, line);
  for (const std::string& note : facts.notes) line("note", note);
  for (const Problem& problem : facts.problems) line("PROBLEM", ProblemText(problem));
  out << '\n';
}

void WriteVerdict(const FileFacts& facts, std::ostream& out) {
  const std::string path = Printable(facts.path);
  if (facts.problems.empty()) out << path << ": whole\n";
  for (const Problem& problem : facts.problems) {
    out << path << ": " << Printable(ProblemText(problem)) << '\n';
  }
}
