// SPDX-License-Identifier: MIT
// All frames of a source at a glance: mean and range over the frame's number, and below them the
// share of points that are valid. A click chooses a frame.
import {fitCanvas, pointIn, themeColour} from "./drawing.mjs";
import {labelsThatFit} from "./text.mjs";
import {heightUnit, unitsOf} from "./units.mjs";
import {rangesOf, viewOf} from "./views.mjs";

const SHARE = 18;  // pixels for the share
const BOTTOM = 20;
const TOP = 6;

export class FrameStrip {
  // `onFrame(index)` hears which one of the frames was clicked.
  constructor(canvas, text, onFrame) {
    Object.assign(this, {canvas, text, chosen: 0, entries: []});
    canvas.addEventListener("click", (event) => {
      if (this.entries.length > 0) onFrame(this.indexAt(pointIn(canvas, event).x));
    });
    new ResizeObserver(() => this.draw()).observe(canvas);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.draw());
  }

  // `entries`: the scan of each frame, or nothing.
  show(entries, frames, level, chosen) {
    Object.assign(this, {entries, frames, chosen});
    this.views = entries.map((entry) => entry ? viewOf(entry, level) : null);
    const {full} = rangesOf(this.views.filter(Boolean));
    this.low = full.low;
    this.high = full.high > full.low ? full.high : full.low + 1;
    const one = entries.find(Boolean);
    this.unit = one ? heightUnit(unitsOf(one)[2], full.low, full.high) : null;
    this.text.textContent = this.unit ? `${this.unit.axis("z")} of each frame: mean and range; ` +
      "below, the share of points that are valid." : "";
    this.draw();
  }

  indexAt(x) {
    const part = (x - this.left) / (this.canvas.clientWidth - this.left);
    return Math.min(Math.max(Math.floor(part * this.entries.length), 0), this.entries.length - 1);
  }

  draw() {
    if (!this.unit || this.canvas.clientWidth === 0) return;
    const {context, width, height} = fitCanvas(this.canvas);
    const {entries, views, unit} = this;
    context.clearRect(0, 0, width, height);
    context.font = "12px system-ui, sans-serif";
    const bottom = height - SHARE - BOTTOM;
    const labels = labelsThatFit(unit.shown(this.low), unit.shown(this.high), bottom - TOP, () => 18);
    this.left = 14 + Math.max(0, ...labels.map(([, text]) => context.measureText(text).width));
    const toY = (z) => TOP + (this.high - z) / (this.high - this.low) * (bottom - TOP);
    const step = (width - this.left) / entries.length;
    context.fillStyle = themeColour("--faint");
    context.textAlign = "right";
    for (const [shown, text] of labels) context.fillText(text, this.left - 6, toY(unit.back(shown)) + 4);
    context.fillStyle = themeColour("--chosen");
    context.fillRect(this.left + this.chosen * step, 0, Math.max(step, 2), height - BOTTOM);
    views.forEach((view, i) => {
      const x = this.left + i * step;
      const wide = Math.max(1, step - (step > 4 ? 1 : 0));
      const all = entries[i] ? entries[i].columns * entries[i].rows : 0;
      context.fillStyle = themeColour("--accent");
      if (all > 0) {
        const share = (entries[i].valid ?? 0) / all * (SHARE - 4);
        context.fillRect(x, height - BOTTOM - share, wide, share);
      }
      if (!view) return;
      context.fillStyle = themeColour("--band");
      context.fillRect(x, toY(view.high), wide, Math.max(1, toY(view.low) - toY(view.high)));
      context.fillStyle = themeColour("--accent");
      context.fillRect(x, toY(view.figures.mean) - 1, wide, 2);
    });
    this.drawNumbers(context, width, height, step);
  }

  drawNumbers(context, width, height, step) {
    const {frames} = this;
    context.fillStyle = themeColour("--faint");
    context.textAlign = "center";
    let free = this.left;
    const least = Math.max(1, Math.ceil(60 / step));
    for (let i = 0; i < frames.length; i += least) {
      const text = String(frames[i]);
      const half = context.measureText(text).width / 2;
      const x = Math.min(Math.max(this.left + (i + 0.5) * step, free + half), width - half);
      if (x - half < free - 0.5) continue;
      context.fillText(text, x, height - 5);
      free = x + half + 12;
    }
  }
}
