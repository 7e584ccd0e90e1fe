// SPDX-License-Identifier: MIT
#include "outputfile/writefile.h"

#include "outputfile/outputfile.h"
#include "statuses.h"

void WriteFile(const Orv::Operation& operation, const std::string& path, const FillStream& fill) {
  WriteFile(operation, path, fill, operation.Error(kBadInput, "Failed to open " + path));
}

void WriteFile(const Orv::Operation& operation, const std::string& path, const FillStream& fill,
               const Orv::Exception& cannotOpen) {
  OutputFile output;
  if (output.Open(path) != zOK) {
    TryContent(fill);
    throw FileNotWritten(cannotOpen);
  }
  try {
    fill(output.Stream());
  } catch (const Orv::Exception&) {
    // Who writes the content knows only that it cannot go on.
    if (!output.HasFailed()) throw;
  }
  if (output.HasFailed() || output.Finish() != zOK) {
    throw FileNotWritten(operation.Error(kBadInput, "Failed to write " + path));
  }
}

void WriteBuffer(const zBytes& bytes, const std::string& path) {
  constexpr Orv::Operation kOperation{"surfacefileconverter", "WriteBuffer"};
  WriteFile(kOperation, path, [&](zStream stream) {
    kOperation.Require(zStream_Write(stream, bytes.data(), bytes.size()), "");
  });
}

void TryContent(const FillStream& fill) {
  Orv::Object<void*> nowhere;
  if (zNowhere_Construct(nowhere.Out()) != zOK) throw std::bad_alloc();
  fill(nowhere.Get());
}
