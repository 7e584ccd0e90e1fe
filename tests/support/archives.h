// SPDX-License-Identifier: MIT
// Tar archives in memory.
#pragma once

#include <string>
#include <vector>

#include "sdk/archive.h"
#include "support/scans.h"

struct Member {
  std::string name;
  std::string content;
  z32s type = zTAR_FILE;
};

inline zBytes MakeArchive(const std::vector<Member>& members) {
  const Handle stream = MakeStream();
  Handle tar;
  MustBeOk(zTar_Construct(tar.Out(), stream.Get(), DefaultAlloc()));
  for (const auto& [name, content, type] : members) {
    MustBeOk(zTar_BeginWrite(tar.Get(), name.c_str(), type));
    MustBeOk(zStream_Write(tar.Get(), content.data(), content.size()));
  }
  MustBeOk(tar.Release());
  return BytesOf(stream.Get());
}
