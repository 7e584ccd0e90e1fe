// SPDX-License-Identifier: MIT
#include "writer.h"

#include <algorithm>

#include "handles.h"
#include "message.h"
#include "options.h"
#include "scan/box.h"
#include "statuses.h"
#include "surfacefileconverter/recordingexport.h"
#include "text.h"

namespace {

constexpr Orv::Operation kOperation{"library", "trelvane_writer"};

using Handle = Orv::Object<void*>;

ScanKind KindOf(const ReplaySourceInfo& source) {
  switch (source.dataType) {
    case UNIFORM_PROFILE:
      return ScanKind::profile;
    case PROFILE_POINT_CLOUD:
      return ScanKind::pointProfile;
    case UNIFORM_SURFACE:
      return ScanKind::surface;
    default:
      return ScanKind::cloud;
  }
}

Handle MessageFor(const ReplaySourceInfo& source, const Scan& scan) {
  if (scan.kind != KindOf(source)) {
    Refuse("The scan is of another kind than the source " + source.name);
  }
  if (scan.box) return MakeMessage(scan);
  Scan complete = scan;  // shares the arrays
  complete.box = FindBox(scan);
  return MakeMessage(complete);
}

// A recording tells its texts in UTF-8.
std::string NameGiven(const char* text, const char* name) {
  std::string given = TextGiven(text, name);
  for (std::string_view rest = given; !rest.empty();) {
    const std::optional<Character> character = FirstCharacter(rest);
    if (!character) Refuse(std::string(name) + " is no UTF-8");
    rest.remove_prefix(character->size);
  }
  return given;
}

ReplaySourceInfo SourceGiven(const trelvane_source_info& given) {
  const trelvane_source_info& info = Sized(&given, "sources");
  if (info.type < UNIFORM_PROFILE || info.type > SURFACE_POINT_CLOUD) {
    Refuse("There is no such type of source");
  }
  ReplaySourceInfo source =
      MakeSource(NameGiven(info.name, "name"), static_cast<DataSourceType>(info.type));
  if (info.display_name != nullptr) {
    source.displayName = NameGiven(info.display_name, "display_name");
  }
  source.arrayed = FlagGiven(info.arrayed, "arrayed") ? 1 : 0;
  return source;
}

std::vector<ReplaySourceInfo> SourcesGiven(const trelvane_source_info* given, zSize count) {
  constexpr zSize kMost = 65535;
  if (count == 0 || count > kMost) Refuse("A recording has 1 to 65535 sources");
  std::vector<ReplaySourceInfo> sources;
  const std::span all(&Given(given, "sources"), count);
  std::ranges::transform(all, std::back_inserter(sources), SourceGiven);
  return sources;
}

}  // namespace

trelvane_writer::trelvane_writer(const std::string& path, std::vector<ReplaySourceInfo> sources,
                                 const std::string& configFolder)
    : path_(path), sources_(std::move(sources)) {
  if (path.ends_with(".ovrec")) {
    archive_.emplace(path, configFolder, &zAllocator::Default());
  } else if (path.ends_with(".rep") || path.ends_with(".rec")) {
    if (file_.Open(path) != zOK) {
      throw FileNotWritten(kOperation.Error(kBadInput, "Failed to open " + path));
    }
  } else {
    Refuse("The extension of " + path + " stands for no recording");
  }
  Take([&] {
    recording_.BeginReplay(Stream(), false);
    recording_.WriteScannerInfo({MakeScanner(sources_)});
  });
}

void trelvane_writer::BeginFrame() {
  Take([&] {
    RequireCompleteFrame();
    recording_.WriteIndexInfo(0);
    ++frames_;
    added_ = 0;
  });
}

void trelvane_writer::Add(const Scan& scan) {
  Take([&] { Write(MessageFor(NextSource(false), scan)); });
}

void trelvane_writer::AddItems(std::span<const trelvane_scan* const> items) {
  Take([&] {
    const ReplaySourceInfo& source = NextSource(true);
    Handle array;
    kOperation.Require(MxArrayMsg_Construct(array.Out(), &zAllocator::Default()),
                       "Failed to construct an array");
    for (const trelvane_scan* item : items) {
      const Handle message = MessageFor(source, Given(item, "scans").scan);
      kOperation.Require(MxArrayMsg_Add(array.Get(), message.Get()), "Failed to add an item");
    }
    Write(array);
  });
}

void trelvane_writer::Close() {
  Take([&] {
    RequireCompleteFrame();
    if (frames_ == 0) Refuse("A recording has at least one frame");
    recording_.EndReplay();
    ended_ = true;
    if (archive_) return archive_->Finish();
    if (file_.HasFailed() || file_.Finish() != zOK) FailToWrite();
  });
}

// What the caller has mistaken changes nothing; all else is the end.
template <class Step>
void trelvane_writer::Take(const Step& step) {
  if (ended_)
    throw Failure(TRELVANE_ERROR_CLOSED, "The writer of " + path_ + " was closed or failed");
  try {
    step();
  } catch (const Failure&) {
    throw;
  } catch (const Orv::Exception&) {
    ended_ = true;
    if (HasFailed()) FailToWrite();
    throw;
  } catch (...) {
    ended_ = true;
    throw;
  }
}

void trelvane_writer::FailToWrite() const {
  throw FileNotWritten(kOperation.Error(kBadInput, "Failed to write " + path_));
}

void trelvane_writer::RequireCompleteFrame() const {
  if (frames_ > 0 && added_ < sources_.size()) {
    Refuse("The frame has no scan yet of the source " + sources_[added_].name);
  }
}

const ReplaySourceInfo& trelvane_writer::NextSource(bool arrayed) const {
  if (frames_ == 0) Refuse("No frame has been begun");
  if (added_ == sources_.size()) Refuse("The frame has a scan of each source");
  const ReplaySourceInfo& source = sources_[added_];
  if ((source.arrayed != 0) != arrayed) {
    Refuse("The source " + source.name + (arrayed ? " is not arrayed" : " is arrayed"));
  }
  return source;
}

void trelvane_writer::Write(const Handle& message) {
  recording_.WriteData(message);
  ++added_;
}

trelvane_status trelvane_writer_open(const char* path, const trelvane_source_info* sources,
                                     std::size_t source_count,
                                     const trelvane_writer_options* options,
                                     trelvane_writer** writer, trelvane_error* error) {
  return RunToMake(writer, "writer", error, [&] {
    const trelvane_writer_options given = OptionsGiven(options);
    return std::make_unique<trelvane_writer>(
        TextGiven(path, "path"), SourcesGiven(sources, source_count), ConfigGiven(given.config));
  });
}

trelvane_status trelvane_writer_begin_frame(trelvane_writer* writer, trelvane_error* error) {
  return Run(error, [&] { Given(writer, "writer").BeginFrame(); });
}

trelvane_status trelvane_writer_add(trelvane_writer* writer, const trelvane_scan* scan,
                                    trelvane_error* error) {
  return Run(error, [&] { Given(writer, "writer").Add(Given(scan, "scan").scan); });
}

trelvane_status trelvane_writer_add_items(trelvane_writer* writer,
                                          const trelvane_scan* const* scans, std::size_t count,
                                          trelvane_error* error) {
  return Run(error, [&] {
    if (count > 0) Given(scans, "scans");
    Given(writer, "writer").AddItems({scans, count});
  });
}

trelvane_status trelvane_writer_close(trelvane_writer* writer, trelvane_error* error) {
  return Run(error, [&] { Given(writer, "writer").Close(); });
}

void trelvane_writer_free(trelvane_writer* writer) { delete writer; }
