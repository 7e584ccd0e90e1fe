// SPDX-License-Identifier: MIT
// Frames of a recording as scan files or CSV.
#include <algorithm>

#include "console.h"
#include "sdk/message.h"
#include "surfacefileconverter/failure.h"
#include "surfacefileconverter/filenames.h"
#include "surfacefileconverter/recordingarchive.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

constexpr const char* kFunction = "SurfaceFileConverter::writeMsgs";

[[noreturn]] void Fail(int line, const char* message, const char* function = kFunction) {
  throw Orv::Exception(line, kSourceFile, kBadInput, function, message);
}

void RequireExtension(int line, const std::string& exportName) {
  if (exportName.find('.') == std::string::npos) {
    Fail(line, "Failed to parse the extension of the input filename");
  }
}

bool IsWritten(const ReplaySourceInfo& source) {
  return source.dataType == UNIFORM_PROFILE || source.dataType == UNIFORM_SURFACE ||
         source.dataType == SURFACE_POINT_CLOUD;
}

}  // namespace

void SurfaceFileConverter::exportFrames(const std::string& exportName, FileType exportType) {
  if (!exportAll) {
    if (frameIndex >= frames.size()) {
      Fail(__LINE__, "The frame index must be less than the count of frames",
           "SurfaceFileConverter::exportFile");
    }
    writeMsgs(frames, static_cast<z32s>(frameIndex), exportName, exportType, true);
    return;
  }
  exportedFileNames.clear();
  RequireExtension(__LINE__, exportName);
  for (zSize i = 0; i < frames.size(); ++i) {
    writeMsgs(frames, static_cast<z32s>(i), exportName, exportType, false);
    if (releaseFrames) std::ranges::fill(frames[i], Orv::Object<void*>());
  }
}

void SurfaceFileConverter::writeMsgs(const std::vector<Plovia::ReplayFrame>& frameList, z32s index,
                                     const std::string& exportName, FileType exportType,
                                     bool single) {
  RequireExtension(__LINE__, exportName);
  if (frameList.front().size() != scannerInfos.size()) {
    Fail(__LINE__, "The data source count is not equal to the message count in the first frame.");
  }
  const std::string frameBaseName = GetIndexFileName(exportName, "Frame", index, "");
  const Plovia::ReplayFrame& frame = frameList[static_cast<zSize>(index)];
  const bool onlyFile = single && scannerInfos.size() == 1;
  const auto write = [&](const Orv::Object<void*>& message, const std::string& name) {
    if (exportType == CSV) {
      writeMsgToCsv(message, 0, name);
    } else {
      WriteMsg(message, name, exportType, allocator);
    }
    exportedFileNames.push_back(name);
  };

  for (zSize j = 0; j < scannerInfos.size(); ++j) {
    if (!IsWritten(scannerInfos[j])) continue;
    // A frame may be shorter than the first one; what is missing is an empty handle.
    const Orv::Object<void*> message = j < frame.size() ? frame[j] : Orv::Object<void*>();
    // A directory import that failed may have emptied the tags.
    const std::string tag = j < scannerFileTags.size() ? scannerFileTags[j] : "";
    if (scannerInfos[j].arrayed == 0) {
      write(message, onlyFile ? exportName : GetIndexFileName(exportName, "Frame", index, tag));
      continue;
    }
    consoleStatus("[INFO] ", "The data format of the input message is arrayed.");
    const zSize count = MxArrayMsg_Count(message.Get());
    if (count == 0) Fail(__LINE__, "The array message count is 0.");
    const std::vector<std::string> names =
        onlyFile && count == 1 ? std::vector{exportName}
                               : GetIncrementalIndexFileNames(frameBaseName, count, "Array", tag);
    for (zSize k = 0; k < count; ++k) {
      write(Orv::Object<void*>::Share(MxArrayMsg_At(message.Get(), k)), names[k]);
    }
    return;  // sources after an arrayed one are not written
  }
}
