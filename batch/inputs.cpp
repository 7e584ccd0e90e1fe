// SPDX-License-Identifier: MIT
#include "batch/inputs.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <unordered_set>

namespace fs = std::filesystem;

namespace {

std::optional<FileType> TypeOf(const fs::path& path) {
  return ImportType(path.extension().string());
}

fs::path WithoutDetours(const fs::path& path) {
  fs::path kept;
  for (const fs::path& component : path.lexically_normal().relative_path()) {
    if (component != "." && component != "..") kept /= component;
  }
  return kept;
}

// "scans" for "../scans/", and nothing for ".".
fs::path FolderBelow(const fs::path& folder) {
  fs::path normal = folder.lexically_normal();
  if (!normal.has_filename()) normal = normal.parent_path();
  const bool plain = normal.is_relative() && *normal.begin() != "..";
  if (plain) return normal == "." ? fs::path() : normal;
  return fs::weakly_canonical(normal).filename();
}

bool IsFolder(const fs::path& path) {
  std::error_code unknown;
  return fs::is_directory(path, unknown);
}

class Finder {
 public:
  explicit Finder(const Search& search) : search_(search) {
    if (!search.leaveOut.empty()) leaveOut_ = fs::weakly_canonical(search.leaveOut);
  }

  void Add(const std::string& name) {
    if (IsFolder(name)) return AddFolder(name, FolderBelow(name));
    const std::optional<FileType> type = TypeOf(name);
    std::error_code missing;
    const bool refused = !type && fs::exists(name, missing);
    AddInput({name,
              WithoutDetours(name),
              type,
              {},
              refused ? "The extension of the name is not supported" : ""});
  }

  std::vector<Input> Take() { return std::move(inputs_); }

 private:
  struct Folder {
    fs::path path, below;
  };

  // Folders that are still to be searched, the next one last.
  void AddFolder(const fs::path& path, const fs::path& below) {
    std::vector<Folder> folders{{path, below}};
    while (!folders.empty()) {
      const Folder folder = std::move(folders.back());
      folders.pop_back();
      std::vector<Folder> inner = SearchFolder(folder);
      std::move(inner.rbegin(), inner.rend(), std::back_inserter(folders));
    }
  }

  bool IsLeftOut(const fs::path& folder) const {
    return !leaveOut_.empty() && fs::weakly_canonical(folder) == leaveOut_;
  }

  // Adds its files, and tells the folders in it.
  std::vector<Folder> SearchFolder(const Folder& folder) {
    std::vector<fs::path> entries;
    std::error_code failed;
    for (fs::directory_iterator entry(folder.path, failed), end; !failed && entry != end;
         entry.increment(failed)) {
      entries.push_back(entry->path());
    }
    if (failed) {
      AddInput({folder.path.string(), folder.below, {}, {}, failed.message()});
      return {};
    }
    std::ranges::sort(entries);
    const auto isPart = [this](const fs::path& path) {
      return search_.foldersAreRecordings && TypeOf(path) == SUR && !IsFolder(path);
    };
    if (std::ranges::any_of(entries, isPart)) {
      AddInput({folder.path.string(), folder.below, {}, {}, {}});
    }
    std::vector<Folder> inner;
    for (const fs::path& entry : entries) {
      const fs::path below = folder.below / entry.filename();
      if (IsFolder(entry)) {
        if (!fs::is_symlink(entry) && !IsLeftOut(entry)) inner.push_back({entry, below});
      } else if (const std::optional<FileType> type = TypeOf(entry); type && !isPart(entry)) {
        AddInput({entry.string(), below, type, {}, {}});
      }
    }
    return inner;
  }

  void AddInput(Input input) {
    if (!known_.insert(fs::path(input.path).lexically_normal().string()).second) return;
    try {
      input.state = StateOf(input.path);
    } catch (const fs::filesystem_error& failure) {
      if (input.refusal.empty()) input.refusal = failure.code().message();
    }
    inputs_.push_back(std::move(input));
  }

  const Search& search_;
  fs::path leaveOut_;
  std::unordered_set<std::string> known_;
  std::vector<Input> inputs_;
};

}  // namespace

double SecondsOf(fs::file_time_type time) {
  const auto since = std::chrono::file_clock::to_sys(time).time_since_epoch();
  return std::chrono::duration<double>(since).count();
}

InputState StateOf(const std::string& path) {
  InputState state{0, SecondsOf(fs::last_write_time(path))};
  if (!fs::is_directory(path)) {
    state.bytes = fs::file_size(path);
    return state;
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    if (!entry.is_regular_file()) continue;
    state.bytes += entry.file_size();
    state.changed = std::max(state.changed, SecondsOf(entry.last_write_time()));
  }
  return state;
}

std::vector<Input> FindInputs(const std::vector<std::string>& names, const Search& search) {
  Finder finder(search);
  for (const std::string& name : names) finder.Add(name);
  return finder.Take();
}
