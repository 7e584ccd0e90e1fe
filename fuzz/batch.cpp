// SPDX-License-Identifier: MIT
// What a batch reads of others: lists of names, templates, and lines of its record.
#include <filesystem>

#include "batch/namelist.h"
#include "batch/nametemplate.h"
#include "batch/record.h"
#include "fuzz.h"

namespace {

// No name leads out of the folder of outputs, whatever template and parts are.
void RequireBelow(const std::string& name) {
  const std::filesystem::path path(name);
  Require(path.is_relative() && path.has_filename() && path == path.lexically_normal());
  for (const std::filesystem::path& component : path) Require(component != "..");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const NameEnd end : {NameEnd::line, NameEnd::nul}) {
    for (const std::string& name : ParseNameList(text, end)) {
      Require(!name.empty() && text.find(name) != std::string::npos);
    }
  }
  Attempt([&] { RequireBelow(NameTemplate(text).Fill({"folder/below", "stem", "0000", "Top"})); });
  Attempt([&] {
    const std::string part = text.substr(0, size / 2);
    RequireBelow(NameTemplate("{folder}/{stem}{frame}/{source}").Fill({part, part, part, text}));
  });
  if (const std::optional<Entry> entry = Entry::Parse(text)) {
    // What was read is written so that it is read as the same.
    const std::string line = entry->ToLine();
    const std::optional<Entry> again = Entry::Parse(line);
    Require(again.has_value() && again->ToLine() == line);
  }
  return 0;
}
