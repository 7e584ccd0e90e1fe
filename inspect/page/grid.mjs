// SPDX-License-Identifier: MIT
// Heights of cells, or of blocks of cells where there are more than a picture shows. A block keeps
// its lowest and its highest height, so that no spike gets lost.

const LARGE = 1 / 8;  // of the colour range
const UNUSUAL = 4;    // times the usual spread

// Means of the parts that are known, the lowest and the highest of all, of blocks of so many columns
// and rows.
export function joined(grid, columns, rows) {
  const width = Math.ceil(grid.width / columns);
  const length = Math.ceil(grid.length / rows);
  const count = width * length;
  const mean = new Float32Array(count).fill(NaN);
  const lowest = new Float32Array(count).fill(NaN);
  const highest = new Float32Array(count).fill(NaN);
  for (let row = 0; row < length; ++row) {
    const lastRow = Math.min((row + 1) * rows, grid.length);
    for (let column = 0; column < width; ++column) {
      const lastColumn = Math.min((column + 1) * columns, grid.width);
      let [sum, known, low, high] = [0, 0, Infinity, -Infinity];
      for (let y = row * rows; y < lastRow; ++y) {
        for (let i = y * grid.width + column * columns; i < y * grid.width + lastColumn; ++i) {
          const z = grid.mean[i];
          if (z !== z) continue;  // NaN
          sum += z;
          ++known;
          if (grid.lowest[i] < low) low = grid.lowest[i];
          if (grid.highest[i] > high) high = grid.highest[i];
        }
      }
      if (known === 0) continue;
      const block = row * width + column;
      mean[block] = sum / known;
      lowest[block] = low;
      highest[block] = high;
    }
  }
  return {width, length, columns: grid.columns * columns, rows: grid.rows * rows, mean, lowest,
    highest};
}

// The heights of a scan in its view, in blocks of any powers of two.
export class Blocks {
  constructor(scan) {
    this.origin = scan.low + (scan.high - scan.low) / 2;  // heights are told from here
    const mean = scan.shifted(scan.heights, this.origin);
    const extreme = (values) => scan.hasExtremes ? scan.shifted(values, this.origin) : mean;
    this.grids = [{width: scan.width, length: scan.length, columns: 1, rows: 1, mean,
      lowest: extreme(scan.lowest), highest: extreme(scan.highest)}];
  }

  // Blocks of so many columns and rows, made of the largest ones that there are.
  of(columns, rows) {
    const fits = this.grids.filter((grid) => columns % grid.columns === 0 && rows % grid.rows === 0);
    const best = fits.reduce((a, b) => b.columns * b.rows > a.columns * a.rows ? b : a);
    if (best.columns === columns && best.rows === rows) return best;
    this.grids.push(joined(best, columns / best.columns, rows / best.rows));
    return this.grids.at(-1);
  }
}

// How far the points of each block are from their mean.
export const spreadsOf = (grid) =>
  grid.mean.map((z, i) => Math.max(grid.highest[i] - z, z - grid.lowest[i]));

// The median of some of them: rough surfaces have no extreme that stands out.
export function usualOf(spreads) {
  const step = Math.ceil(spreads.length / 10000);
  const some = spreads.filter((spread, i) => i % step === 0 && !Number.isNaN(spread)).sort();
  return some[some.length >> 1] ?? 0;
}

// How far extremes lie from the mean that are shown in its place, for a colour range.
export function largeFor(range, grid) {
  grid.usual ??= usualOf(spreadsOf(grid));
  return Math.max((range.high - range.low) * LARGE, grid.usual * UNUSUAL);
}

// What a picture shows of a block: the mean, or the extreme that is farther from it.
export function shownOf(grid, block, large) {
  const z = grid.mean[block];
  const up = grid.highest[block] - z;
  const down = z - grid.lowest[block];
  if (up > large && up >= down) return grid.highest[block];
  return down > large ? grid.lowest[block] : z;
}

// The least power of two that makes cells of such a size as large as a pixel.
export const blockFor = (size) => size >= 1 ? 1 : 2 ** Math.ceil(-Math.log2(size) - 1e-9);
