// SPDX-License-Identifier: MIT
// The height map: its picture, its axes, and the cell with the readout.
import {numbering} from "./colours.mjs";
import {drawOnDemand, fitCanvas, hatchPattern, themeColour} from "./drawing.mjs";
import {blockFor, largeFor} from "./grid.mjs";
import {MapView} from "./mapview.mjs";
import {OddCells} from "./odd.mjs";
import {paint, placesOf} from "./paint.mjs";
import {labelsThatFit} from "./text.mjs";

const FONT = "12px system-ui, sans-serif";

export class HeightMap {
  // `axes`: the canvases beside and below. `onCell(cell, byKey)` hears of the cell with the readout;
  // `onView(context)` of every drawing.
  constructor(canvas, axes, table, onCell, onView) {
    this.canvas = canvas;
    [this.axisX, this.axisY] = axes;
    this.table = table;
    this.onCell = onCell;
    this.onView = onView;
    this.cell = {column: 0, row: 0};
    this.demand = drawOnDemand(canvas, () => this.draw());
    this.view = new MapView(canvas, this.demand);
  }

  // Heights in `blocks` get the colours of `range`.
  show(scan, blocks, range) {
    const isNew = this.view.show(scan);
    this.blocks = blocks;
    this.odd = new OddCells(blocks.grids[0]);
    this.range = range;
    const [width, height] = [scan.width * this.view.steps[0], scan.length * this.view.steps[1]];
    this.canvas.style.setProperty("--shape", width / height);
    if (isNew) this.cell = {column: scan.width >> 1, row: scan.length >> 1};
    this.demand();
    this.onCell(this.cell, false);
  }
  setRange(range) {
    this.range = range;
    this.demand();
  }

  setCell(cell, byKey) {
    this.cell = cell;
    if (byKey) this.view.reveal(cell);
    this.onCell(cell, byKey);
    this.demand();
  }

  draw() {
    const {view} = this;
    if (!view.scan || view.scan.width === 0 || view.scan.length === 0) return;
    const {context, width, height} = fitCanvas(this.canvas);
    view.keepInside();
    this.drawHeights(context, width, height);
    const {left, top, right, bottom} = view.box;
    context.globalCompositeOperation = "destination-over";
    context.fillStyle = hatchPattern(context);
    context.fillRect(left, top, right - left, bottom - top);
    context.globalCompositeOperation = "source-over";
    this.circleOddCells(context);
    this.nameFirstRow(context, width, height);
    this.drawAxes();
    this.onView(context);
  }

  drawHeights(context, width, height) {
    const {view} = this;
    const {width: across, height: down} = this.canvas;
    const [ratioX, ratioY] = [across / width, down / height];
    const [sizeX, sizeY] = [view.cellWidth * view.zoom * ratioX, view.cellHeight * view.zoom * ratioY];
    const grid = this.blocks.of(blockFor(sizeX), blockFor(sizeY));
    const columns = placesOf(across, view.box.left * ratioX, sizeX, view.scan.width, view.mirrored,
      grid.columns);
    const rows = placesOf(down, view.box.top * ratioY, sizeY, view.scan.length, view.upwards,
      grid.rows);
    if (this.image?.width !== across || this.image.height !== down) {
      this.image = context.createImageData(across, down);
      this.pixels = new Int32Array(this.image.data.buffer);
    }
    this.pixels.fill(0);
    paint(this.pixels, grid, columns, rows, this.table, numbering(this.range, this.blocks.origin),
      largeFor(this.range, grid));
    context.putImageData(this.image, 0, 0);
  }

  circleOddCells(context) {
    const {low, high} = this.range;
    const {origin} = this.blocks;
    for (const cell of this.odd.within({low: low - origin, high: high - origin})) {
      const {x, y} = this.view.placeOf(cell);
      for (const [colour, width] of [["#000", 3.5], ["#fff", 1.5]]) {
        context.strokeStyle = colour;
        context.lineWidth = width;
        context.beginPath();
        context.arc(x, y, 9, 0, 2 * Math.PI);
        context.stroke();
      }
    }
  }

  // The file's order of rows is told where it begins.
  nameFirstRow(context, width, height) {
    const {top, bottom, left} = this.view.box;
    const atBottom = this.view.upwards;
    const y = atBottom ? bottom : top;
    if (this.view.scan.kind === "cloud") return;  // its rows are not the file's
    if (y < -1 || y > height + 1) return;
    const text = "first row of the file";
    context.font = FONT;
    context.textAlign = "left";
    const x = Math.max(left, 0) + 6;
    const base = atBottom ? Math.min(y, height) - 6 : Math.max(y, 0) + 15;
    context.fillStyle = "rgba(0, 0, 0, 0.6)";
    context.fillRect(x - 3, base - 12, context.measureText(text).width + 6, 16);
    context.fillStyle = "#fff";
    context.fillText(text, x, base);
  }

  drawAxes() {
    this.drawAxisX();
    this.drawAxisY();
  }

  drawAxisX() {
    const {context, width, height} = fitCanvas(this.axisX);
    const {view} = this;
    const {unitX} = view.scan;
    const [left, right] = [Math.max(view.box.left, 0), Math.min(view.box.right, width)];
    const [from, to] = [left, right].map((place) => unitX.shown(view.xAt(place)));
    prepare(context, width, height);
    const labels = labelsThatFit(Math.min(from, to), Math.max(from, to), right - left,
      (text) => context.measureText(text).width + 14);
    context.textAlign = "center";
    for (const [value, text] of labels) {
      const x = left + (value - from) / (to - from || 1) * (right - left);
      const half = context.measureText(text).width / 2;
      context.fillRect(Math.round(x), 0, 1, 5);
      context.fillText(text, Math.min(Math.max(x, half), width - half), 17);
    }
    context.textAlign = "right";
    const {unitY} = view.scan;
    context.fillText(unitX.name === unitY.name ? unitX.axis("x, y")
      : `${unitX.axis("x")}, ${unitY.axis("y")}`, width, 32);
  }

  drawAxisY() {
    const {view} = this;
    const {unitY} = view.scan;
    const height = this.canvas.clientHeight;
    const [top, bottom] = [Math.max(view.box.top, 0), Math.min(view.box.bottom, height)];
    const [from, to] = [top, bottom].map((place) => unitY.shown(view.yAt(place)));
    const labels = labelsThatFit(Math.min(from, to), Math.max(from, to), bottom - top, () => 20);
    const {context, width} = fitCanvas(this.axisY);
    prepare(context, width, height);
    const widest = Math.max(0, ...labels.map(([, text]) => context.measureText(text).width));
    if (widest + 9 > width) this.axisY.style.width = `${Math.ceil(widest) + 10}px`;
    context.textAlign = "right";
    for (const [value, text] of labels) {
      const y = top + (value - from) / (to - from || 1) * (bottom - top);
      context.fillRect(width - 5, Math.round(y), 5, 1);
      context.fillText(text, width - 8, Math.min(Math.max(y + 4, 10), height - 2));
    }
  }
}

function prepare(context, width, height) {
  context.clearRect(0, 0, width, height);
  context.font = FONT;
  context.fillStyle = themeColour("--faint");
}
