// SPDX-License-Identifier: MIT
// A scan with its arrays, which the page carries in base64.
import {clean, decimalsFor, measure, number} from "./text.mjs";

const NOT_MEASURED = -32768;

export function bytesOf(base64) {
  return Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
}

function rawValues(base64) {
  const bytes = bytesOf(base64);
  const view = new DataView(bytes.buffer);
  return Int16Array.from({length: bytes.length / 2}, (_, i) => view.getInt16(2 * i, true));
}

// Of x, y and z.
export const unitsOf = (entry) => (entry.units ?? ["mm", "mm", "mm"]).map(clean);

// Cells are numbered row by row.
export class Scan {
  // `entry` describes the scan; `arrayText` gives the text of an array that it names.
  constructor(entry, arrayText) {
    this.heightUnit = 1;  // in units of x, 0 where it is no length
    Object.assign(this, entry);
    this.units = unitsOf(entry);
    this.raw = rawValues(arrayText(entry.heights));
    this.bytes = entry.intensities === undefined ? null : bytesOf(arrayText(entry.intensities));
    this.decimals = decimalsFor(this.scale, this.offset);
    if (this.kind === "profile") this.placePoints(arrayText);
  }

  // From left to right.
  placePoints(arrayText) {
    const count = this.raw.length;
    this.order = Uint32Array.from({length: count}, (_, i) => i);
    if (this.places === undefined) {
      this.xs = Float64Array.from({length: count}, (_, i) => this.xOf(i));
      this.placeDecimals = decimalsFor(this.stepX, this.x);
    } else {
      this.placeDecimals = decimalsFor(this.placeScale, this.placeOffset);
      this.xs = Float64Array.from(rawValues(arrayText(this.places)),
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
      ["x", measure(this.xOf(column), decimalsFor(this.stepX, this.x), this.units[0])],
      ["y", measure(this.yOf(row), decimalsFor(this.stepY, this.y), this.units[1])],
      ["z", measure(this.z(cell), this.decimals, this.units[2])],
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
    text += `Heights from ${number(this.low, this.decimals)} to ` +
      `${measure(this.high, this.decimals, this.units[2])}. `;
    if (this.kind === "profile") {
      return text + (this.reduced ? `Reduced to ${this.raw.length} points: of each run of points ` +
        "that follow each other, the lowest and the highest remain." : "Every point is here.");
    }
    if (this.kind === "cloud") {
      return text + `Seen from above in ${this.width} × ${this.length} cells of ` +
        `${number(Math.abs(this.stepX))} × ${measure(Math.abs(this.stepY), 3, this.units[1])}: ` +
        "each is the mean of the points in it.";
    }
    return text + (this.reduced ? `Reduced to ${this.width} × ${this.length} cells: each is the ` +
      `mean of about ${this.share.toPrecision(3)} points.` : "Every point is here.");
  }
}
