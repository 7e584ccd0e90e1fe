// SPDX-License-Identifier: MIT
// The map's cells as corners of a mesh, and how it is turned.
import {number} from "./text.mjs";

const MOST_CORNERS = 250000;  // more would turn too slowly

// Every how manieth cell is a corner.
export const strideOf = (scan) =>
  Math.max(1, Math.ceil(Math.sqrt(scan.width * scan.length / MOST_CORNERS)));

// Corners around the middle of the scan, in units of its size; triangles where all corners are, and
// points for the corners that are in none.
export function makeMesh(scan, stride) {
  const columns = Math.ceil(scan.width / stride);
  const rows = Math.ceil(scan.length / stride);
  const usable = (step) => Number.isFinite(step) && step !== 0 ? step : 1;
  const [stepX, stepY] = [usable(scan.stepX), usable(scan.stepY)];
  const middleZ = scan.low + (scan.high - scan.low) / 2;
  const heightUnit = scan.heightUnit || 1;
  const radius = Math.hypot(stepX * scan.width, stepY * scan.length,
    (scan.high - scan.low) * heightUnit) / 2;
  const places = new Float32Array(3 * columns * rows);
  for (let j = 0, i = 0; j < rows; ++j) {
    for (let k = 0; k < columns; ++k, i += 3) {
      places[i] = (k * stride - (scan.width - 1) / 2) * stepX / radius;
      places[i + 1] = (j * stride - (scan.length - 1) / 2) * stepY / radius;
      places[i + 2] = (scan.z(j * stride * scan.width + k * stride) - middleZ) * heightUnit / radius;
    }
  }
  const known = (corner) => !Number.isNaN(places[3 * corner + 2]);
  const triangles = [];
  for (let j = 0; j + 1 < rows; ++j) {
    for (let a = j * columns; a + 1 < (j + 1) * columns; ++a) {
      const [b, c, d] = [a + 1, a + columns, a + columns + 1];
      if (known(b) && known(c)) {
        if (known(a)) triangles.push(a, b, c);
        if (known(d)) triangles.push(b, d, c);
      } else if (known(a) && known(d)) {
        if (known(b)) triangles.push(a, b, d);
        if (known(c)) triangles.push(a, d, c);
      }
    }
  }
  const used = new Uint8Array(columns * rows);
  for (const corner of triangles) used[corner] = 1;
  const points = [...used.keys()].filter((corner) => !used[corner] && known(corner));
  return {places, triangles, points, radius: radius / heightUnit, middleZ};  // the radius as z tells it
}

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
export function meshText(scan, stride) {
  const sides = [scan.stepX * (scan.width - 1), scan.stepY * (scan.length - 1),
    scan.high - scan.low].map((side, axis) => `${number(Math.abs(side))} ${scan.units[axis]}`);
  return sides.join(" × ") +
    (stride > 1 ? `; each ${stride}. cell of each row and column is drawn.` : ".");
}
