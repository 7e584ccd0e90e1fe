// SPDX-License-Identifier: MIT
// Scans as messages.
#pragma once

#include "scan/scan.h"

// A message that shares the arrays of a scan. Throws Orv::Exception when there is no memory.
Orv::Object<void*> MakeMessage(const Scan& scan);
