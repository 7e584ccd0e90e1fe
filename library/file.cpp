// SPDX-License-Identifier: MIT
#include "handles.h"
#include "options.h"

namespace {

zSize SourceGiven(const trelvane_file& file, std::uint64_t source) {
  if (source >= file.input->sources.size()) Refuse("The file has no such source");
  return static_cast<zSize>(source);
}

zSize FrameGiven(const trelvane_file& file, std::uint64_t frame) {
  if (frame >= file.input->frames) Refuse("The file has no such frame");
  return static_cast<zSize>(frame);
}

}  // namespace

trelvane_status trelvane_open(const char* path, const trelvane_open_options* options,
                              trelvane_file** file, trelvane_error* error) {
  return RunToMake(file, "file", error, [&] {
    const std::string name = TextGiven(path, "path");
    const trelvane_open_options given = OptionsGiven(options);
    const bool unchecked = FlagGiven(given.unchecked, "unchecked");
    const InputOptions wishes{unchecked ? Check::none : Check::whole,
                              CloudOptionsGiven(given.cloud),
                              ListenerOf(given.on_message, given.context)};
    auto opened = std::make_unique<trelvane_file>();
    opened->input = OpenInput(name, wishes);
    return opened;
  });
}

void trelvane_file_close(trelvane_file* file) { delete file; }

trelvane_status trelvane_file_get_info(const trelvane_file* file, trelvane_file_info* info,
                                       trelvane_error* error) {
  return Run(error, [&] {
    const Input& input = *Given(file, "file").input;
    Sized(info, "info") = {sizeof *info, input.kind, input.layout, input.frames,
                           input.sources.size()};
  });
}

trelvane_status trelvane_file_get_source(const trelvane_file* file, std::uint64_t source,
                                         trelvane_source_info* info, trelvane_error* error) {
  return Run(error, [&] {
    const zSize place = SourceGiven(Given(file, "file"), source);
    const ReplaySourceInfo& found = file->input->sources[place];
    Sized(info, "info") = {sizeof *info, found.name.c_str(), found.displayName.c_str(),
                           found.dataType, found.arrayed};
  });
}

trelvane_status trelvane_file_count_items(trelvane_file* file, std::uint64_t frame,
                                          std::uint64_t source, std::uint64_t* count,
                                          trelvane_error* error) {
  if (count != nullptr) *count = 0;
  return Run(error, [&] {
    const zSize inFrame = FrameGiven(Given(file, "file"), frame);
    const zSize ofSource = SourceGiven(*file, source);
    Given(count, "count") = file->input->CountItems(inFrame, ofSource);
  });
}

trelvane_status trelvane_file_read_scan(trelvane_file* file, std::uint64_t frame,
                                        std::uint64_t source, std::uint64_t item,
                                        trelvane_scan** scan, trelvane_error* error) {
  return RunToMake(scan, "scan", error, [&] {
    const zSize inFrame = FrameGiven(Given(file, "file"), frame);
    const zSize ofSource = SourceGiven(*file, source);
    return std::make_unique<trelvane_scan>(
        trelvane_scan{file->input->Read(inFrame, ofSource, static_cast<zSize>(item))});
  });
}
