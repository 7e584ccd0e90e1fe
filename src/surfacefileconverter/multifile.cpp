// SPDX-License-Identifier: MIT
// A directory of surfaces, one file for each frame and source, as one recording. Its files are
// named <prefix>-Frame-<four digits>_<source tag>.sur.
#include <algorithm>
#include <filesystem>
#include <map>

#include "getfilestream/getfilestream.h"
#include "numbers.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/surfacefileconverter.h"
#include "surfacefileconverter/wholefile.h"

namespace {

constexpr const char* kImport = "SurfaceFileConverter::importFiles";

constexpr std::string_view kFrameMarker = "-Frame-";
constexpr std::string_view kArrayMarker = "-Array-";
constexpr std::size_t kIndexDigits = 4;
constexpr char kSeparator = static_cast<char>(std::filesystem::path::preferred_separator);

template <class... Values>
[[noreturn]] void Fail(int line, zStatus status, std::string_view format, const Values&... values) {
  throw Orv::Exception(line, kSourceFile, status, kImport, format, values...);
}

std::vector<std::string> ListFiles(const std::string& directory, zAlloc alloc) {
  if (!zDirectory_Exists(directory.c_str())) {
    Fail(__LINE__, kMissing, "The input directory doesn't exist.");
  }
  Orv::Object<void*> list;
  zStatus status = zArrayList_Construct(list.Out(), zType::zString, 10, alloc);
  if (status != zOK) Fail(__LINE__, status, "Fail to construct a zArrayList object.");
  status = zDirectory_ListFiles(directory.c_str(), list.Get());
  if (status != zOK) {
    Fail(__LINE__, status, "Fail to list all the file in the input directory.");
  }
  std::vector<std::string> names;
  for (zSize i = 0; i < zArrayList_Count(list.Get()); ++i) {
    names.push_back(*static_cast<const zString*>(zArrayList_At(list.Get(), i)));
  }
  if (names.empty()) Fail(__LINE__, kMissing, "Fail to find any file in the input directory.");
  return names;
}

// The extension with its dot.
std::string ExtensionOf(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot + 1 == name.size()) {
    Fail(__LINE__, kBadInput, "The file (%s) from the input directory has no an extension.", name);
  }
  return name.substr(dot);
}

// What follows the digits and one separator, up to the dot of the extension; to the end of a name
// whose separator is that dot.
std::string TagOf(const std::string& name, std::size_t digits) {
  const std::size_t begin = digits + kIndexDigits + 1;
  if (begin > name.size()) return {};
  const std::size_t dot = name.rfind('.');
  return name.substr(begin, dot < begin ? std::string::npos : dot - begin);
}

// "scans" for "scans/", so that what is named after the directory stands beside it.
std::string WithoutEndingSeparators(std::string path) {
  while (path.size() > 1 && (path.back() == '/' || path.back() == kSeparator)) path.pop_back();
  return path;
}

// Finds the files whose names hold "-Frame-<index>_<tag>" anywhere, without searching all names for
// each frame and tag.
class FrameFiles {
 public:
  explicit FrameFiles(const std::vector<std::string>& names) {
    for (std::size_t file = 0; file < names.size(); ++file) {
      const std::string_view name = names[file];
      for (auto at = name.find(kFrameMarker); at != name.npos;
           at = name.find(kFrameMarker, at + 1)) {
        const std::string_view rest = name.substr(at + kFrameMarker.size());
        if (rest.size() <= kIndexDigits || rest[kIndexDigits] != '_') continue;
        const std::string index(rest.substr(0, kIndexDigits));
        files_[index].push_back({rest.substr(kIndexDigits + 1), file});
      }
    }
    for (auto& [index, entries] : files_) std::ranges::sort(entries, {}, &Entry::afterIndex);
  }

