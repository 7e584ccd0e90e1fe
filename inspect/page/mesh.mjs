// SPDX-License-Identifier: MIT
// Blocks of heights as corners of a mesh, and how it is turned.
import {shownOf} from "./grid.mjs";
import {number} from "./text.mjs";

// Where heights jump, nothing was measured between them: an edge is none if it is so much of all
// heights, and so steep that no light would have come back from it. On a flat scan that is told much
// larger than it is, steps stay joined.
const JUMP = 1 / 4;
const STEEP = Math.tan(80 * Math.PI / 180);

// The powers of two that leave at most so many blocks.
export function blocksOf({width, length}, most) {
  let [columns, rows] = [1, 1];
  const left = (size, block) => Math.ceil(size / block);
  while (left(width, columns) * left(length, rows) > most) {
    if (left(width, columns) >= left(length, rows)) columns *= 2;
    else rows *= 2;
  }
  return [columns, rows];
}

// Corners around the middle of the scan, in units of its size; triangles where all corners are and
// belong together, and points for the corners that are in none. `shown`: the heights that the
// middle is of.
export function makeMesh(scan, blocks, [columns, rows], shown, large) {
  const grid = blocks.of(columns, rows);
  const usable = (step) => Number.isFinite(step) && step !== 0 ? step : 1;
  const [stepX, stepY] = [usable(scan.stepX), usable(scan.stepY) * (scan.sideRatio || 1)];
  const middleZ = shown.low + (shown.high - shown.low) / 2;
  const ratio = heightRatio(scan, shown);
  const radius = Math.hypot(stepX * scan.width, stepY * scan.length,
    (shown.high - shown.low) * ratio) / 2;
  const count = grid.width * grid.length;
  const places = new Float32Array(3 * count);
  for (let row = 0, i = 0; row < grid.length; ++row) {
    for (let column = 0; column < grid.width; ++column, i += 3) {
      const at = (block, size, whole) => Math.min((block + 0.5) * size, (block * size + whole) / 2);
      places[i] = (at(column, columns, scan.width) - scan.width / 2) * stepX / radius;
      places[i + 1] = (at(row, rows, scan.length) - scan.length / 2) * stepY / radius;
      places[i + 2] = (shownOf(grid, i / 3, large) + blocks.origin - middleZ) * ratio / radius;
    }
  }
  const steep = scan.heightRatio === 0 ? Infinity
    : STEEP * Math.max(Math.abs(stepX) * columns, Math.abs(stepY) * rows) / radius;
  const jump = Math.max(JUMP * (scan.high - scan.low) * ratio / radius, steep);
  const triangles = scan.kind === "cloud" ? new Uint32Array(0) : trianglesOf(grid, places, jump);
  const used = new Uint8Array(count);
  for (const corner of triangles) used[corner] = 1;
  const points = new Uint32Array(count);
  let single = 0;
  for (let corner = 0; corner < count; ++corner) {
    if (!used[corner] && places[3 * corner + 2] === places[3 * corner + 2]) points[single++] = corner;
  }
  return {places, triangles, points: points.subarray(0, single), radius: radius / ratio, middleZ,
    flat: Math.hypot(stepX * scan.width, stepY * scan.length) / 2 / radius};
}

// Two for each four neighbours that are known, one for three.
function trianglesOf({width, length}, places, jump) {
  const triangles = new Uint32Array(6 * Math.max(0, width - 1) * Math.max(0, length - 1));
  let count = 0;
  // A comparison with an unknown height is false.
  const near = (a, b) => Math.abs(places[3 * a + 2] - places[3 * b + 2]) <= jump;
  const add = (a, b, c) => {
    if (!near(a, b) || !near(b, c) || !near(c, a)) return;
    triangles[count++] = a;
    triangles[count++] = b;
    triangles[count++] = c;
  };
  for (let j = 0; j + 1 < length; ++j) {
    for (let a = j * width; a + 1 < (j + 1) * width; ++a) {
      const [b, c, d] = [a + 1, a + width, a + width + 1];
      if (near(b, c)) {
        add(a, b, c);
        add(b, d, c);
      } else {
        add(a, b, d);
        add(a, d, c);
      }
    }
  }
  return triangles.subarray(0, count);
}

// How many times larger than true heights fill a third of the width, in two digits; true heights
// where they about do so.
export function autoStretch(scan, shown) {
  const factor = fillingRatio(scan, shown) / heightRatio(scan, shown);
  return factor < 0.5 || factor > 2 ? Number(factor.toPrecision(2)) : 1;
}

// How much smaller all is drawn to stay in the view when heights are drawn so many times larger.
export const fitFor = ({flat}, stretch) => 1 / Math.hypot(flat, Math.sqrt(1 - flat * flat) * stretch);

// Units of x for a unit of z with which heights fill a third of the width.
function fillingRatio(scan, shown) {
  const side = Math.max(Math.abs(scan.stepX) * scan.width,
    Math.abs(scan.stepY * (scan.sideRatio || 1)) * scan.length);
  const ratio = side / 3 / (shown.high - shown.low);
  return ratio > 0 && ratio < Infinity ? ratio : 1;
}

// True, or filling where heights are no lengths.
const heightRatio = (scan, shown) => scan.heightRatio || fillingRatio(scan, shown);

// Where x, y and z of the scan go on the screen, by columns; the third row points to the viewer.
export function turnMatrix(heading, tilt) {
  const [sinH, cosH, sinT, cosT] = [Math.sin(heading), Math.cos(heading), Math.sin(tilt),
    Math.cos(tilt)];
  return [
    cosH, sinH * cosT, -sinH * sinT,
    -sinH, cosH * cosT, -cosH * sinT,
    0, sinT, cosT];
}

// What is told below the view.
export function meshText(scan, [columns, rows], stretch) {
  const {unitX, unitY, unitZ} = scan;
  const sides = [unitX.difference(Math.abs(scan.stepX) * (scan.width - 1)),
    unitY.difference(Math.abs(scan.stepY) * (scan.length - 1)), unitZ.difference(scan.high - scan.low)];
  const cells = columns * rows > 1
    ? `; each corner stands for ${columns} × ${rows} cells: their mean, or an extreme far from it` : "";
  const times = scan.heightRatio === 0 ? "heights are no lengths, and drawn to fit"
    : `heights are drawn × ${number(stretch, stretch < 10 && stretch % 1 !== 0 ? 1 : 0)}`;
  return `${sides.join(" × ")}; ${times}${cells}.`;
}
