// SPDX-License-Identifier: MIT
// A step: the difference of the mean heights of two areas that the user draws on the map.
import {sizeText} from "./figures.mjs";

// Of the cells in a rectangle from one corner to another, both in it.
export function areaOf(scan, [a, b]) {
  const [left, right] = [a.column, b.column].sort((p, q) => p - q);
  const [first, last] = [a.row, b.row].sort((p, q) => p - q);
  let [count, mean, squares] = [0, 0, 0];
  for (let row = first; row <= last; ++row) {
    for (let column = left; column <= right; ++column) {
      const z = scan.z(row * scan.width + column);
      if (Number.isNaN(z)) continue;
      const before = z - mean;
      mean += before / ++count;
      squares += before * (z - mean);
    }
  }
  return {count, mean: count > 0 ? mean : NaN,
    deviation: count > 1 ? Math.sqrt(squares / (count - 1)) : NaN};
}

export function stepPairs(scan, areas) {
  const zUnit = scan.fileUnits[2];
  const found = areas.map((corners) => corners && areaOf(scan, corners));
  const what = scan.reduced || scan.kind === "cloud" ? "cells" : "points";
  const pairs = found.flatMap((area, i) => area ? [
    [`area ${i + 1}`, `mean ${scan.unitZ.text(area.mean)}, standard deviation ` +
      `${sizeText(zUnit, area.deviation)}, ${area.count} ${what}`]] : []);
  if (found[0] && found[1]) {
    const step = found[1].mean - found[0].mean;
    pairs.push(["step from 1 to 2", Number.isNaN(step) ? "an area is not measured"
      : scan.unitZ.difference(step)]);
  }
  return pairs;
}

export class StepAreas {
  // `onAreas()` hears of every change.
  constructor(map, onAreas) {
    this.map = map;
    this.onAreas = onAreas;
    this.clear();
  }

  clear() {
    this.corners = [null, null];
    this.open = null;  // the corner at which an area begins, by keys
    this.next = 0;
  }

  // A new area from a corner; the older one of two goes.
  begin(cell) {
    this.corners[this.next] = [cell, cell];
    this.change();
  }
  grow(cell) {
    this.corners[this.next][1] = cell;
    this.change();
  }
  finish() { this.next = 1 - this.next; }
  change() {
    this.map.demand();
    this.onAreas();
  }

  // By keys: one corner, then the other.
  mark(area, cell) {
    if (this.open?.area === area) {
      this.corners[area] = [this.open.cell, cell];
      this.open = null;
    } else {
      this.open = {area, cell};
      this.corners[area] = [cell, cell];
    }
    this.change();
  }

  draw(context) {
    const {view} = this.map;
    this.corners.forEach((corners, i) => {
      if (!corners) return;
      const [a, b] = corners.map((cell) => view.placeOf(cell));
      const [halfX, halfY] = [view.cellWidth, view.cellHeight].map((size) => size * view.zoom / 2);
      const [left, top] = [Math.min(a.x, b.x) - halfX, Math.min(a.y, b.y) - halfY];
      for (const [colour, width] of [["#000", 3.5], ["#fff", 1.5]]) {
        context.strokeStyle = colour;
        context.lineWidth = width;
        context.strokeRect(left, top, Math.abs(a.x - b.x) + 2 * halfX, Math.abs(a.y - b.y) + 2 * halfY);
      }
      context.font = "bold 13px system-ui, sans-serif";
      context.textAlign = "left";
      context.lineWidth = 3;
      context.strokeStyle = "#000";
      context.strokeText(String(i + 1), left + 5, top + 15);
      context.fillStyle = "#fff";
      context.fillText(String(i + 1), left + 5, top + 15);
    });
  }
}
