// SPDX-License-Identifier: MIT
#include "inspect/picture/plot.h"

#include <algorithm>
#include <cmath>

#include "inspect/measure/units.h"

namespace {

constexpr int kTitleSize = 18;
constexpr int kTextSize = 14;
constexpr int kTickLength = 5;
constexpr int kMargin = 16;
constexpr int kBelowPlot = 56;  // tick labels and the name of the axis
constexpr int kNoteHeight = 22;
constexpr int kAxisName = 420;  // pixels at most
constexpr int kLetters = 16;    // pixels that keep two labels apart
constexpr int kTextWidth = kPictureWidth - 2 * kMargin;
constexpr Rgb kGridLine{226, 226, 226};

// From 0 to `pixels` - 1.
int PixelOf(z64f share, int pixels) {
  return static_cast<int>(std::clamp(std::floor(share * pixels), 0.0, pixels - 1.0));
}

std::vector<Tick> TicksAcross(const Plot& plot) {
  return TicksWithin(plot.across, std::max(3, plot.width / 90));
}
std::vector<Tick> TicksUp(const Plot& plot, const AxisRange& range) {
  return TicksWithin(range, std::max(4, plot.height / 55));
}

// Broken at blanks. The last of its lines has the rest, whatever that takes.
void AppendLines(const Lettering& text, std::string rest, std::vector<std::string>& lines) {
  constexpr int kMostLines = 4;
  for (int line = 1; line < kMostLines && text.Width(rest) > kTextWidth; ++line) {
    zSize end = 0;
    for (zSize blank = rest.find(' ');
         blank != rest.npos && text.Width(rest.substr(0, blank)) <= kTextWidth;
         blank = rest.find(' ', blank + 1)) {
      end = blank;
    }
    if (end == 0) break;
    lines.push_back(rest.substr(0, end));
    rest.erase(0, end + 1);
  }
  lines.push_back(std::move(rest));
}

}  // namespace

int Plot::ColumnOf(z64f value) const { return x + PixelOf(across.ShareOf(value), width); }
int Plot::RowOf(z64f value) const { return y + height - 1 - PixelOf(up.ShareOf(value), height); }

int SheetText::PlotTop() const { return 80 + static_cast<int>(head.size()) * kNoteHeight; }

Canvas MakeSheet(int plotHeight, const SheetText& texts) {
  const Lettering text(kTextSize);
  std::vector<std::string> warnings;
  for (const Caution& caution : texts.cautions) {
    AppendLines(text, "Caution: " + caution.text, warnings);
  }
  std::vector<std::string> notes;
  for (const std::string& note : texts.notes) AppendLines(text, note, notes);
  const int notesTop = texts.PlotTop() + plotHeight + kBelowPlot;
  const auto lines = static_cast<int>(warnings.size() + notes.size());
  Canvas canvas(kPictureWidth, notesTop + lines * kNoteHeight + 8);
  Lettering(kTitleSize).Draw(canvas, kMargin, 32, texts.title, kInk, kTextWidth);
  const auto write = [&](int baseline, const std::vector<std::string>& block, Rgb color) {
    for (const std::string& line : block) {
      text.Draw(canvas, kMargin, baseline, line, color, kTextWidth);
      baseline += kNoteHeight;
    }
    return baseline;
  };
  write(56, texts.head, kInk);
  write(write(notesTop + 14, warnings, kWarningInk), notes, kPaleInk);
  return canvas;
}

void DrawAxes(Canvas& canvas, const Plot& plot, const std::string& across, const std::string& up) {
  const Lettering text(kTextSize);
  const int bottom = plot.y + plot.height;
  canvas.Frame(plot.x - 1, plot.y - 1, plot.width + 2, plot.height + 2, kInk);
  int taken = 0;  // by labels so far
  for (const Tick& tick : TicksAcross(plot)) {
    const int column = plot.ColumnOf(tick.value);
    canvas.Fill(column, bottom + 1, 1, kTickLength, kInk);
    const int width = text.Width(tick.label);
    if (column - width / 2 < taken) continue;
    text.Draw(canvas, column - width / 2, bottom + 21, tick.label, kInk);
    taken = column + width / 2 + 8;
  }
  for (const Tick& tick : TicksUp(plot, plot.up)) {
    const int row = plot.RowOf(tick.value);
    canvas.Fill(plot.x - 1 - kTickLength, row, kTickLength, 1, kInk);
    const int end = plot.x - 10;
    text.Draw(canvas, std::max(2, end - text.Width(tick.label)), row + 5, tick.label, kInk);
  }
  text.Draw(canvas, plot.x + std::max(0, (plot.width - text.Width(across)) / 2), bottom + 44,
            across, kInk, kAxisName);
  text.Draw(canvas, std::max(2, plot.x - text.Width(up) / 2), plot.y - 14, up, kInk, kAxisName);
}

