// SPDX-License-Identifier: MIT
// Values, and texts for them.

// Control characters, and those that turn the direction of writing or are not seen, would hide what
// a text says.
export function clean(text) {
  return String(text).replace(/[\p{Cc}\p{Cf}\u2028\u2029]/gu, "\ufffd");
}

// Decimals that tell values apart which are `step` from each other, beginning at `offset`.
export function decimalsFor(step, offset = 0) {
  const decimals = Math.max(Math.ceil(-Math.log10(Math.abs(step)) - 1e-9), 3);
  if (!(decimals < 9)) return 3;
  const lost = (places) => Math.abs(offset - offset.toFixed(places));
  return decimals + (lost(decimals) > Math.abs(step) / 100 && lost(decimals) > 1e-9 ? 1 : 0);
}

export function number(value, decimals = 3) {
  if (!Number.isFinite(value)) return "–";
  const text = Math.abs(value) < 1e9 ? value.toFixed(decimals) : value.toPrecision(9);
  return Number(text) === 0 ? text.replace("-", "") : text;
}

export const measure = (value, decimals, unit) =>
  Number.isFinite(value) ? `${number(value, decimals)} ${unit}` : "not measured";

// [name, text] pairs as one line.
export const spoken = (pairs) => pairs.map((pair) => pair.join(" ")).join(", ");

// Round numbers from low to high, about `count` of them, and the decimals that they need.
export function ticksOf(low, high, count) {
  const rough = (high - low) / count;
  if (!(rough > 0)) return {ticks: [low], decimals: decimalsFor(NaN)};
  const power = 10 ** Math.floor(Math.log10(rough));
  const step = power * [1, 2, 5, 10].find((factor) => factor * power >= rough);
  const ticks = [];
  for (let i = Math.ceil(low / step); i * step <= high && ticks.length < 50; ++i) {
    ticks.push(i * step);
  }
  const decimals = Math.min(Math.max(0, -Math.floor(Math.log10(step) + 1e-9)), 9);
  return {ticks, decimals};
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
