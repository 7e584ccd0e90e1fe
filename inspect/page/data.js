// SPDX-License-Identifier: MIT
// The data that the page carries: one description of everything, and arrays in base64.

const pageData = JSON.parse(byId("document").textContent);
const NOT_MEASURED = -32768;

function bytesOf(base64) {
  return Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
}

const arrayBytes = (id) => bytesOf(byId(`array${id}`).textContent);

function rawValues(id) {
  const bytes = arrayBytes(id);
  const view = new DataView(bytes.buffer);
  return Int16Array.from({length: bytes.length / 2}, (_, i) => view.getInt16(2 * i, true));
}

const palette = bytesOf(pageData.palette);  // 256 times red, green, blue

// A scan with its arrays. Cells are numbered row by row.
class Scan {
  constructor(entry) {
    Object.assign(this, entry);
    this.raw = rawValues(entry.heights);
    this.bytes = entry.intensities === undefined ? null : arrayBytes(entry.intensities);
    this.decimals = decimalsFor(this.scale, this.offset);
    if (this.kind === "profile") this.placePoints();
  }

  // From left to right.
  placePoints() {
    const count = this.raw.length;
    this.order = Uint32Array.from({length: count}, (_, i) => i);
    if (this.places === undefined) {
      this.xs = Float64Array.from({length: count}, (_, i) => this.xOf(i));
      this.placeDecimals = decimalsFor(this.stepX, this.x);
    } else {
      this.placeDecimals = decimalsFor(this.placeScale, this.placeOffset);
      this.xs = Float64Array.from(rawValues(this.places),
        (raw) => raw === NOT_MEASURED ? NaN : raw * this.placeScale + this.placeOffset);
    }
    // A point of unknown place, which is a gap, is put on its neighbour.
    let x = this.xs.find((value) => !Number.isNaN(value)) ?? 0;
    this.xs.forEach((value, i) => {
      if (Number.isNaN(value)) this.xs[i] = x;
      else x = value;
    });
    if (this.xs[count - 1] < this.xs[0]) {
      this.xs.reverse();
      this.order.reverse();
    }
  }

  z(cell) {
    const raw = this.raw[cell];
    return raw === NOT_MEASURED ? NaN : raw * this.scale + this.offset;
  }
  xOf(column) { return this.x + column * this.stepX; }
  yOf(row) { return this.y + row * this.stepY; }

  // Place and values of a cell, as pairs to show.
  tell(column, row) {
    const cell = row * this.width + column;
    const pairs = [
      ["x", mm(this.xOf(column), decimalsFor(this.stepX, this.x))],
      ["y", mm(this.yOf(row), decimalsFor(this.stepY, this.y))],
      ["z", mm(this.z(cell), this.decimals)],
    ];
    if (this.bytes) pairs.push(["intensity", String(this.bytes[cell])]);
    pairs.push(["column", String(column)], ["row", String(row)]);
    return pairs;
  }

  get share() { return this.columns * this.rows / Math.max(1, this.raw.length); }

  // What the scan is, in a sentence or two.
  get text() {
    const points = this.rows === 1 ? `${this.columns} points`
      : `${this.columns} × ${this.rows} points`;
    const names = {surface: "Surface", cloud: "Point cloud", profile: "Profile"};
    let text = `${names[this.kind]} of ${points}. `;
    if (this.columns * this.rows === 0) return text;
    if (this.measured === 0) return `${text}Nothing was measured, or has no finite place.`;
    text += `Heights from ${number(this.low, this.decimals)} to ${mm(this.high, this.decimals)}. `;
    if (this.kind === "profile") {
      return text + (this.reduced ? `Reduced to ${this.raw.length} points: of each run of points ` +
        "that follow each other, the lowest and the highest remain." : "Every point is here.");
    }
    if (this.kind === "cloud") {
      return text + `Seen from above in ${this.width} × ${this.length} cells of ` +
        `${number(Math.abs(this.stepX))} × ${mm(Math.abs(this.stepY))}: each is the mean of the ` +
        "points in it.";
    }
    return text + (this.reduced ? `Reduced to ${this.width} × ${this.length} cells: each is the ` +
      `mean of about ${this.share.toPrecision(3)} points.` : "Every point is here.");
  }
}

const sourceNames = [...new Set(pageData.scans.map((entry) => entry.source))];
const frameNumbers = [...new Set(pageData.scans.map((entry) => entry.frame))];

// All scans of a source share their colours, so that frames can be compared.
function heightRange(source) {
  const entries = pageData.scans.filter((entry) => entry.source === source && entry.measured > 0);
  if (entries.length === 0) return {low: 0, high: 0};
  return {
    low: entries.reduce((low, entry) => Math.min(low, entry.low), Infinity),
    high: entries.reduce((high, entry) => Math.max(high, entry.high), -Infinity),
  };
}

// Where a height lies in the palette.
function colourIndex(z, range) {
  const part = range.high > range.low ? (z - range.low) / (range.high - range.low) : 0.5;
  return Math.round(255 * Math.min(Math.max(part, 0), 1));
}

// What of the file is on the page.
function noticeText() {
  const {scans, budget, every, frames, leftOut} = pageData;
  const reduced = scans.filter((entry) => entry.reduced).length;
  const sentences = [];
  if (every > 1) {
    sentences.push(`Of ${frames} frames, the first and every ${every}. after it are here.`);
  }
  if (leftOut > 0) sentences.push(`Scans left out besides: ${leftOut}.`);
  if (reduced > 0 && scans.length === 1) sentences.push("The scan is reduced.");
  else if (reduced > 0) sentences.push(`Reduced scans: ${reduced} of ${scans.length}.`);
  if (sentences.length === 0) return "";
  return `${sentences.join(" ")} This page holds at most ${budget} points (--points).`;
}
