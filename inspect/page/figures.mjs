// SPDX-License-Identifier: MIT
// Figures of heights: those of a scan, which the page is given, and those of a line, which it makes.
import {number} from "./text.mjs";
import {heightUnit, lengthUnit} from "./units.mjs";

const AREAL = [["Sa", "sa"], ["Sq", "sq"], ["Sz", "sz"], ["Sp", "sp"], ["Sv", "sv"]];
const SHAPE = [["Ssk", "ssk"], ["Sku", "sku"]];

export const FIGURES_HINT = "As ISO 25178-2 defines them, about the mean, of the valid points " +
  "alone, unfiltered.";
export const LINE_HINT = "Ra, Rq and Rz: mean and root mean square of the distances from the mean " +
  "height, and from the lowest to the highest, of the whole line, unfiltered.";

// About their mean, of those that are known.
export function lineFigures(heights) {
  const known = heights.filter((z) => !Number.isNaN(z));
  const count = known.length;
  const mean = known.reduce((sum, z) => sum + (z - known[0]) / count, known[0]);
  const moment = (power) => known.reduce((sum, z) => sum + Math.abs(z - mean) ** power, 0) / count;
  const [low, high] = known.reduce(([a, b], z) => [Math.min(a, z), Math.max(b, z)],
    [Infinity, -Infinity]);
  return {count, mean, ra: moment(1), rq: Math.sqrt(moment(2)), rz: high - low, rp: high - mean,
    rv: mean - low};
}

// With four digits that count.
export function sizeText([name, mm], value, span = value) {
  if (!Number.isFinite(value)) return "–";
  const unit = lengthUnit([name, mm], Math.abs(span));
  const shown = value * unit.factor;
  const digits = shown === 0 ? 0 : Math.floor(Math.log10(Math.abs(shown)));
  return unit.named(number(shown, Math.max(0, 3 - digits)));
}

export const lineFigurePairs = (heights, zUnit) => {
  const {count, ...figures} = lineFigures(heights);
  return [["Ra", "ra"], ["Rq", "rq"], ["Rz", "rz"]].map(([label, key]) =>
    [label, count > 0 ? sizeText(zUnit, figures[key]) : "–"]);
};

// A row for each figure: its name, and what it is in each of the views. Profiles name them R.
export function figureRows(views, zUnit, isLine) {
  const rename = (label) => isLine ? label.replace("S", "R") : label;
  const heights = views.map((view) => {
    const {low, high, figures} = view;
    const step = 10 ** Math.floor(Math.log10(high - low) - 3);  // four digits of the span
    return [heightUnit(zUnit, low, high).tellingApart(step), figures];
  });
  const row = (label, text) => [label, ...heights.map(text)];
  const percents = Object.keys(views[0]?.figures.percentiles ?? {});
  return [
    ...AREAL.map(([label, key]) => row(rename(label), ([, figures]) => sizeText(zUnit, figures[key]))),
    ...SHAPE.map(([label, key]) => row(rename(label), ([, figures]) =>
      figures[key] === null ? "–" : number(figures[key], 4))),
    row("mean", ([unit, {mean}]) => unit.text(mean)),
    row("median", ([unit, {median}]) => unit.text(median)),
    ...percents.map((percent) => row(`${percent} % are below`, ([unit, {percentiles}]) =>
      unit.text(percentiles[percent]))),
    row("lowest", ([unit], i) => unit.text(views[i].low)),
    row("highest", ([unit], i) => unit.text(views[i].high)),
    row("valid points", ([, figures]) => String(figures.valid_points)),
  ];
}
