// SPDX-License-Identifier: MIT
#include "surfacefileconverter/frameexport.h"

#include <algorithm>

#include "formats/csv/writer.h"
#include "getfilestream/getfilestream.h"
#include "outputfile/writefile.h"
#include "statuses.h"

namespace {

using Handle = Orv::Object<void*>;

constexpr const char* kUnit = "surfacefileconverter";
constexpr Orv::Operation kExportFile{kUnit, "SurfaceFileConverter::exportFile"};
constexpr Orv::Operation kWriteMsgs{kUnit, "SurfaceFileConverter::writeMsgs"};
constexpr Orv::Operation kWriteMsg{kUnit, "WriteMsg"};
constexpr Orv::Operation kParseJob{kUnit, "SurfaceFileConverter::parseCSVInfoFields"};

void RequireExtension(const std::string& exportName) {
  if (exportName.find('.') == std::string::npos) {
    kWriteMsgs.Fail(kBadInput, "Failed to parse the extension of the input filename");
  }
}

bool IsWritten(const ReplaySourceInfo& source) {
  return source.dataType == UNIFORM_PROFILE || source.dataType == UNIFORM_SURFACE ||
         source.dataType == SURFACE_POINT_CLOUD;
}

// A message must outlive its content.
FillStream ContentOf(const Handle& message, FileType fileType, zAlloc alloc) {
  if (!message) kWriteMsg.Fail(kBadInput, "The inputted msg is Null");
  return [&message, fileType, alloc](zStream stream) {
    GetMsgDataFileStream(message.Get(), fileType, stream, alloc);
  };
}

FillStream ContentOf(const Plovia::SurfaceStream& surface, FileType fileType) {
  return
      [surface, fileType](zStream stream) { GetSurfaceDataFileStream(surface, fileType, stream); };
}

void WriteContent(const FillStream& content, const std::string& path) {
  constexpr Orv::Operation kWriteStream{kUnit, "WriteStream"};
  WriteFile(kWriteStream, path, content);
}

// Writes the messages of frames, as CSV where there is a job.
class FrameWriter {
 public:
  FrameWriter(const Recording& recording, const FrameExport& target, CsvJob* job)
      : recording_(recording), target_(target), job_(job) {}

  // `single`: no other frame is exported.
  void Write(z32u index, bool single) {
    RequireExtension(target_.exportName);
    const std::vector<ReplaySourceInfo>& sources = recording_.sources;
    if (recording_.MessageCount(0) != sources.size()) {
      kWriteMsgs.Fail(
          kBadInput, "The data source count is not equal to the message count in the first frame.");
    }
    for (const zSize source : WrittenSources(sources)) {
      const std::vector<std::string> names = Names(source, index, single);
      if (sources[source].arrayed != 0) {
        WriteItems(recording_.Message(index, source), names);
      } else if (const auto surface = Surface(index, source)) {
        Put(ContentOf(*surface, target_.exportType), names.front());
      } else {
        WriteMessage(recording_.Message(index, source), names.front());
      }
    }
  }

  // The files that Write will make.
  std::vector<std::string> Names(z32u index, bool single) const {
    std::vector<std::string> names;
    for (const zSize source : WrittenSources(recording_.sources)) {
      std::ranges::move(Names(source, index, single), std::back_inserter(names));
    }
    return names;
  }

 private:
  std::vector<std::string> Names(zSize source, z32u index, bool single) const {
    return NamesOfMessage(recording_, {index, source, single}, target_.exportName, target_.naming);
  }

  // Where it can be written as a stream.
  std::optional<Plovia::SurfaceStream> Surface(z32u index, zSize source) const {
    const FileType type = target_.exportType;
    const bool taken = type == SRF || type == SUR || type == PCD;
    return taken ? recording_.Surface(index, source) : std::nullopt;
  }

  void WriteItems(const Handle& array, const std::vector<std::string>& names) {
    Tell(target_.listener, NoticeKind::info, "The data format of the input message is arrayed.");
    if (names.empty()) kWriteMsgs.Fail(kBadInput, "The array message count is 0.");
    for (zSize k = 0; k < names.size(); ++k) {
      WriteMessage(Handle::Share(MxArrayMsg_At(array.Get(), k)), names[k]);
    }
  }

