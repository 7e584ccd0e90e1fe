// SPDX-License-Identifier: MIT
// Which part of a line plot is seen, and where its points are.
import {extentOf} from "./text.mjs";

const DENSE = 4;  // points for a pixel, from which on only the outline is drawn

export class PlotView {
  // `canvas` has a clientWidth and a clientHeight. `onChange()` hears that the view was moved.
  constructor(canvas, onChange) {
    this.canvas = canvas;
    this.onChange = onChange;
    this.margin = {left: 40, right: 12, top: 10, bottom: 38};
    this.points = {x: [], z: []};
    this.measure();
  }

  // Asks for the canvas's size, once for each drawing: a browser may have to work it out anew.
  measure() {
    this.shown = {width: this.canvas.clientWidth, height: this.canvas.clientHeight};
  }

  // x and z as shown, from left to right; NaN in z is a gap. `lowest` and `highest`: of what points
  // stand for, where they are not alone.
  show(points, keepSeen) {
    this.points = points;
    this.all = extentOf(points.x);
    const {low, high} = this.all;
    if (low === high) this.all = {low: low - 0.5, high: high + 0.5};
    else if (low > high) this.all = {low: 0, high: 1};
    if (!keepSeen || !this.seen) this.seen = {...this.all};
  }

  showAll() {
    this.seen = {...this.all};
    this.onChange();
  }
  zoomBy(factor, x) {
    const whole = this.all.high - this.all.low;
    const width = Math.min((this.seen.high - this.seen.low) / factor, whole);
    if (width < whole * 1e-5 || Number.isNaN(x)) return;
    const part = (x - this.seen.low) / (this.seen.high - this.seen.low);
    this.seen = {low: x - width * part, high: x + width * (1 - part)};
    this.moveBy(0);
  }
  moveBy(dx) {
    const width = this.seen.high - this.seen.low;
    const low = Math.max(this.all.low, Math.min(this.seen.low + dx, this.all.high - width));
    this.seen = {low, high: low + width};
    this.onChange();
  }

  // Moves the view as little as shows the point.
  reveal(index) {
    const x = this.points.x[index];
    if (x < this.seen.low) this.moveBy(x - this.seen.low);
    if (x > this.seen.high) this.moveBy(x - this.seen.high);
  }

  // The point that a key leads to from another; -1 for other keys.
  step(index, key, by) {
    const last = this.points.x.length - 1;
    if (key === "ArrowLeft") return Math.max(0, index - by);
    if (key === "ArrowRight") return Math.min(last, index + by);
    if (key === "Home") return 0;
    if (key === "End") return last;
    return -1;
  }

  get scaleX() {
    const width = this.shown.width - this.margin.left - this.margin.right;
    return width / (this.seen.high - this.seen.low);
  }
  get scaleZ() {
    const height = this.shown.height - this.margin.top - this.margin.bottom;
    return height / (this.high - this.low);
  }
  toScreenX(x) { return this.margin.left + (x - this.seen.low) * this.scaleX; }
  toScreenZ(z) { return this.margin.top + (this.high - z) * this.scaleZ; }
  toX(screen) { return this.seen.low + (screen - this.margin.left) / this.scaleX; }

  nearest(screen) {
    const x = this.toX(screen);
    const xs = this.points.x;
    let [best, least] = [-1, Infinity];
    for (let i = 0; i < xs.length; ++i) {
      const distance = Math.abs(xs[i] - x);
      if (distance < least) [best, least] = [i, distance];
    }
    return best;
  }

  // The points between gaps, as the first and the last of each run.
  runs() {
    const {x, z} = this.points;
    const runs = [];
    for (let i = 0; i < z.length; ++i) {
      if (Number.isNaN(z[i]) || Number.isNaN(x[i])) continue;
      if (runs.at(-1)?.[1] === i - 1) runs.at(-1)[1] = i;
      else runs.push([i, i]);
    }
    return runs;
  }

  // What to draw of a run of points: all, or where they are dense, the first, the extremes and the
  // last of those at each pixel.
  outline([first, last]) {
    const {x, z} = this.points;
    const all = last - first + 1;
    if (all < DENSE * this.shown.width) return Array.from({length: all}, (_, i) => first + i);
    const kept = [];
    for (let i = first; i <= last;) {
      const pixel = Math.floor(this.toScreenX(x[i]));
      let [low, high, end] = [i, i, i];
      for (; end <= last && Math.floor(this.toScreenX(x[end])) === pixel; ++end) {
        if (z[end] < z[low]) low = end;
        if (z[end] > z[high]) high = end;
      }
      kept.push(...[...new Set([i, low, high, end - 1])].sort((a, b) => a - b));
      i = end;
    }
    return kept;
  }

  // Sets the lowest and the highest height seen, with some room.
  fitHeights() {
    this.measure();
    const {x, z, lowest = z, highest = z} = this.points;
    let [low, high] = [Infinity, -Infinity];
    for (let i = 0; i < x.length; ++i) {
      if (x[i] < this.seen.low || x[i] > this.seen.high) continue;
      if (lowest[i] < low) low = lowest[i];
      if (highest[i] > high) high = highest[i];
    }
    if (low > high) [low, high] = [0, 1];
    const room = high > low ? (high - low) * 0.06 : Math.max(Math.abs(low) * 1e-3, 0.01);
    this.low = low - room;
    this.high = high + room;
  }
}
