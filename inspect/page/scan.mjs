// SPDX-License-Identifier: MIT
// A scan with its arrays, which the page carries in base64.
import {counted} from "./text.mjs";
import {heightUnit, lengthUnit, ratioOf, unitsOf} from "./units.mjs";
import {viewOf} from "./views.mjs";

const NOT_MEASURED = -32768;

export function bytesOf(base64) {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

function rawValues(base64) {
  const bytes = bytesOf(base64);
  const view = new DataView(bytes.buffer);
  const values = new Int16Array(bytes.length / 2);
  for (let i = 0; i < values.length; ++i) values[i] = view.getInt16(2 * i, true);
  return values;
}

const LEVELS = {
  none: "", plane: " Levelled by a plane: it is taken off all heights.",
  mean: " Levelled by the mean: it is taken off all heights.",
};
const KINDS = {surface: "Surface", cloud: "Point cloud", profile: "Profile"};

// Cells are numbered row by row. Heights are those of the view that is chosen, in the unit of the
// file.
export class Scan {
  // `entry` describes the scan; `arrayText` gives the text of an array that it names.
  constructor(entry, arrayText) {
    Object.assign(this, entry);
    this.fileUnits = unitsOf(entry);
    const values = ({array, scale, offset}) => ({raw: rawValues(arrayText(array)), scale, offset});
    this.heights = values({array: entry.heights, ...entry});
    this.lowest = entry.lows ? values(entry.lows) : this.heights;
    this.highest = entry.highs ? values(entry.highs) : this.heights;
    this.count = this.heights.raw.length;
    this.hasExtremes = entry.lows !== undefined;
    this.bytes = entry.intensities === undefined ? null : bytesOf(arrayText(entry.intensities));
    // Heights can be compared with x, and y with x.
    this.heightRatio = ratioOf(this.fileUnits[0], this.fileUnits[2]);
    this.sideRatio = ratioOf(this.fileUnits[0], this.fileUnits[1]);
    this.isLine = this.kind === "profile" ||
      (this.kind === "surface" && Math.min(this.width, this.length) === 1);
    this.isColumn = this.isLine && this.width === 1 && this.length > 1;
    this.fitSides();
    if (this.isLine) this.placePoints(arrayText);
    this.setLevel("none", null);
  }

  // x and y share a unit where both are lengths.
  fitSides() {
    const [x, y] = this.fileUnits;
    const [spanX, spanY] = [this.stepX * (this.width - 1), this.stepY * (this.length - 1)].map(Math.abs);
    const shared = this.sideRatio > 0 && x[1] > 0;
    this.unitX = lengthUnit(x, shared ? Math.max(spanX, spanY * this.sideRatio) : spanX)
      .tellingApart(this.stepX, this.x);
    this.unitY = lengthUnit(y, shared ? Math.max(spanX / this.sideRatio, spanY) : spanY)
      .tellingApart(this.stepY, this.y);
  }

  // The points of a line, from left to right.
  placePoints(arrayText) {
    const {count} = this;
    this.order = Uint32Array.from({length: count}, (_, i) => i);
    this.placeUnit = this.isColumn ? this.unitY : this.unitX;
    if (this.places === undefined) {
      this.xs = Float64Array.from({length: count}, (_, i) =>
        this.isColumn ? this.yOf(i) : this.xOf(i));
    } else {
      this.xs = Float64Array.from(rawValues(arrayText(this.places)),
        (raw) => raw === NOT_MEASURED ? NaN : raw * this.placeScale + this.placeOffset);
    }
    if (this.places !== undefined) this.placed = this.xs.slice();
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
    if (this.places !== undefined) {
      this.placeUnit = this.unitX = lengthUnit(this.fileUnits[0], this.xs[count - 1] - this.xs[0])
        .tellingApart(this.placeScale, this.placeOffset);
    }
  }

  // How far apart heights are that can be told apart: means of many points have no raw values.
  get heightStep() {
    const span = this.high - this.low;
    return this.hasExtremes && span > 0 ? 10 ** Math.floor(Math.log10(span) - 3) : this.scale;
  }

  // `range`: the heights that a unit is to fit, null for those of the scan.
  setLevel(level, range) {
    this.view = viewOf(this, level);
    this.level = this.view ? level : "none";
    const {low, high, offset = 0, perColumn = 0, perRow = 0} = this.view ?? {low: 0, high: 0};
    [this.low, this.high] = [low, high];
    this.plane = {offset, perColumn, perRow};
    this.unitZ = heightUnit(this.fileUnits[2], ...Object.values(range ?? {low, high}))
      .tellingApart(this.heightStep, level === "none" && !this.hasExtremes ? this.offset : 0);
  }

  // Points that tell their places are levelled by these.
  planeAt(column, row) {
    if (this.placed) return this.plane.offset + this.plane.perColumn * (this.placed[column] || 0);
    return this.plane.offset + this.plane.perColumn * column + this.plane.perRow * row;
  }
  heightOf({raw, scale, offset}, cell) {
    if (raw[cell] === NOT_MEASURED) return NaN;
    const row = Math.floor(cell / this.width);
    return raw[cell] * scale + offset - this.planeAt(cell - row * this.width, row);
  }
  z(cell) { return this.heightOf(this.heights, cell); }
  lowestOf(cell) { return this.heightOf(this.lowest, cell); }
  highestOf(cell) { return this.heightOf(this.highest, cell); }
  xOf(column) { return this.x + column * this.stepX; }
  yOf(row) { return this.y + row * this.stepY; }

  // All cells' heights less `origin`, with gaps as NaN, in less memory.
  shifted({raw, scale, offset}, origin) {
    const values = new Float32Array(raw.length);
    const {perColumn} = this.plane;
    for (let row = 0, i = 0; row < this.length; ++row) {
      let shift = offset - origin - this.planeAt(0, row);
      for (const end = i + this.width; i < end; ++i, shift -= perColumn) {
        values[i] = raw[i] === NOT_MEASURED ? NaN : raw[i] * scale + shift;
      }
    }
    return values;
  }

  // What a cell that stands for several points tells of them.
  tellSpread(cell) {
    if (!this.hasExtremes || !(this.highestOf(cell) > this.lowestOf(cell))) return [];
    const [low, high] = [this.lowestOf(cell), this.highestOf(cell)];
    const pairs = [["lowest", this.unitZ.text(low)], ["highest", this.unitZ.text(high)]];
    if (this.kind === "cloud" && high - low > (this.high - this.low) / 10) {
      pairs.push(["note", "front and back may be mixed here"]);
    }
    return pairs;
  }

  // Place and values of a cell, as pairs to show.
  tell(column, row) {
    const cell = row * this.width + column;
    const spread = this.tellSpread(cell);
    const pairs = [
      ["x", this.unitX.text(this.xOf(column))],
      ["y", this.unitY.text(this.yOf(row))],
      [spread.length > 0 ? "mean z" : "z", this.unitZ.text(this.z(cell))],
      ...spread,
    ];
    if (this.bytes) pairs.push(["intensity", String(this.bytes[cell])]);
    pairs.push(["column", String(column)], ["row", String(row)]);
    return pairs;
  }

  get share() { return this.columns * this.rows / Math.max(1, this.count); }

  // Units of the file that are not told in mm, which a conversion does not read.
  get unitsText() {
    if (this.fileUnits.every(([name]) => name === "mm")) return "";
    const told = this.fileUnits.map(([name], axis) => `${"xyz"[axis]} in ${name || "no unit"}`);
    return ` The file tells ${told.join(", ")}; a conversion takes all of them for mm.`;
  }

  // What the scan is, in some sentences.
  get text() {
    const points = this.rows === 1 ? counted(this.columns, "point")
      : `${this.columns} × ${this.rows} points`;
    const text = `${KINDS[this.kind]} of ${points}.`;
    if (this.columns * this.rows === 0) return text;
    if (!this.view) return `${text} Nothing was measured, or has no finite place.`;
    const of = this.reduced || this.kind === "cloud" ? " (of all points)" : "";
    const heights = `Heights from ${this.unitZ.range(this.low, this.high)}${of}`;
    return `${text} ${heights.replace(/\.?$/, ".")}` +
      `${LEVELS[this.level]} ${this.cellsText}${this.unitsText}`;
  }

  // What of the scan is on the page.
  get cellsText() {
    if (this.kind === "profile") {
      return this.reduced ? `Reduced to ${this.count} points: of each run of points that follow ` +
        "each other, the lowest and the highest remain." : "Every point is here.";
    }
    const extremes = "a cell keeps its lowest and its highest point beside the mean";
    if (this.kind === "cloud") {
      return `Seen from above in ${this.width} × ${this.length} cells of ` +
        `${this.unitX.difference(Math.abs(this.stepX))} × ` +
        `${this.unitY.difference(Math.abs(this.stepY))}; ${extremes}.`;
    }
    return this.reduced ? `Reduced to ${this.width} × ${this.length} cells of about ` +
      `${this.share.toPrecision(3)} points; ${extremes}.` : "Every point is here.";
  }
}
