// SPDX-License-Identifier: MIT
// The colours of heights: a palette for a range, one colour below and one above it.

export const GAP = 0;  // numbers of colours
export const BELOW = 1;
const FIRST = 2;  // of the palette
export const ABOVE = 258;

// All of them as an image holds them, in the order of numbers; a gap is transparent.
// Signed, as these are small integers to a browser.
export function colourTable(palette, below, above) {
  const bytes = new Uint8Array(4 * (ABOVE + 1));
  const put = (place, colour) => bytes.set([...colour, 255], 4 * place);
  put(BELOW, below);
  for (let i = 0; i < 256; ++i) put(FIRST + i, palette.subarray(3 * i, 3 * i + 3));
  put(ABOVE, above);
  return new Int32Array(bytes.buffer);
}

// Turns heights into numbers of colours: `z * scale + shift`, cut off.
export function numbering({low, high}, origin) {
  const scale = high > low ? 255 / (high - low) : 0;
  return {scale, shift: FIRST + (scale > 0 ? (origin - low) * scale : 127.5) + 0.5,
    // a little more than the range: heights are rounded
    first: FIRST + 0.5 - 255e-6, last: FIRST + 255.5 + 255e-6};
}

export function colourNumber(z, {scale, shift, first, last}) {
  if (z !== z) return GAP;  // NaN
  const place = z * scale + shift;
  if (place < first) return BELOW;
  return place > last ? ABOVE : place | 0;
}
