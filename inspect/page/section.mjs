// SPDX-License-Identifier: MIT
// The line from A to B across the map, and the heights below it.
import {onDrag, onKeys, placeAt, pointIn} from "./drawing.mjs";
import {speak} from "./elements.mjs";
import {extentOf, measure, spoken} from "./text.mjs";

// The cells that a line passes, each nearest to the line, with their distances from A, in
// the unit of x.
export function cellsAlong(scan, a, b) {
  const columns = b.column - a.column;
  const rows = b.row - a.row;
  const steps = Math.max(Math.abs(columns), Math.abs(rows));
  const whole = Math.hypot(columns * scan.stepX, rows * scan.stepY);
  return Array.from({length: steps + 1}, (_, i) => {
    const part = steps === 0 ? 0 : i / steps;
    const column = Math.round(a.column + columns * part);
    const row = Math.round(a.row + rows * part);
    return {column, row, distance: whole * part};
  });
}

export const heightAt = (scan, {column, row}) => scan.z(row * scan.width + column);

export function sectionFacts(scan, a, b, cells) {
  const {low, high} = extentOf(cells.map((cell) => heightAt(scan, cell)));
  const difference = heightAt(scan, b) - heightAt(scan, a);
  const length = Math.hypot((b.column - a.column) * scan.stepX, (b.row - a.row) * scan.stepY);
  return [
    ["length", measure(length, 4, scan.units[0])],
    ["height difference B − A", Number.isNaN(difference) ? "an end is not measured"
      : measure(difference, scan.decimals, scan.units[2])],
    ["lowest", measure(low, scan.decimals, scan.units[2])],
    ["highest", measure(high, scan.decimals, scan.units[2])],
  ];
}

export class SectionLine {
  // `onLine()` hears that an end was moved.
  constructor(map, handles, onLine) {
    this.map = map;
    this.handles = handles;
    this.onLine = onLine;
    handles.forEach((handle, end) => {
      onDrag(handle, {
        move: (dx, dy, event) => this.moveEnd(end, map.view.cellAt(pointIn(map.canvas, event))),
      });
      onKeys(handle, (key, by) => {
        const cell = map.view.step(this.ends[end], key, by);
        if (!cell) return false;
        this.moveEnd(end, cell);
        map.view.reveal(cell);
        speak(map.view.scan.tell(cell.column, cell.row));
        return true;
      });
    });
  }

  // Keeps its ends while the map keeps its size.
  fit(scan) {
    const inside = (cell) => cell.column < scan.width && cell.row < scan.length;
    if (this.ends && this.ends.every(inside)) return;
    const row = scan.length >> 1;
    this.ends = [0.1, 0.9].map((part) => ({column: Math.floor((scan.width - 1) * part), row}));
  }

  moveEnd(end, cell) {
    this.ends[end] = cell;
    this.map.demand();
    this.onLine();
  }

  draw(context) {
    const [a, b] = this.ends.map((cell) => this.map.view.placeOf(cell));
    for (const [colour, width] of [["#000", 3.5], ["#fff", 1.5]]) {
      context.strokeStyle = colour;
      context.lineWidth = width;
      context.beginPath();
      context.moveTo(a.x, a.y);
      context.lineTo(b.x, b.y);
      context.stroke();
    }
    [a, b].forEach(({x, y}, end) => {
      placeAt(this.handles[end], x, y, this.map.canvas);
      const {column, row} = this.ends[end];
      const place = this.map.view.scan.tell(column, row).slice(0, 3);
      this.handles[end].setAttribute("aria-label", `End ${"AB"[end]}: ${spoken(place)}`);
    });
  }
}
