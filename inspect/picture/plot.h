// SPDX-License-Identifier: MIT
// Parts that pictures of all kinds are made of.
#pragma once

#include <string>
#include <vector>

#include "inspect/picture/canvas.h"
#include "inspect/picture/lettering.h"
#include "inspect/picture/ticks.h"
#include "scan/scan.h"

inline constexpr int kPictureWidth = 1000;
inline constexpr Rgb kInk{30, 30, 30};
inline constexpr Rgb kPaleInk{110, 110, 110};
inline constexpr Rgb kWarningInk{170, 20, 20};

// Where x and the upward axis of a plot lie on a canvas.
struct Plot {
  int x, y, width, height;  // pixels, of the inside
  AxisRange across, up;     // each in its unit, from edge to edge

  int ColumnOf(z64f value) const;
  int RowOf(z64f value) const;
};

// What stands above a plot and below it.
struct SheetText {
  std::string title;
  std::vector<std::string> head;
  std::vector<Caution> cautions;
  std::vector<std::string> notes;

  // Where a plot begins, below the head and the name of the upward axis.
  int PlotTop() const;
};

// A canvas with the texts, and room for a plot of this height.
Canvas MakeSheet(int plotHeight, const SheetText& texts);

// Their names have the units.
void DrawAxes(Canvas& canvas, const Plot& plot, const std::string& across, const std::string& up);
void DrawGridLines(Canvas& canvas, const Plot& plot);
// To the right of the plot. Heights beyond the colours have caps, which tell the outermost.
void DrawColorBar(Canvas& canvas, const Plot& plot, const AxisRange& colours,
                  const AxisRange& heights, const std::string& name);

// What is drawn where there is no height, grey unlike any height, and its name.
struct Blank {
  std::string name;
  bool hatched;

  Rgb At(int x, int y) const;
};
// At the lower right.
void DrawLegend(Canvas& canvas, const Plot& plot, const Blank& blank);

// "y is stretched 12 times", if the pixels of both axes stand for different lengths. `upUnit`: that
// of the upward axis in units of x, 0 where they cannot be compared.
void NoteStretching(const Plot& plot, const std::string& upName, z64f upUnit,
                    std::vector<std::string>& notes);
