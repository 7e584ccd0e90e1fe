// SPDX-License-Identifier: MIT
// The colours of the heights, how many heights have each, and two handles for their range.
import {fitCanvas, onDrag, onKeys, pointIn, themeColour} from "./drawing.mjs";
import {labelsThatFit} from "./text.mjs";

const PARTS = 128;  // of the histogram as drawn
const ROOM = 14;    // pixels above and below the colours
const COLOURS = 16;
const NARROW = 500;  // pixels of a window in which the histogram is small

// The heights along the bar: the colour range with some room, but no more than there are.
export function extentFor(range, full) {
  const room = (range.high - range.low) * 0.15;
  const low = Math.min(range.low, Math.max(full.low, range.low - room));
  const high = Math.max(range.high, Math.min(full.high, range.high + room));
  return high > low ? {low, high} : {low: low - 0.5, high: high + 0.5};
}

// How many heights are in each of equal parts of an extent, from a histogram of all points, whose
// parts are spread over those that they reach into.
export function spreadCounts({low, high, histogram}, extent, parts = PARTS) {
  const counts = new Float64Array(parts);
  const width = (high - low) / histogram.length;
  const part = (extent.high - extent.low) / parts;
  histogram.forEach((count, i) => {
    if (count === 0) return;
    const from = (low + i * width - extent.low) / part;
    const to = width > 0 ? from + width / part : from;
    const first = Math.max(0, Math.floor(from));
    for (let k = first; k < parts && (k < to || k === first); ++k) {
      const share = to > from ? (Math.min(to, k + 1) - Math.max(from, k)) / (to - from) : 1;
      if (share > 0) counts[k] += count * share;
    }
  });
  return counts;
}

// The same from the points themselves, which are told from an origin.
export function countPoints(values, origin, extent, parts = PARTS) {
  const counts = new Float64Array(parts);
  const scale = parts / (extent.high - extent.low);
  const shift = origin - extent.low;
  for (let i = 0; i < values.length; ++i) {
    const place = (values[i] + shift) * scale;
    if (place >= 0 && place <= parts) ++counts[Math.min(parts - 1, place | 0)];
  }
  return counts;
}

// The palette as a picture, the highest colour first.
function pictureOf(palette) {
  const picture = document.createElement("canvas");
  [picture.width, picture.height] = [1, 256];
  const image = picture.getContext("2d").createImageData(1, 256);
  for (let i = 0; i < 256; ++i) {
    image.data.set([...palette.subarray(3 * (255 - i), 3 * (255 - i) + 3), 255], 4 * i);
  }
  picture.getContext("2d").putImageData(image, 0, 0);
  return picture;
}

