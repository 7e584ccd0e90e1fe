// SPDX-License-Identifier: MIT
// What directories of surfaces tell.
#include <algorithm>
#include <map>

#include "inspect/findings.h"
#include "surfacefileconverter/surfacefileconverter.h"
#include "surfacefileconverter/wholefile.h"

namespace {

std::vector<std::string> ListFiles(const std::string& path) {
  Orv::Object<void*> list;
  zStatus status = zArrayList_Construct(list.Out(), zType::zString, 0, &zAllocator::Default());
  if (status == zOK) status = zDirectory_ListFiles(path.c_str(), list.Get());
  if (status != zOK) {
    throw Orv::Exception(__LINE__, "inspection", status, "DescribeDirectory",
                         "The directory cannot be listed");
  }
  std::vector<std::string> names;
  for (zSize i = 0; i < zArrayList_Count(list.Get()); ++i) {
    names.push_back(*static_cast<const zString*>(zArrayList_At(list.Get(), i)));
  }
  return names;
}

// Whose file a name says that it is.
struct FrameName {
  zSize frame = 0;
  std::string source;
};

// Of <prefix>-Frame-<four digits>_<source>.sur; of another name, the name itself as the source.
FrameName ParseName(const std::string& name) {
  constexpr std::string_view kMarker = "-Frame-";
  constexpr std::size_t kDigits = 4;
  const std::size_t marker = name.find(kMarker);
  if (marker == name.npos) return {0, name};
  const std::string_view rest = std::string_view(name).substr(marker + kMarker.size());
  zSize frame = 0;
  for (const char c : rest.substr(0, kDigits)) {
    if (c < '0' || c > '9') return {0, name};
    frame = frame * 10 + static_cast<zSize>(c - '0');
  }
  if (rest.size() <= kDigits) return {0, name};
  const std::string_view tag = rest.substr(kDigits + 1);
  return {frame, std::string(tag.substr(0, tag.rfind('.')))};
}

FileFacts DescribeFile(const std::string& path, const FrameName& place, const Findings& directory) {
  FileFacts facts;
  facts.path = path;
  facts.kind = FileKind::sur;
  const auto index = static_cast<z32u>(place.frame);
  const ScanVisitor visit = [&](zSize, z32u, const TaggedScan& scan) {
    if (directory.visit) directory.visit(place.frame, index, {place.source, {}, scan.scan});
  };
  Findings findings(facts, visit, directory.progress);
  try {
    zBytes bytes;
    ReadFileBuffer(path, bytes);
    facts.size = bytes.size();
    DescribeDigitalSurf(bytes, findings);
  } catch (const Orv::Exception& failure) {
    findings.Problem({}, "%s", failure.what());
  }
  for (PlacedScan& scan : facts.scans) {
    scan.frame = place.frame;
    scan.index = index;
    scan.source = place.source;
  }
  return facts;
}

}  // namespace

void DescribeDirectory(const std::string& path, Findings& findings) {
  FileFacts& facts = findings.facts;
  try {
    SurfaceFileConverter converter;
    converter.importFiles(path);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    findings.Note("a conversion refuses the directory: %s", failure.what());
  }
  std::map<std::string, zSize> notes;  // and how many files have them
  for (const std::string& name : ListFiles(path)) {
    FileFacts file =
        DescribeFile(std::string(path).append("/").append(name), ParseName(name), findings);
    facts.members.push_back({name, file.size});
    facts.size += file.size;
    for (const std::string& note : file.notes) ++notes[note];
    for (PlacedScan& scan : file.scans) {
      facts.frames = std::max(facts.frames, scan.frame + 1);
      facts.scans.push_back(std::move(scan));
    }
    for (const Problem& problem : file.problems) {
      findings.Problem(problem.offset, "%s: %s", name, problem.text);
    }
    findings.progress.AddBytes(file.size);
  }
  for (const auto& [note, files] : notes) {
    findings.Note("%zu of %zu files: %s", files, facts.members.size(), note);
  }
}
