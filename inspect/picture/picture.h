// SPDX-License-Identifier: MIT
// Scans as pictures.
#pragma once

#include <string>

#include "scan/scan.h"

// A PNG, 1000 pixels wide. A surface or a cloud is seen from above, x to the right and y upwards,
// so that the first row of a surface is the lowest one; both to the same scale, unless a side would
// be too short to see, which the picture then says. Colours are heights. A profile is a line of x
// and z. `title` is UTF-8; what cannot be printed is replaced, and a long one cut.
// Lengths are in the scan's own
// units, and its cautions stand below. Throws Orv::Exception.
zBytes DrawPicture(const Scan& scan, const std::string& title);