export class ColourBar {
  // `onRange(range, done)` hears of each change, and of its end.
  constructor(canvas, handles, palette, onRange) {
    Object.assign(this, {canvas, handles, onRange, colours: pictureOf(palette)});
    handles.forEach((handle, end) => {
      onDrag(handle, {
        move: (dx, dy, event) => this.moveEnd(end, this.heightAt(pointIn(canvas, event).y)),
        end: () => this.finish(),
      });
      onKeys(handle, (key, by) => this.step(end, key, by));
    });
    new ResizeObserver(() => this.draw()).observe(canvas);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.draw());
  }

  // `count(extent)` counts the heights in the parts of an extent.
  show({range, full, unit, count}) {
    Object.assign(this, {range, full, unit, count});
    this.fit();
  }
  setRange(range) {
    this.range = range;
    this.fit();
  }
  fit() {
    this.extent = extentFor(this.range, this.full);
    this.counts = this.count(this.extent);
    this.draw();
  }

  heightAt(y) {
    const part = (y - ROOM) / (this.canvas.clientHeight - 2 * ROOM);
    const {low, high} = this.extent;
    return high - Math.min(Math.max(part, 0), 1) * (high - low);
  }
  placeOf(z) {
    const {low, high} = this.extent;
    return ROOM + (high - z) / (high - low) * (this.canvas.clientHeight - 2 * ROOM);
  }

  moveEnd(end, z) {
    const {low, high} = this.range;
    const least = (this.extent.high - this.extent.low) * 1e-3;
    this.range = end === 0 ? {low: Math.min(z, high - least), high}
      : {low, high: Math.max(z, low + least)};
    this.draw();
    this.onRange(this.range, false);
  }
  finish() {
    this.fit();
    this.onRange(this.range, true);
  }
  step(end, key, by) {
    const part = (this.range.high - this.range.low) / 100 * by;
    const z = this.range[end === 0 ? "low" : "high"];
    const next = {
      ArrowUp: z + part, ArrowRight: z + part, ArrowDown: z - part, ArrowLeft: z - part,
      PageUp: z + 10 * part, PageDown: z - 10 * part, Home: this.full.low, End: this.full.high,
    }[key];
    if (next === undefined) return false;
    this.moveEnd(end, next);
    this.finish();
    return true;
  }

  // Where the colours begin.
  get left() { return window.innerWidth < NARROW ? 18 : 44; }

  draw() {
    if (!this.range || this.canvas.clientWidth === 0) return;
    const {context, width, height} = fitCanvas(this.canvas);
    context.clearRect(0, 0, width, height);
    this.drawHistogram(context, height);
    this.drawColours(context, height);
    this.drawLabels(context, width, height);
    this.handles.forEach((handle, end) => this.placeHandle(handle, end));
  }

  drawHistogram(context, height) {
    const most = Math.max(1, ...this.counts);
    const step = (height - 2 * ROOM) / this.counts.length;
    context.fillStyle = themeColour("--faint");
    this.counts.forEach((count, i) => {
      if (count === 0) return;
      const length = Math.max(1, count / most * (this.left - 4));
      context.fillRect(this.left - length, height - ROOM - (i + 1) * step, length, step + 0.5);
    });
  }

  drawColours(context, height) {
    const {low, high} = this.range;
    const {extent, full, left} = this;
    const [top, bottom] = [full.high > extent.high ? 0 : ROOM,
      full.low < extent.low ? height : height - ROOM];
    const [first, last] = [this.placeOf(Math.min(high, extent.high)), this.placeOf(Math.max(low, extent.low))];
    const fill = (name, from, to) => {
      context.fillStyle = themeColour(name);
      context.fillRect(left, from, COLOURS, to - from);
    };
    fill("--above", top, first);
    fill("--below", last, bottom);
    context.imageSmoothingEnabled = false;
    context.drawImage(this.colours, left, first, COLOURS, Math.max(1, last - first));
    context.strokeStyle = themeColour("--rule");
    context.strokeRect(left + 0.5, top + 0.5, COLOURS - 1, bottom - top - 1);
  }

  // Round heights along the bar; at its ends those of all points that lie beyond it.
  drawLabels(context, width, height) {
    const {unit, extent, full} = this;
    const left = this.left + COLOURS + 7;
    context.font = "12px system-ui, sans-serif";
    context.fillStyle = themeColour("--faint");
    const labels = labelsThatFit(unit.shown(extent.low), unit.shown(extent.high), height - 2 * ROOM,
      () => 22).map(([shown, text]) => [this.placeOf(unit.back(shown)), text]);
    if (full.high > extent.high) labels.push([5, `▲ ${unit.number(full.high)}`]);
    if (full.low < extent.low) labels.push([height - 6, `▼ ${unit.number(full.low)}`]);
    let widest = 0;
    labels.forEach(([y, text], i) => {
      const isEnd = text[0] === "▲" || text[0] === "▼";
      if (!isEnd && labels.some(([other], k) => k !== i && Math.abs(other - y) < 14)) return;
      context.fillRect(left - 7, Math.round(y), 4, 1);
      context.fillText(text, left, Math.min(Math.max(y + 4, 10), height - 2));
      widest = Math.max(widest, context.measureText(text).width);
    });
    if (left + widest + 2 > width) this.canvas.style.width = `${Math.ceil(left + widest + 4)}px`;
  }

  placeHandle(handle, end) {
    const z = this.range[end === 0 ? "low" : "high"];
    handle.style.top = `${this.placeOf(Math.min(Math.max(z, this.extent.low), this.extent.high))}px`;
    handle.style.left = `${this.left - 4}px`;
    handle.setAttribute("aria-valuemin", this.unit.shown(this.full.low));
    handle.setAttribute("aria-valuemax", this.unit.shown(this.full.high));
    handle.setAttribute("aria-valuenow", this.unit.shown(z));
    handle.setAttribute("aria-valuetext", this.unit.text(z));
  }
}
