// SPDX-License-Identifier: MIT
// Names of the files that one export writes. A base path is split at its last dot, wherever that
// stands; each operation throws Orv::Exception, named after itself, for a base path without one.
#pragma once

#include <string>
#include <vector>

#include "sdk/core.h"

// <stem>-<sourceName>-<index, at least four digits>[_<tag>]<extension>
std::string GetIndexFileName(const std::string& basePath, const std::string& sourceName, z32s index,
                             const std::string& tag);

// The same for the indexes 0 to count - 1; for a count of 0 the base path itself.
std::vector<std::string> GetIncrementalIndexFileNames(const std::string& basePath, z64u count,
                                                      const std::string& sourceName,
                                                      const std::string& tag);

// <stem>_<appendix><extension> for each appendix.
std::vector<std::string> GetAppendedFileNames(const std::string& basePath,
                                              const std::vector<std::string>& appendices);
