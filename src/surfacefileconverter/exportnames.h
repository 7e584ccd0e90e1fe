// SPDX-License-Identifier: MIT
// Names of the files that a recording becomes.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "formats/recording/recording.h"

// How the files of an export are named, for whoever has names of their own.
struct FileNaming {
  // The file of a frame, or of all frames together, and of a source's tag. Empty: it is named after
  // the export name.
  std::function<std::string(std::optional<z32u> frame, const std::string& tag)> name{};
  // Is told all names before a file is written, and throws what speaks against them; may be empty.
  std::function<void(const std::vector<std::string>& names)> claim{};

  // Refuses names of which two are one, or one is an input, or that `claim` does not want.
  void Claim(const Orv::Operation& operation, const std::vector<std::string>& names,
             const std::vector<std::string>& inputs) const;
};

struct ExportedMessage {
  z32u frame;
  zSize source;
  bool single;  // no other frame is exported
};

// A name for each item of a message; none for an array message without items.
std::vector<std::string> NamesOfMessage(const Recording& recording, const ExportedMessage& message,
                                        const std::string& exportName, const FileNaming& naming);
// A name for each source, whose frames are all in one file.
std::vector<std::string> NamesOfSources(const Recording& recording, const std::string& exportName,
                                        const FileNaming& naming);
