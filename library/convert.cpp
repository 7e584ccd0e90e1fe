// SPDX-License-Identifier: MIT
#include "options.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

void Import(SurfaceFileConverter& converter, const std::string& from) {
  if (zDirectory_Exists(from.c_str())) return converter.importFiles(from);
  if (!zFile_Exists(from.c_str())) {
    throw Failure(TRELVANE_ERROR_NOT_FOUND, "There is no file " + from);
  }
  converter.importFile(from);
}

// Only what is wished is set: the converter refuses what does not fit its import.
void Configure(SurfaceFileConverter& converter, const trelvane_convert_options& options) {
  converter.exportAll = FlagGiven(options.all_frames, "all_frames");
  converter.configFolder = ConfigGiven(options.config);
  const PcdOptions cloud = CloudOptionsGiven(options.cloud);
  if (options.frame != 0) converter.setFrameIndex(options.frame);
  if (cloud.width != 0) converter.setPcdWidth(cloud.width);
  if (cloud.height != 0) converter.setPcdHeight(cloud.height);
  if (cloud.swapXZ) converter.setPcdFlipXZEnabled(1);
  if (cloud.invalidPoint) converter.setInvalidPoint(*cloud.invalidPoint);
  if (cloud.zoom) converter.setPcdZoom(*cloud.zoom);
}

}  // namespace

trelvane_status trelvane_convert(const char* from, const char* to,
                                 const trelvane_convert_options* options, trelvane_error* error) {
  return Run(error, [&] {
    SurfaceFileConverter converter;
    const trelvane_convert_options given = OptionsGiven(options);
    const auto tellFiles = [&] {
      if (given.on_message == nullptr) return;
      for (const std::string& name : converter.getExportedFileNames()) {
        given.on_message(given.context, TRELVANE_MESSAGE_FILE, name.c_str());
      }
    };
    converter.setListener(ListenerOf(given.on_message, given.context));
    Import(converter, TextGiven(from, "from"));
    try {
      Configure(converter, given);
    } catch (const Orv::Exception& failure) {
      Refuse(failure.what());
    }
    try {
      converter.exportFile(to == nullptr ? "" : TextGiven(to, "to"));
    } catch (...) {
      tellFiles();
      throw;
    }
    tellFiles();
  });
}
