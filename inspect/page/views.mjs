// SPDX-License-Identifier: MIT
// A scan as measured, with a plane taken off, or with its mean: views in which heights are
// z - (offset + perColumn * column + perRow * row).
import {extentOf} from "./text.mjs";

const LENGTHS = ["mean", "median"];  // figures that a shift of all heights changes

// Null where nothing is valid.
export function viewOf(entry, level) {
  if (!entry.views) return null;
  if (level !== "mean") return entry.views[level] ?? null;
  const {none} = entry.views;
  const {mean, percentiles} = none.figures;
  const shifted = {offset: mean};
  for (const key of ["low", "high", "from", "to"]) shifted[key] = none[key] - mean;
  const figures = {...none.figures};
  for (const key of LENGTHS) figures[key] -= mean;
  figures.percentiles = Object.fromEntries(
    Object.entries(percentiles).map(([percent, z]) => [percent, z - mean]));
  return {...none, ...shifted, figures};
}

// Of the views of several scans, which share their colours: all heights, and those that a colour
// range that suits by itself takes in.
export function rangesOf(views) {
  if (views.length === 0) return {full: {low: 0, high: 0}, auto: {low: 0, high: 0}};
  const full = {low: extentOf(views.map((view) => view.low)).low,
    high: extentOf(views.map((view) => view.high)).high};
  const most = {low: extentOf(views.map((view) => view.from)).low,
    high: extentOf(views.map((view) => view.to)).high};
  const differs = most.high > most.low && full.high - full.low > 2 * (most.high - most.low);
  return {full, most, auto: differs ? most : full};
}

// How many heights of a histogram lie beyond a range, below it and above it; `exact` where both ends
// are between two parts.
export function beyond({low, high, histogram}, range) {
  const width = (high - low) / histogram.length;
  if (!(width > 0)) return {below: 0, above: 0, exact: true};
  const countTo = (z) => {
    const place = Math.min(Math.max((z - low) / width, 0), histogram.length);
    const whole = Math.floor(place + 1e-6);
    let count = 0;
    for (let i = 0; i < whole; ++i) count += histogram[i];
    const rest = place - whole > 1e-6;
    return {count: count + (rest ? histogram[whole] * (place - whole) : 0), exact: !rest};
  };
  const all = histogram.reduce((sum, count) => sum + count, 0);
  const [below, to] = [countTo(range.low), countTo(range.high)];
  return {below: Math.round(below.count), above: all - Math.round(to.count),
    exact: below.exact && to.exact};
}

// How much of it lies beyond a range, in words; empty where nothing does.
export function beyondText({below, above, exact}) {
  const about = exact ? "" : "about ";
  const points = (count) => `${about}${count} ${count === 1 ? "point" : "points"}`;
  return [[above, "above"], [below, "below"]].filter(([count]) => count > 0)
    .map(([count, where]) => `${points(count)} ${where}`).join(", ");
}
