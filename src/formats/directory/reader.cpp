// SPDX-License-Identifier: MIT
#include "formats/directory/reader.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "numbers.h"
#include "outputfile/partialfile.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "SurfaceFileConverter::importFiles"};

constexpr std::string_view kFrameMarker = "-Frame-";
constexpr std::size_t kIndexDigits = 4;
constexpr std::string_view kArrayMarker = "-Array-";
constexpr char kSeparator = static_cast<char>(std::filesystem::path::preferred_separator);

// The extension with its dot.
std::string ExtensionOf(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot + 1 == name.size()) {
    kOperation.Fail(kBadInput, "The file (%s) from the input directory has no an extension.", name);
  }
  return name.substr(dot);
}

// Finds the files whose names hold "-Frame-<index>_<tag>" anywhere, without searching all names for
// each frame and tag. The names must outlive it.
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
  std::vector<std::size_t> Find(zSize frame, std::string_view tag) const {
    std::vector<std::size_t> found;
    const auto entries = files_.find(Orv::Format("%04zu", frame));
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

std::optional<FrameFileName> ParseFrameFileName(std::string_view name) {
  const std::size_t marker = name.find(kFrameMarker);
  if (marker == name.npos) return std::nullopt;
  const std::size_t digits = marker + kFrameMarker.size();
  const std::size_t behind = std::min(digits + kIndexDigits, name.size());
  const std::size_t tag = std::min(behind + 1, name.size());
  const std::size_t dot = name.rfind('.');
  return FrameFileName{marker, name.substr(digits, kIndexDigits), name.substr(behind),
                       name.substr(tag, dot < tag ? name.npos : dot - tag)};
}

std::vector<std::string> ListFileNames(const std::string& directory,
                                       const Orv::Operation& operation, zAlloc alloc) {
  Orv::Object<void*> list;
  operation.Require(zArrayList_Construct(list.Out(), zType::zString, 10, alloc),
                    "Fail to construct a zArrayList object.");
  operation.Require(zDirectory_ListFiles(directory.c_str(), list.Get()),
                    "Fail to list all the file in the input directory.");
  std::vector<std::string> names;
  for (zSize i = 0; i < zArrayList_Count(list.Get()); ++i) {
    const auto& name = *static_cast<const zString*>(zArrayList_At(list.Get(), i));
    if (!IsPartialFileName(name)) names.push_back(name);
  }
  return names;
}

std::string PathInDirectory(const std::string& directory, const std::string& name) {
  return directory + kSeparator + name;
}

std::vector<std::string> PathsOf(const SurfaceDirectory& directory) {
  std::vector<std::string> paths;
  for (const std::string& name : directory.files) {
    paths.push_back(PathInDirectory(directory.path, name));
  }
  return paths;
}

SurfaceDirectory OpenSurfaceDirectory(const std::string& path, zAlloc alloc) {
  if (!zDirectory_Exists(path.c_str())) {
    kOperation.Fail(kMissing, "The input directory doesn't exist.");
  }
  SurfaceDirectory directory{path, -1, {}, ListFileNames(path, kOperation, alloc)};
  const std::vector<std::string>& names = directory.files;
  if (names.empty()) kOperation.Fail(kMissing, "Fail to find any file in the input directory.");
  const std::string extension = ExtensionOf(names.front());
  const auto first = ParseFrameFileName(names.front());
  for (const std::string& name : names) {
    if (ExtensionOf(name) != extension) {
      kOperation.Fail(kBadInput,
                      "Not all the files from the input directory belong to a file type.");
    }
    if (name.find(kArrayMarker) != std::string::npos) {
      kOperation.Fail(
          kBadInput,
          "The conversion from multiple files to arrayed messages hasn't been supported yet.");
    }
    const auto parts = ParseFrameFileName(name);
    if (!parts) {
      kOperation.Fail(kBadInput, "Fail to find the frame index in the input file (%s).", name);
    }
    if (parts->marker != first->marker) {
      kOperation.Fail(kBadInput, "The input files' names are not correct.");
    }
    directory.frameCount = std::max(directory.frameCount, parseInteger(std::string(parts->index)));
    if (parts->index == "0000") directory.tags.emplace_back(parts->tag);
  }
  ++directory.frameCount;
  if (static_cast<z64u>(directory.frameCount) * directory.tags.size() != names.size()) {
    kOperation.Fail(kBadInput,
                    "Not all the files' names in the input directory are formated well.");
  }
  if (extension != ".sur") {
    kOperation.Fail(kBadInput,
                    "The multi-files conversion supports only the .sur files importing.");
  }
  return directory;
}

std::vector<std::vector<std::string>> FilesByFrame(const SurfaceDirectory& directory) {
  const FrameFiles files(directory.files);
  std::vector<std::vector<std::string>> frames(static_cast<zSize>(directory.frameCount));
  for (zSize frame = 0; frame < frames.size(); ++frame) {
    for (const std::string& tag : directory.tags) {
      for (const std::size_t file : files.Find(frame, tag)) {
        frames[frame].push_back(PathInDirectory(directory.path, directory.files[file]));
      }
    }
  }
  return frames;
}
