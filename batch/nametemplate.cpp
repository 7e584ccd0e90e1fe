// SPDX-License-Identifier: MIT
#include "batch/nametemplate.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "sdk/object.h"

namespace {

const std::map<std::string_view, std::string NameParts::*> kParts{{"folder", &NameParts::folder},
                                                                  {"stem", &NameParts::stem},
                                                                  {"frame", &NameParts::frame},
                                                                  {"source", &NameParts::source}};

}  // namespace

std::string FrameText(std::uint32_t frame) { return Orv::Format("%04u", frame); }

NameTemplate::NameTemplate(std::string_view text) {
  const auto fail = [all = std::string(text)] {
    throw BadName("\"" + all + "\" is no template of {folder}, {stem}, {frame} and {source}");
  };
  std::string plain;
  while (!text.empty()) {
    if (text.starts_with("{{") || text.starts_with("}}")) {
      plain += text.front();
      text.remove_prefix(2);
    } else if (text.front() == '{') {
      const std::size_t end = text.find('}');
      if (end == std::string_view::npos) fail();
      const auto part = kParts.find(text.substr(1, end - 1));
      if (part == kParts.end()) fail();
      pieces_.push_back({std::exchange(plain, {}), nullptr});
      pieces_.push_back({"", part->second});
      text.remove_prefix(end + 1);
    } else if (text.front() == '}') {
      fail();
    } else {
      plain += text.front();
      text.remove_prefix(1);
    }
  }
  pieces_.push_back({plain, nullptr});
}

bool NameTemplate::Has(std::string NameParts::*part) const {
  return std::ranges::any_of(pieces_, [part](const Piece& piece) { return piece.part == part; });
}

std::string NameTemplate::Fill(const NameParts& parts) const {
  std::string name;
  for (const Piece& piece : pieces_) name += piece.part ? parts.*piece.part : piece.text;
  std::filesystem::path path;
  for (const std::filesystem::path& component : std::filesystem::path(name).relative_path()) {
    if (component == ".." || component.string().find('\0') != std::string::npos) {
      throw BadName("the output would have the name " + name);
    }
    path /= component;
  }
  path = path.lexically_normal();
  if (!path.has_filename() || path == ".") throw BadName("the output would have no name");
  return path.string();
}
