// SPDX-License-Identifier: MIT
#include "surfacefileconverter/exportnames.h"

#include "outputfile/outputfile.h"
#include "surfacefileconverter/filenames.h"

namespace {

std::vector<std::string> NumberItems(const std::string& name, zSize count, const std::string& tag) {
  if (count == 0) return {};
  return GetIncrementalIndexFileNames(name, count, "Array", tag);
}

}  // namespace

void FileNaming::Claim(const Orv::Operation& operation, const std::vector<std::string>& names,
                       const std::vector<std::string>& inputs) const {
  RequireSeparateFiles(operation, names, inputs);
  if (claim) claim(names);
}

std::vector<std::string> NamesOfMessage(const Recording& recording, const ExportedMessage& message,
                                        const std::string& exportName, const FileNaming& naming) {
  const zSize source = message.source;
  const z32u frame = message.frame;
  const bool arrayed = recording.sources[source].arrayed != 0;
  const zSize count = arrayed ? recording.ItemCount(frame, source) : 1;
  const std::string& tag = recording.tags[source];
  if (naming.name) {
    const std::string name = naming.name(frame, tag);
    return count == 1 ? std::vector{name} : NumberItems(name, count, "");
  }
  if (message.single && recording.sources.size() == 1 && count == 1) return {exportName};
  const auto frameName = [&](const std::string& shown) {
    return GetIndexFileName(exportName, "Frame", static_cast<z32s>(frame), shown);
  };
  if (!arrayed) return {frameName(tag)};
  return NumberItems(frameName(""), count, tag);
}

std::vector<std::string> NamesOfSources(const Recording& recording, const std::string& exportName,
                                        const FileNaming& naming) {
  if (!naming.name) {
    return recording.sources.size() == 1 ? std::vector{exportName}
                                         : GetAppendedFileNames(exportName, recording.tags);
  }
  std::vector<std::string> names;
  for (const std::string& tag : recording.tags) names.push_back(naming.name(std::nullopt, tag));
  return names;
}