  // Positions in the list of names, ascending.
  std::vector<std::size_t> Find(int frame, std::string_view tag) const {
    std::vector<std::size_t> found;
    const auto entries = files_.find(Orv::Format("%04d", frame));
    if (entries == files_.end()) return found;
    auto entry = std::ranges::lower_bound(entries->second, tag, {}, &Entry::afterIndex);
    for (; entry != entries->second.end() && entry->afterIndex.starts_with(tag); ++entry) {
      found.push_back(entry->file);
    }
    std::ranges::sort(found);
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
  }

 private:
  struct Entry {
    std::string_view afterIndex;  // the name from the tag on
    std::size_t file;
  };
  std::map<std::string, std::vector<Entry>> files_;  // by the four digits
};

}  // namespace

void SurfaceFileConverter::importFiles(std::string directory) {
  const std::vector<std::string> names = ListFiles(directory, allocator);
  multiFrameCount = -1;
  scannerFileTags.clear();
  inputFiles.clear();
  replayBuffer = {};
  fileBuffer = std::make_shared<zBytes>();  // the export reads each file into it
  const std::string extension = ExtensionOf(names.front());
  const std::size_t markerPosition = names.front().find(kFrameMarker);
  for (const std::string& name : names) {
    if (ExtensionOf(name) != extension) {
      Fail(__LINE__, kBadInput,
           "Not all the files from the input directory belong to a file type.");
    }
    if (name.find(kArrayMarker) != std::string::npos) {
      Fail(__LINE__, kBadInput,
           "The conversion from multiple files to arrayed messages hasn't been supported yet.");
    }
    const std::size_t marker = name.find(kFrameMarker);
    if (marker == std::string::npos) {
      Fail(__LINE__, kBadInput, "Fail to find the frame index in the input file (%s).", name);
    }
    if (marker != markerPosition) {
      Fail(__LINE__, kBadInput, "The input files' names are not correct.");
    }
    const std::size_t digits = marker + kFrameMarker.size();
    const std::string index = name.substr(digits, kIndexDigits);
    multiFrameCount = std::max(multiFrameCount, parseInteger(index));
    if (index == "0000") scannerFileTags.push_back(TagOf(name, digits));
    inputFiles.push_back(name);
  }
  ++multiFrameCount;
  if (static_cast<z64u>(multiFrameCount) * scannerFileTags.size() != names.size()) {
    Fail(__LINE__, kBadInput, "Not all the files' names in the input directory are formated well.");
  }
  multiFileMode = true;
  if (extension != ".sur") {
    Fail(__LINE__, kBadInput, "The multi-files conversion supports only the .sur files importing.");
  }
  fileType = SUR;
  imported = true;
  recording = false;
  inputBaseName = WithoutEndingSeparators(directory);
  inputDirectory = std::move(directory);
}

std::vector<Plovia::ReplayFrame>& SurfaceFileConverter::GenerateSurfaceMsgsFromMultiFiles(
    std::vector<Plovia::ReplayFrame>& frameList) {
  if (!multiFileMode || multiFrameCount < 1 || scannerFileTags.empty()) {
    throw Orv::Exception(__LINE__, kSourceFile, kBadInput,
                         "SurfaceFileConverter::GenerateSurfaceMsgsFromMultiFiles",
                         "Fail to import the input directory.");
  }
  const FrameFiles files(inputFiles);
  frameList.clear();
  for (z32s frame = 0; frame < multiFrameCount; ++frame) {
    Plovia::ReplayFrame& messages = frameList.emplace_back();
    for (const std::string& tag : scannerFileTags) {
      for (const std::size_t file : files.Find(frame, tag)) {
        if (fileType != SUR) continue;  // a file of another kind was imported since
        ReadFileBuffer(inputDirectory + kSeparator + inputFiles[file], *fileBuffer);
        GenerateSurfaceMsgFromBuffer(messages.emplace_back(), *fileBuffer, SUR, allocator);
      }
    }
  }
  return frameList;
}
