// SPDX-License-Identifier: MIT
// Scans as pictures.
#pragma once

#include <string>

#include "inspect/measure/colourrange.h"

// What a picture tells beside the scan. Heights are told in the scan's own unit of z.
struct PictureView {
  Span heights;   // of all points, of all scans that share the colours
  Span colours;   // what the colours stand for
  z64f step = 0;  // between heights that the scan can tell apart
  Levelling levelling = Levelling::none;
};

// A PNG, 1000 pixels wide. A surface or a cloud is seen from above, x to the right and y upwards,
// so that the first row of a surface is the lowest one; both to the same scale, unless a side would
// be too short to see, which the picture then says. Colours are heights; those beyond the colours
// have colours of their own, and are counted. Where cells stand for several points, one that stands
// out from its mean is seen in place of it: by more than an eighth of the colours, and by four
// times what is usual in the map. A few such places, or of points far beyond the colours, are
// circled. A profile, and a surface of one row, is a line of x and z. Lengths are in units that
// fit, made of the scan's own; its cautions stand below. `title` is UTF-8; what cannot be printed
// is replaced, and a long one cut. `scan` is levelled already. Throws Orv::Exception.
zBytes DrawPicture(const Scan& scan, const std::string& title, const PictureView& view);
