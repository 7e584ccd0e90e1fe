// SPDX-License-Identifier: MIT
#include "inspect/report.h"

using Json = nlohmann::ordered_json;

namespace {

constexpr const char* kKinds[] = {nullptr, "sur",       "pro",     "srf",
                                  "pcd",   "recording", "archive", "directory"};
constexpr const char* kScanKinds[] = {"surface", "cloud", "profile", "point_profile"};

Json ToJson(const zPoint3d64f& point) { return {{"x", point.x}, {"y", point.y}, {"z", point.z}}; }

template <class Value>
Json ToJson(const std::optional<Range<Value>>& range) {
  if (!range) return nullptr;
  return {{"lowest", range->lowest}, {"highest", range->highest}};
}

Json ToJson(const std::optional<BoundingBox6>& box) {
  if (!box) return nullptr;
  return {{"center", ToJson(box->center)}, {"size", ToJson(box->size)}};
}

Json ToJson(const std::optional<MxStamp>& stamp) {
  if (!stamp) return nullptr;
  return {{"frame", stamp->frame},
          {"time", stamp->time},
          {"encoder", stamp->encoder},
          {"z_encoder", stamp->zEncoder},
          {"inputs", stamp->inputs}};
}

Json ToJson(const std::vector<Caution>& cautions) {
  Json list = Json::array();
  for (const Caution& caution : cautions) {
    list.push_back({{"key", caution.key}, {"text", caution.text}});
  }
  return list;
}

// Null where it is not known.
Json ToJson(const std::optional<z64u>& size) { return size ? Json(*size) : Json(); }

Json ToJson(const std::array<std::string, 3>& texts) {
  return {{"x", texts[0]}, {"y", texts[1]}, {"z", texts[2]}};
}

Json ToJson(const DigitalSurfFacts& facts) {
  return {{"object_name", facts.objectName},
          {"operator_name", facts.operatorName},
          {"comment", facts.comment},
          {"acquired", facts.acquired},
          {"object_type", facts.objectType},
          {"object_count", facts.objectCount},
          {"bits_per_point", facts.bitsPerPoint},
          {"special_points", facts.specialPoints},
          {"axes", ToJson(facts.axes)},
          {"step_units", ToJson(facts.stepUnits)},
          {"length_units", ToJson(facts.lengthUnits)},
          {"private_bytes", facts.privateBytes},
          {"bytes_after_samples", facts.bytesAfterSamples}};
}

Json ToJson(const RecordingFacts& facts) {
  Json scanners = Json::array();
  for (const Plovia::ReplayScannerInfo& scanner : facts.scanners) {
    Json sources = Json::array();
    for (const ReplaySourceInfo& source : scanner.sources) {
      sources.push_back({{"name", source.name},
                         {"display_name", source.displayName},
                         {"data_type", source.dataType},
                         {"data_type_name", SourceTypeName(source.dataType)},
                         {"arrayed", source.arrayed != 0}});
    }
    scanners.push_back({{"family", scanner.family},
                        {"id", scanner.id},
                        {"display_name", scanner.displayName},
                        {"sources", std::move(sources)}});
  }
  return {{"layout", facts.classic ? "classic" : "segmented"},
          {"segments", facts.segments},
          {"scanners", std::move(scanners)}};
}

// Only ASCII, so that no control character reaches a terminal; bytes that are no UTF-8 become
// U+FFFD.
std::string Dump(const Json& document) {
  return document.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace

Json FiguresToJson(const Figures& figures) {
  return {{"valid_points", figures.validPoints},
          {"mean", figures.mean},
          {"median", figures.median},
          {"sa", figures.sa},
          {"sq", figures.sq},
          {"sz", figures.sz},
          {"sp", figures.sp},
          {"sv", figures.sv},
          {"ssk", figures.ssk},
          {"sku", figures.sku}};
}

Json ScanToJson(const PlacedScan& placed) {
  const ScanFacts& scan = placed.facts;
  Json document = {{"frame", placed.frame},
                   {"index", placed.index},
                   {"source", placed.source},
                   {"item", placed.item ? Json(*placed.item) : Json()},
                   {"kind", kScanKinds[static_cast<zSize>(scan.kind)]},
                   {"width", scan.width},
                   {"length", scan.length},
                   {"points", scan.points},
                   {"valid_points", scan.validPoints},
                   {"scale", ToJson(scan.scale)},
                   {"offset", ToJson(scan.offset)},
                   {"heights", ToJson(scan.heights)},
                   {"bounding_box", ToJson(scan.box)},
                   {"intensity", ToJson(scan.intensity)},
                   {"stamp", ToJson(scan.stamp)},
                   {"cautions", ToJson(scan.cautions)}};
  if (scan.figures) {
    document["figures"] = FiguresToJson(scan.figures->plain.figures);
    document["figures_levelled"] = FiguresToJson(scan.figures->levelled.figures);
  }
  return document;
}

Json FileToJson(const FileFacts& facts) {
  const char* kind = kKinds[static_cast<zSize>(facts.kind)];
  Json document = {{"file", facts.path},
                   {"kind", kind == nullptr ? Json() : Json(kind)},
                   {"bytes", ToJson(facts.size)},
                   {"frames", facts.frames}};
  if (facts.digitalSurf) document["digital_surf"] = ToJson(*facts.digitalSurf);
  if (facts.cloud) {
    document["pcd"] = {{"fields", facts.cloud->fields},
                       {"viewpoint", facts.cloud->viewpoint},
                       {"data", facts.cloud->binary ? "binary" : "ascii"}};
  }
  if (facts.recording) document["recording"] = ToJson(*facts.recording);
  if (!facts.members.empty()) {
    Json members = Json::array();
    for (const StoredFile& member : facts.members) {
      members.push_back({{"name", member.name}, {"bytes", ToJson(member.size)}});
    }
    document["members"] = std::move(members);
  }
  document["cautions"] = ToJson(facts.cautions);
  document["notes"] = facts.notes;
  Json problems = Json::array();
  for (const Problem& problem : facts.problems) {
    problems.push_back({{"offset", ToJson(problem.offset)}, {"text", problem.text}});
  }
  document["problems"] = std::move(problems);
  return document;
}

void WriteJson(const FileFacts& facts, std::ostream& out) {
  std::string head = Dump(FileToJson(facts));
  head.pop_back();  // the closing brace
  out << head << ",\"scans\":[";
  // One at a time: a recording may hold very many.
  const char* separator = "";
  for (const PlacedScan& scan : facts.scans) {
    out << separator << Dump(ScanToJson(scan));
    separator = ",";
  }
  out << "]}\n";
}
