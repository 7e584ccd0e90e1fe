// SPDX-License-Identifier: MIT
// A line of points as a plot, and the distance between two of its points.
import {onDrag, onKeys, placeAt, pointIn} from "./drawing.mjs";
import {byId, element, showPairs, speak} from "./elements.mjs";
import {lineFigurePairs} from "./figures.mjs";
import {LinePlot} from "./plot.mjs";
import {spoken} from "./text.mjs";
import {Unit, ratioOf} from "./units.mjs";

export function pointsOf(scan) {
  const shown = (height) => Float64Array.from(scan.order, (point) => scan.unitZ.shown(height(point)));
  const points = {
    x: scan.xs.map((x) => scan.placeUnit.shown(x)),
    z: shown((point) => scan.z(point)),
    xTitle: scan.placeUnit.axis(scan.isColumn ? "y" : "x"),
    zTitle: scan.unitZ.axis("z"),
  };
  if (scan.hasExtremes) {
    points.lowest = shown((point) => scan.lowestOf(point));
    points.highest = shown((point) => scan.highestOf(point));
  }
  return points;
}

// Place and values of a point, as pairs to show.
export function tellPoint(scan, index) {
  const point = scan.order[index];
  const spread = scan.tellSpread(point);
  const pairs = [
    [scan.isColumn ? "y" : "x", scan.placeUnit.text(scan.xs[index])],
    [spread.length > 0 ? "mean z" : "z", scan.unitZ.text(scan.z(point))],
    ...spread,
  ];
  if (scan.bytes) pairs.push(["intensity", String(scan.bytes[point])]);
  pairs.push(["point", String(point)]);
  return pairs;
}

// From one point of a line to another.
export function distanceFacts(scan, [a, b]) {
  const dx = scan.xs[b] - scan.xs[a];
  const heights = [...scan.order.subarray(Math.min(a, b), Math.max(a, b) + 1)].map((point) =>
    scan.z(point));
  const dz = scan.z(scan.order[b]) - scan.z(scan.order[a]);
  const ratio = ratioOf(scan.fileUnits[scan.isColumn ? 1 : 0], scan.fileUnits[2]);
  const {name, factor, decimals} = scan.placeUnit;
  const finer = Object.assign(new Unit(name, factor), {decimals: decimals + 1});
  const unknown = "an end is not measured";
  const distance = ratio === 0 ? "z is no length" : finer.difference(Math.hypot(dx, dz * ratio));
  return [
    ["distance", Number.isNaN(dz) ? unknown : distance],
    [`along ${scan.isColumn ? "y" : "x"}`, finer.difference(dx)],
    ["height difference B − A", Number.isNaN(dz) ? unknown : scan.unitZ.difference(dz)],
    ...lineFigurePairs(heights, scan.fileUnits[2]),
  ];
}

// The first and the last point with a height.
export function endsOf(heights) {
  const measured = [...heights.keys()].filter((i) => !Number.isNaN(heights[i]));
  return [measured[0] ?? 0, measured.at(-1) ?? 0];
}

// A table of all points, in the units of the file.
export function profileTable(scan) {
  const units = scan.fileUnits.map(([name]) => name === "" ? "" : ` (${name})`);
  const levelled = {none: "", plane: ", levelled by a line", mean: ", levelled by the mean"};
  const extremes = scan.hasExtremes ? [`lowest${units[2]}`, `highest${units[2]}`] : [];
  const head = [scan.isColumn ? `y${units[1]}` : `x${units[0]}`,
    `z${levelled[scan.level]}${units[2]}`, ...extremes];
  return [head, ...Array.from(scan.order, (point, i) => [scan.xs[i], scan.z(point),
    ...scan.hasExtremes ? [scan.lowestOf(point), scan.highestOf(point)] : []])];
}

export class ProfileView {
  // `onMarks()` hears that an end was moved.
  constructor(onMarks) {
    const stage = byId("profile-plot");
    this.onMarks = onMarks;
    this.plot = new LinePlot(stage, {
      label: "Profile. Left and right move the readout.",
      onCursor: (index, byKey) => this.showPoint(index, byKey),
      onView: () => this.placeMarks(),
    });
    this.marks = [0, 0];
    this.handles = ["A", "B"].map((name, end) => this.makeHandle(stage, name, end));
    onKeys(this.plot.canvas, (key) => {
      const end = "ab".indexOf(key.toLowerCase());
      if (end < 0) return false;
      this.moveMark(end, this.plot.index);
      return true;
    });
  }

  makeHandle(stage, name, end) {
    const handle = element("button", "handle", name);
    handle.type = "button";
    onDrag(handle, {
      move: (dx, dy, event) =>
        this.moveMark(end, this.plot.view.nearest(pointIn(this.plot.canvas, event).x)),
    });
    onKeys(handle, (key, by) => {
      const index = this.plot.view.step(this.marks[end], key, by);
      if (index < 0) return false;
      this.moveMark(end, index);
      speak(tellPoint(this.scan, index));
      return true;
    });
    stage.append(handle);
    return handle;
  }

  show(scan) {
    const same = this.count === scan.count;
    this.scan = scan;
    this.count = scan.count;
    const points = pointsOf(scan);
    if (!same) {
      this.marks = endsOf(points.z);
      this.plot.index = points.z.length >> 1;
    }
    this.plot.show(points, same);
    this.showDistance();
  }

  showPoint(index, byKey) {
    if (this.scan.count === 0) return;
    const pairs = tellPoint(this.scan, index);
    showPairs(byId("profile-readout"), pairs);
    if (byKey) speak(pairs);
  }

  moveMark(end, index) {
    if (!(index >= 0 && index < this.scan.count)) return;
    this.marks[end] = index;
    this.plot.demand();
    this.showDistance();
    this.onMarks();
  }

  showDistance() {
    showPairs(byId("profile-facts"), distanceFacts(this.scan, this.marks));
  }

  placeMarks() {
    const {view} = this.plot;
    const {x, z} = view.points;
    this.marks.forEach((index, end) => {
      const bottom = view.shown.height - view.margin.bottom;
      const place = view.toScreenX(x[index]);
      placeAt(this.handles[end], place, Number.isNaN(z[index]) ? bottom : view.toScreenZ(z[index]),
        view.shown);
      this.handles[end].hidden ||= place < view.margin.left - 1;
      this.handles[end].setAttribute("aria-label",
        `End ${"AB"[end]}: ${spoken(tellPoint(this.scan, index))}`);
    });
  }
}
