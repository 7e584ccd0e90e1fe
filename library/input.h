// SPDX-License-Identifier: MIT
// Whatever can be imported, as frames of sources.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "formats/pcd/reader.h"
#include "formats/recording/recording.h"
#include "notices.h"
#include "scan/scan.h"
#include "trelvane.h"

class Input {
 public:
  virtual ~Input() = default;
  Input() = default;
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  trelvane_file_kind kind = TRELVANE_FILE_FOLDER;
  trelvane_layout layout = TRELVANE_LAYOUT_NONE;
  zSize frames = 1;
  std::vector<ReplaySourceInfo> sources;

  // Frame and source are there; an item need not be. Both throw what reading throws; Read also
  // TRELVANE_ERROR_NOT_FOUND.
  virtual zSize CountItems(zSize frame, zSize source) = 0;
  virtual Scan Read(zSize frame, zSize source, zSize item) = 0;
};

struct InputOptions {
  Check check = Check::whole;  // of a recording
  PcdOptions cloud;
  Listener listener;
};

// Throws TRELVANE_ERROR_NOT_FOUND for a path that is none, and what opening throws.
std::unique_ptr<Input> OpenInput(const std::string& path, const InputOptions& options);
