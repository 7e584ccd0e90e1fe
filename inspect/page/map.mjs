// SPDX-License-Identifier: MIT
// The height map: its picture, and the cell with the readout.
import {colourIndex} from "./colourbar.mjs";
import {drawOnDemand, fitCanvas, hatchPattern} from "./drawing.mjs";
import {MapView} from "./mapview.mjs";

const TILE = 2048;  // cells of a part of the image: no browser takes images of any size

// The parts of a picture.
export function partsOf(width, length) {
  const parts = [];
  for (let y = 0; y < length; y += TILE) {
    for (let x = 0; x < width; x += TILE) {
      parts.push({x, y, width: Math.min(TILE, width - x), height: Math.min(TILE, length - y)});
    }
  }
  return parts;
}

// Red, green, blue and opacity of the cells in a part of the picture.
export function pixelsOf(view, {x, y, width, height}, palette, range) {
  const pixels = new Uint8ClampedArray(4 * width * height);
  for (let j = 0, i = 0; j < height; ++j) {
    const row = view.flipRow(y + j);
    for (let k = 0; k < width; ++k, i += 4) {
      const z = view.scan.z(row * view.scan.width + view.flipColumn(x + k));
      if (Number.isNaN(z)) continue;  // transparent
      const colour = 3 * colourIndex(z, range);
      pixels.set(palette.subarray(colour, colour + 3), i);
      pixels[i + 3] = 255;
    }
  }
  return pixels;
}

export class HeightMap {
  // `onCell(cell, byKey)` hears of the cell with the readout; `onView()` of every drawing.
  constructor(canvas, palette, onCell, onView) {
    this.canvas = canvas;
    this.palette = palette;
    this.onCell = onCell;
    this.onView = onView;
    this.cell = {column: 0, row: 0};
    this.demand = drawOnDemand(canvas, () => this.draw());
    this.view = new MapView(canvas, this.demand);
  }

  show(scan, range) {
    const isNew = this.view.show(scan);
    this.tiles = partsOf(scan.width, scan.length).map((part) => this.makeTile(part, range));
    this.canvas.style.setProperty("--shape", this.view.size.width / this.view.size.height);
    if (isNew) this.cell = {column: scan.width >> 1, row: scan.length >> 1};
    this.demand();
    this.onCell(this.cell, false);
  }

  makeTile(part, range) {
    const canvas = document.createElement("canvas");
    canvas.width = part.width;
    canvas.height = part.height;
    const pixels = pixelsOf(this.view, part, this.palette, range);
    canvas.getContext("2d").putImageData(new ImageData(pixels, part.width), 0, 0);
    return {canvas, part};
  }

  setCell(cell, byKey) {
    this.cell = cell;
    if (byKey) this.view.reveal(cell);
    this.onCell(cell, byKey);
    this.demand();
  }

  draw() {
    const {context, width, height} = fitCanvas(this.canvas);
    const {view} = this;
    context.clearRect(0, 0, width, height);
    if (!view.scan || view.scan.width === 0 || view.scan.length === 0) return;
    view.keepInside();
    const whole = view.boxOf({x: 0, y: 0, width: view.scan.width, height: view.scan.length});
    context.fillStyle = hatchPattern(context);
    context.fillRect(whole.left, whole.top, whole.right - whole.left, whole.bottom - whole.top);
    context.imageSmoothingEnabled = Math.min(view.cellWidth, view.cellHeight) * view.zoom < 1;
    for (const tile of this.tiles) {
      const {left, top, right, bottom} = view.boxOf(tile.part);
      context.drawImage(tile.canvas, left, top, Math.max(1, right - left), Math.max(1, bottom - top));
    }
    this.onView(context);
  }
}
