// SPDX-License-Identifier: MIT
// Points that stand out from those around them: on a map they are a dot that nobody sees, so they
// are circled where they are few.
import {largeFor, spreadsOf} from "./grid.mjs";

const MOST = 20;  // circles

// The cells with the greatest values, at most one more than are circled.
function greatest(count, value) {
  const kept = [];
  for (let cell = 0; cell < count; ++cell) {
    const size = value(cell);
    if (!(size > (kept.length > MOST ? kept.at(-1).size : -Infinity))) continue;  // NaN neither
    const place = kept.findIndex((one) => one.size < size);
    kept.splice(place < 0 ? kept.length : place, 0, {cell, size});
    kept.length = Math.min(kept.length, MOST + 1);
  }
  return kept.map((one) => one.cell);
}

export class OddCells {
  // `grid`: means of cells, and their lowest and highest heights.
  constructor(grid) {
    const {lowest, highest} = grid;
    this.grid = grid;
    this.spreads = spreadsOf(grid);
    const count = this.spreads.length;
    this.candidates = new Set([...greatest(count, (i) => this.spreads[i]),
      ...greatest(count, (i) => highest[i]), ...greatest(count, (i) => -lowest[i])]);
  }

  // Those that stand out from the mean of their cell, or lie far beyond the colours, as columns and
  // rows; none where they are many.
  within({low, high}) {
    const size = high - low;
    const large = largeFor({low, high}, this.grid);
    const {mean, width} = this.grid;
    const odd = [...this.candidates].filter((i) =>
      this.spreads[i] > large || mean[i] < low - size || mean[i] > high + size);
    if (odd.length > MOST) return [];
    return odd.map((i) => ({column: i % width, row: Math.floor(i / width)}));
  }
}
