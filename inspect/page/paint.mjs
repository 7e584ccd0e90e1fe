// SPDX-License-Identifier: MIT
// Paints blocks of heights: one look-up for each pixel, however many cells there are.
import {ABOVE, BELOW, GAP} from "./colours.mjs";
import {shownOf} from "./grid.mjs";

// `columns` and `rows` tell the column and the row of the grid that each pixel across and down
// shows, -1 for none. `pixels` are those of an image, as 32-bit numbers.
// Colours are numbered here as by colourNumber(): a call for each pixel would take twice as long.
export function paint(pixels, {mean, lowest, highest, width}, columns, rows, table, numbers, large) {
  const across = columns.length;
  const plain = highest === mean;
  const grid = {mean, lowest, highest};
  const {scale, shift, first, last} = numbers;
  for (let y = 0; y < rows.length; ++y) {
    if (rows[y] < 0) continue;
    const line = y * across;
    if (y > 0 && rows[y] === rows[y - 1]) {
      pixels.copyWithin(line, line - across, line);
      continue;
    }
    const start = rows[y] * width;
    for (let x = 0; x < across; ++x) {
      if (columns[x] < 0) continue;
      const block = start + columns[x];
      let z = mean[block];
      if (!plain) {
        const up = highest[block] - z;
        const down = z - lowest[block];
        if (up > large || down > large) z = shownOf(grid, block, large);
      }
      const place = z * scale + shift;
      let colour = GAP;  // NaN is in no comparison
      if (place >= first) colour = place > last ? ABOVE : place | 0;
      else if (place < first) colour = BELOW;
      pixels[line + x] = table[colour];
    }
  }
}

// Which column or row of the blocks each pixel shows: pixel p is at the place (p + 0.5 - shift) /
// size among `count` cells, counted backwards where `flipped`.
export function placesOf(pixels, shift, size, count, flipped, block) {
  const places = new Int32Array(pixels);
  for (let p = 0; p < pixels; ++p) {
    const place = Math.floor((p + 0.5 - shift) / size);
    const cell = flipped ? count - 1 - place : place;
    places[p] = place < 0 || place >= count ? -1 : Math.floor(cell / block);
  }
  return places;
}
