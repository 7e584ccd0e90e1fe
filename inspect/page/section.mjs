// SPDX-License-Identifier: MIT
// The line from A to B across the map, and the heights below it.
import {onDrag, onKeys, placeAt, pointIn} from "./drawing.mjs";
import {speak} from "./elements.mjs";
import {lineFigurePairs} from "./figures.mjs";
import {extentOf, spoken} from "./text.mjs";
import {Unit} from "./units.mjs";

// Distances in the plane of the map: in the unit of x, or in cells where x and y cannot be compared.
export function distanceUnit(scan) {
  if (scan.sideRatio === 0) return new Unit("cells", 1).tellingApart(0.01);
  const {name, factor} = scan.unitX;
  const step = Math.min(Math.abs(scan.stepX), Math.abs(scan.stepY * scan.sideRatio));
  return new Unit(name, factor).tellingApart(10 ** Math.floor(Math.log10(step / 20) + 1e-9));
}
function distanceOf(scan, columns, rows) {
  if (scan.sideRatio === 0) return Math.hypot(columns, rows);
  return Math.hypot(columns * scan.stepX, rows * scan.stepY * scan.sideRatio);
}

// The cells that a line passes, each nearest to the line, with their distances from A.
export function cellsAlong(scan, a, b) {
  const columns = b.column - a.column;
  const rows = b.row - a.row;
  const steps = Math.max(Math.abs(columns), Math.abs(rows));
  const whole = distanceOf(scan, columns, rows);
  return Array.from({length: steps + 1}, (_, i) => {
    const part = steps === 0 ? 0 : i / steps;
    const column = Math.round(a.column + columns * part);
    const row = Math.round(a.row + rows * part);
    return {column, row, cell: row * scan.width + column, distance: whole * part};
  });
}

// The heights below the line as a plot shows them.
export function sectionPoints(scan, cells) {
  const unit = distanceUnit(scan);
  const shown = (height) => Float64Array.from(cells, ({cell}) => scan.unitZ.shown(height(cell)));
  const points = {
    x: Float64Array.from(cells, ({distance}) => unit.shown(distance)),
    z: shown((cell) => scan.z(cell)),
    xTitle: unit.axis("distance from A"),
    zTitle: scan.unitZ.axis("z"),
  };
  if (scan.hasExtremes) {
    points.lowest = shown((cell) => scan.lowestOf(cell));
    points.highest = shown((cell) => scan.highestOf(cell));
  }
  return points;
}

export function sectionFacts(scan, cells) {
  const {unitZ} = scan;
  const heights = cells.map(({cell}) => scan.z(cell));
  const {low} = extentOf(cells.map(({cell}) => scan.lowestOf(cell)));
  const {high} = extentOf(cells.map(({cell}) => scan.highestOf(cell)));
  const difference = heights.at(-1) - heights[0];
  return [
    ["length", distanceUnit(scan).text(cells.at(-1).distance)],
    ["height difference B − A",
      Number.isNaN(difference) ? "an end is not measured" : unitZ.difference(difference)],
    ["lowest", unitZ.text(low)],
    ["highest", unitZ.text(high)],
    ...lineFigurePairs(heights, scan.fileUnits[2]),
  ];
}

// A table of the section, in the units of the file.
export function sectionTable(scan, cells) {
  const [x, y, z] = scan.fileUnits.map(([name]) => name === "" ? "" : ` (${name})`);
  const levelled = {none: "", plane: ", levelled by a plane", mean: ", levelled by the mean"};
  const extremes = scan.hasExtremes ? ["lowest", "highest"].map((name) => name + z) : [];
  const head = [`distance${scan.sideRatio === 0 ? " (cells)" : x}`, `x${x}`, `y${y}`,
    `z${levelled[scan.level]}${z}`, ...extremes];
  return [head, ...cells.map(({cell, column, row, distance}) => [distance, scan.xOf(column),
    scan.yOf(row), scan.z(cell),
    ...scan.hasExtremes ? [scan.lowestOf(cell), scan.highestOf(cell)] : []])];
}

// As the handles look, for pictures that are saved.
function nameEnd(context, name, x, y) {
  context.beginPath();
  context.arc(x, y, 11, 0, 2 * Math.PI);
  context.fillStyle = "#fff";
  context.strokeStyle = "#000";
  context.lineWidth = 2;
  context.fill();
  context.stroke();
  context.font = "bold 13px system-ui, sans-serif";
  context.textAlign = "center";
  context.fillStyle = "#000";
  context.fillText(name, x, y + 5);
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

  // Keeps its ends while they are on the map.
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
      nameEnd(context, "AB"[end], x, y);
      placeAt(this.handles[end], x, y, this.map.view.shown);
      const {column, row} = this.ends[end];
      const place = this.map.view.scan.tell(column, row).slice(0, 3);
      this.handles[end].setAttribute("aria-label", `End ${"AB"[end]}: ${spoken(place)}`);
    });
  }
}
