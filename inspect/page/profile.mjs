// SPDX-License-Identifier: MIT
// A profile as a plot, and the distance between two of its points.
import {onDrag, onKeys, placeAt, pointIn} from "./drawing.mjs";
import {byId, element, showPairs, speak} from "./elements.mjs";
import {LinePlot} from "./plot.mjs";
import {MARGIN} from "./plotview.mjs";
import {measure, spoken} from "./text.mjs";

export const pointsOf = (scan) => ({
  x: scan.xs,
  z: Float64Array.from(scan.order, (point) => scan.z(point)),
  units: scan.units,
  heightUnit: scan.heightUnit,
});

// Place and values of a point, as pairs to show.
export function tellPoint(scan, index) {
  const point = scan.order[index];
  const pairs = [
    ["x", measure(scan.xs[index], scan.placeDecimals, scan.units[0])],
    ["z", measure(scan.z(point), scan.decimals, scan.units[2])],
  ];
  if (scan.bytes) pairs.push(["intensity", String(scan.bytes[point])]);
  pairs.push(["point", String(point)]);
  return pairs;
}

export function distanceFacts({x, z, units, heightUnit}, [a, b], decimals) {
  const dx = x[b] - x[a];
  const dz = z[b] - z[a];
  const unknown = "an end is not measured";
  const distance = heightUnit === 0 ? "z is no length"
    : measure(Math.hypot(dx, dz * heightUnit), 4, units[0]);
  return [
    ["distance", Number.isNaN(dz) ? unknown : distance],
    ["along x", measure(dx, 4, units[0])],
    ["height difference B − A", Number.isNaN(dz) ? unknown : measure(dz, decimals, units[2])],
  ];
}

// The first and the last point with a height.
export function endsOf(heights) {
  const measured = [...heights.keys()].filter((i) => !Number.isNaN(heights[i]));
  return [measured[0] ?? 0, measured.at(-1) ?? 0];
}

export class ProfileView {
  constructor() {
    const stage = byId("profile-plot");
    this.plot = new LinePlot(stage, {
      label: "Profile. Left and right move the readout.",
      xName: "x",
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
    const same = this.scan && this.scan.raw.length === scan.raw.length;
    this.scan = scan;
    const points = pointsOf(scan);
    if (!same) {
      this.marks = endsOf(points.z);
      this.plot.index = points.z.length >> 1;
    }
    this.plot.show(points, same);
    this.showDistance();
  }

  showPoint(index, byKey) {
    if (this.scan.raw.length === 0) return;
    const pairs = tellPoint(this.scan, index);
    showPairs(byId("profile-readout"), pairs);
    if (byKey) speak(pairs);
  }

  moveMark(end, index) {
    if (index < 0) return;
    this.marks[end] = index;
    this.plot.demand();
    this.showDistance();
  }

  showDistance() {
    showPairs(byId("profile-facts"),
      distanceFacts(this.plot.view.points, this.marks, this.scan.decimals));
  }

  placeMarks() {
    this.marks.forEach((index, end) => {
      const {x, z} = this.plot.view.points;
      const bottom = this.plot.canvas.clientHeight - MARGIN.bottom;
      const place = this.plot.view.toScreenX(x[index]);
      placeAt(this.handles[end], place, Number.isNaN(z[index]) ? bottom
        : this.plot.view.toScreenZ(z[index]), this.plot.canvas);
      this.handles[end].hidden ||= place < MARGIN.left - 1;
      this.handles[end].setAttribute("aria-label",
        `End ${"AB"[end]}: ${spoken(tellPoint(this.scan, index))}`);
    });
  }
}
