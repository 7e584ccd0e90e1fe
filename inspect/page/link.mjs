// SPDX-License-Identifier: MIT
// What is seen, as the part of an address behind "#": source, frame, level, colour range, zoom and
// ends of the line.

const short = (value) => String(Number(value.toPrecision(6)));
const exact = (value) => String(Number(value.toPrecision(9)));
const LEVELS = ["none", "plane", "mean"];

// Null where a part is as the page begins.
export function linkOf({source, frame, level, range, seen, ends}) {
  const parts = new URLSearchParams();
  const add = (key, value) => {
    if (value !== null && value !== undefined) parts.set(key, value);
  };
  add("source", source);
  add("frame", frame);
  add("level", level);
  add("range", typeof range === "object" && range ? [range.low, range.high].map(exact).join() : range);
  add("zoom", seen && seen.map(short).join());
  add("line", ends && ends.join());
  return parts.toString().replaceAll("%2C", ",");
}

// Whatever the text holds; parts that make no sense are left out.
export function parseLink(text) {
  const parts = new URLSearchParams(text.replace(/^#/, ""));
  const numbers = (key, count) => {
    const values = (parts.get(key) ?? "").split(",").map((part) => part.trim() === "" ? NaN : Number(part));
    return values.length === count && values.every(Number.isFinite) ? values : null;
  };
  const range = numbers("range", 2);
  const seen = numbers("zoom", 3);
  const isCell = (value) => Number.isInteger(value) && value >= 0;
  const ends = numbers("line", 4) ?? numbers("line", 2);
  const named = ["full", "auto"].includes(parts.get("range")) ? parts.get("range") : null;
  return {
    source: parts.get("source"),
    frame: numbers("frame", 1)?.[0] ?? null,
    level: LEVELS.includes(parts.get("level")) ? parts.get("level") : null,
    range: range && range[0] < range[1] ? {low: range[0], high: range[1]} : named,
    seen: seen && seen[0] >= 1 ? seen : null,
    ends: ends && ends.every(isCell) ? ends : null,
  };
}
