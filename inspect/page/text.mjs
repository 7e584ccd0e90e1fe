// SPDX-License-Identifier: MIT
// Values, and texts for them.

// Control characters, and those that turn the direction of writing or are not seen, would hide what
// a text says.
export function clean(text) {
  return String(text).replace(/[\p{Cc}\p{Cf}\u2028\u2029]/gu, "\ufffd");
}

const MOST_DECIMALS = 9;

// Decimals that tell values apart which are `step` from each other, beginning at `offset`.
export function decimalsFor(step, offset = 0) {
  const size = Math.abs(step);
  if (!(size > 0 && size < Infinity)) return 3;
  const least = Math.max(Math.ceil(-Math.log10(size) - 1e-9), 0);
  if (least > MOST_DECIMALS) return least;
  let decimals = least;
  const lost = (value, places) => Math.abs(value - value.toFixed(places)) > Math.max(size / 100, 1e-12);
  for (const value of [size, size, offset]) {
    if (decimals < least + 2 && lost(value, decimals)) ++decimals;
  }
  return decimals;
}

// Powers of ten are written only where a number would be too long without.
export function number(value, decimals = 3) {
  if (!Number.isFinite(value)) return "–";
  if (Math.abs(value) >= 1e12) return Number(value.toPrecision(9)).toExponential();
  if (decimals > MOST_DECIMALS) return value === 0 ? "0" : Number(value.toPrecision(6)).toExponential();
  const text = value.toFixed(decimals);
  return Number(text) === 0 ? text.replace("-", "") : text;
}

export const counted = (count, what) => `${count} ${what}${count === 1 ? "" : "s"}`;

// [name, text] pairs as one line.
export const spoken = (pairs) => pairs.map((pair) => pair.join(" ")).join(", ");

// Round numbers from low to high, about `count` of them, and the decimals that they need.
export function ticksOf(low, high, count) {
  const rough = (high - low) / count;
  if (!(rough > 0)) return {ticks: [low], decimals: decimalsFor(NaN)};
  const power = 10 ** Math.floor(Math.log10(rough));
  const step = power * [1, 2, 5, 10].find((factor) => factor * power >= rough);
  const ticks = [];
  for (let i = Math.ceil(low / step - 1e-9); i * step <= high + step * 1e-9 && ticks.length < 50; ++i) {
    ticks.push(i * step + 0);  // not -0
  }
  return {ticks, decimals: Math.max(0, -Math.floor(Math.log10(step) + 1e-9))};
}

// As many ticks as have room on an axis of so many pixels: `roomOf(text)` are the pixels that a
// label needs along it. [value, label] pairs.
export function labelsThatFit(low, high, pixels, roomOf) {
  for (let count = Math.max(2, Math.floor(pixels / 30)); ; --count) {
    const {ticks, decimals} = ticksOf(low, high, Math.max(count, 0.5));
    const labels = ticks.map((tick) => [tick, number(tick, decimals)]);
    const apart = pixels * (ticks[1] - ticks[0]) / (high - low);
    if (count < 1 || !labels.some(([, text]) => roomOf(text) > apart)) return labels;
  }
}

// From the least to the greatest value; low is above high where all are NaN, or none is there.
export function extentOf(values) {
  let [low, high] = [Infinity, -Infinity];
  for (const value of values) {
    if (value < low) low = value;
    if (value > high) high = value;
  }
  return {low, high};
}