void DrawGridLines(Canvas& canvas, const Plot& plot) {
  for (const Tick& tick : TicksAcross(plot)) {
    canvas.Fill(plot.ColumnOf(tick.value), plot.y, 1, plot.height, kGridLine);
  }
  for (const Tick& tick : TicksUp(plot, plot.up)) {
    canvas.Fill(plot.x, plot.RowOf(tick.value), plot.width, 1, kGridLine);
  }
}

void DrawColorBar(Canvas& canvas, const Plot& plot, const AxisRange& colours,
                  const AxisRange& heights, const std::string& name) {
  constexpr int kCap = 20;
  const Lettering text(kTextSize);
  const auto palette = HeightPalette();
  const int left = plot.x + plot.width + 32;
  const int above = heights.high > colours.high ? kCap : 0;
  const int below = heights.low < colours.low ? kCap : 0;
  const Plot bar{left, plot.y + above, 22, plot.height - above - below, {}, colours};
  const int right = bar.x + bar.width;
  const int bottom = bar.y + bar.height;
  const auto label = [&](int row, const std::string& words) {
    canvas.Fill(right + 1, row, kTickLength, 1, kInk);
    text.Draw(canvas, right + 11, row + 5, words, kInk, kPictureWidth - right - 13);
  };
  const std::vector<Tick> ticks = TicksUp(bar, colours);
  const z64f step = ticks.size() > 1 ? ticks[1].value - ticks[0].value : colours.Size();
  const auto cap = [&](int top, Rgb color, z64f height) {
    canvas.Fill(bar.x, top, bar.width, kCap, color);
    label(top + kCap / 2, NumberText(height, step / 10));
  };
  if (above > 0) cap(plot.y, kAboveRange, heights.high);
  if (below > 0) cap(bottom, kBelowRange, heights.low);
  const int last = bar.height - 1;
  for (int row = 0; row <= last; ++row) {
    const int color = colours.Size() > 0 ? 255 * (last - row) / last : 128;
    canvas.Fill(bar.x, bar.y + row, bar.width, 1, palette[static_cast<zSize>(color)]);
  }
  canvas.Frame(bar.x - 1, plot.y - 1, bar.width + 2, plot.height + 2, kInk);
  for (const Tick& tick : ticks) {
    const int row = bar.RowOf(tick.value);
    const bool free = (above == 0 || row > bar.y + kLetters - kCap / 2) &&
                      (below == 0 || row < bottom - kLetters + kCap / 2);
    if (free) label(row, tick.label);
  }
  const int most = kPictureWidth - kMargin - text.Width(name);
  text.Draw(canvas, std::clamp(most, 0, bar.x - 1), plot.y - 14, name, kInk, kTextWidth);
}

Rgb Blank::At(int x, int y) const {
  return hatched && (x + y) % 8 < 2 ? Rgb{170, 170, 170} : Rgb{236, 236, 236};
}

void DrawLegend(Canvas& canvas, const Plot& plot, const Blank& blank) {
  const Lettering text(kTextSize);
  const int x = kPictureWidth - kMargin - text.Width(blank.name);
  const int y = plot.y + plot.height + 32;
  for (int row = 0; row < 16; ++row) {
    for (int column = 0; column < 22; ++column) {
      canvas.Set(x - 32 + column, y + row, blank.At(column, row));
    }
  }
  canvas.Frame(x - 33, y - 1, 24, 18, kInk);
  text.Draw(canvas, x, y + 12, blank.name, kInk);
}

void NoteStretching(const Plot& plot, const std::string& upName, z64f upUnit,
                    std::vector<std::string>& notes) {
  const z64f across = plot.across.Size() / plot.width;
  const z64f up = plot.up.Size() * upUnit / plot.height;
  if (!(across > 0) || !(up > 0)) return;
  const bool upLonger = across > up;
  const z64f factor = upLonger ? across / up : up / across;
  if (factor < 1.02) return;
  const std::string times = factor < 10 ? "%.2f" : factor < 1e6 ? "%.0f" : "%.2g";
  notes.push_back(Orv::FormatText("Not to scale: %s is stretched " + times + " times.",
                                  {std::string_view(upLonger ? upName : "x"), factor}));
}