  void WriteMessage(const Handle& message, const std::string& name) {
    if (job_ == nullptr) return Put(ContentOf(message, target_.exportType, target_.alloc), name);
    WriteSurfaceCsv(message.Get(), recording_.dataType, *job_, name);
    target_.exportedNames.push_back(name);
  }

  void Put(const FillStream& content, const std::string& name) {
    target_.trial ? TryContent(content) : WriteContent(content, name);
    target_.exportedNames.push_back(name);
  }

  const Recording& recording_;
  const FrameExport& target_;
  CsvJob* job_;
};

void WriteFrames(const Recording& recording, const FrameChoice& choice, const FrameExport& target,
                 CsvJob* job) {
  FrameWriter writer(recording, target, job);
  const zSize frameCount = recording.frames.size();
  if (!choice.all) {
    if (choice.frame >= frameCount) {
      kExportFile.Fail(kBadInput, "The frame index must be less than the count of frames");
    }
    target.naming.Claim(kWriteMsgs, writer.Names(choice.frame, true), {target.inputName});
    return writer.Write(choice.frame, true);
  }
  target.exportedNames.clear();
  RequireExtension(target.exportName);
  std::vector<std::string> names;
  for (zSize i = 0; i < frameCount; ++i) {
    std::ranges::move(writer.Names(static_cast<z32u>(i), false), std::back_inserter(names));
  }
  target.naming.Claim(kWriteMsgs, names, {target.inputName});
  for (zSize i = 0; i < frameCount; ++i) {
    writer.Write(static_cast<z32u>(i), false);
  }
}

void WriteProfiles(const Recording& recording, const FrameExport& target, CsvJob& job) {
  const std::vector<ReplaySourceInfo>& sources = recording.sources;
  const std::vector<std::string> names =
      NamesOfSources(recording, target.exportName, target.naming);
  std::vector<std::string> written;
  for (zSize j = 0; j < sources.size(); ++j) {
    if (IsProfileType(sources[j].dataType)) written.push_back(names[j]);
  }
  target.naming.Claim(kWriteMsgs, written, {target.inputName});
  target.exportedNames.clear();
  for (zSize j = 0; j < sources.size(); ++j) {
    if (!IsProfileType(sources[j].dataType)) continue;
    const ProfileMessages messages{recording.frames.size(),
                                   [&](zSize frame) { return recording.Message(frame, j); }};
    WriteProfilesCsv(messages, sources[j].arrayed != 0, job, names[j]);
    target.exportedNames.push_back(names[j]);
  }
}

}  // namespace

std::vector<zSize> WrittenSources(const std::vector<ReplaySourceInfo>& sources) {
  std::vector<zSize> written;
  for (zSize j = 0; j < sources.size(); ++j) {
    if (!IsWritten(sources[j])) continue;
    written.push_back(j);
    if (sources[j].arrayed != 0) break;  // those behind an arrayed one are not written
  }
  return written;
}

void ExportFrames(const Recording& recording, const FrameChoice& choice,
                  const FrameExport& target) {
  WriteFrames(recording, choice, target, nullptr);
}

z32s ExportCsv(const Recording& recording, const FrameChoice& choice, const FrameExport& target) {
  if (recording.fileType != OVREC) {
    kParseJob.Fail(kBadInput, "The import file type is not OVREC");
  }
  // Destroying its documents takes memory and so may fail, which must not happen any more once the
  // export has been reported. So it ends here.
  CsvJob job(GetResourceData(recording.job), target.listener);
  if (IsProfileType(recording.dataType)) {
    WriteProfiles(recording, target, job);
  } else {
    WriteFrames(recording, choice, target, &job);
  }
  return job.Info().sensorCount;
}

void WriteMsg(const Handle& message, const std::string& path, FileType fileType, zAlloc alloc) {
  WriteContent(ContentOf(message, fileType, alloc), path);
}
