// SPDX-License-Identifier: MIT
// A recording or archive that is written frame by frame.
#pragma once

#include <span>

#include "failure.h"
#include "formats/archive/writer.h"
#include "scan/scan.h"
#include "sdk/pipeline.h"

struct trelvane_writer {
 public:
  // Throws TRELVANE_ERROR_ARGUMENT for another extension, and what opening the output throws.
  trelvane_writer(const std::string& path, std::vector<ReplaySourceInfo> sources,
                  const std::string& configFolder);

  // Throw TRELVANE_ERROR_ARGUMENT for what is not the frame's next step, TRELVANE_ERROR_CLOSED
  // after the end, and what writing throws, which is the end.
  void BeginFrame();
  void Add(const Scan& scan);
  void AddItems(std::span<const trelvane_scan* const> items);
  void Close();

 private:
  template <class Step>
  void Take(const Step& step);
  zStream Stream() const { return archive_ ? archive_->Stream() : file_.Stream(); }
  bool HasFailed() const { return archive_ ? archive_->HasFailed() : file_.HasFailed(); }
  [[noreturn]] void FailToWrite() const;
  void RequireCompleteFrame() const;
  const ReplaySourceInfo& NextSource(bool arrayed) const;
  void Write(const Orv::Object<void*>& message);

  std::string path_;
  std::vector<ReplaySourceInfo> sources_;
  OutputFile file_;                       // unless it is
  std::optional<ArchiveWriter> archive_;  // an archive
  Plovia::ReplaySerializer recording_;    // into one of them; ends before it
  zSize frames_ = 0;
  zSize added_ = 0;  // messages of the last frame
  bool ended_ = false;
};
