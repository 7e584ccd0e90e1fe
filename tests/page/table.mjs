// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import test from "node:test";
import {PageData} from "../../inspect/page/data.mjs";

// A test for each row of [arguments, result].
export function table(call, rows) {
  for (const [given, result] of rows) {
    test(`${call.name} ${JSON.stringify(given)}`, () => assert.deepEqual(call(...given), result));
  }
}

// A view of heights: `parts` of the histogram, which are as many points each.
export function viewOf(low, high, change) {
  return {offset: 0, perColumn: 0, perRow: 0, low, high, from: low, to: high, histogram: [1, 2, 3, 4],
    figures: {valid_points: 10, mean: 1, median: 2, sa: 0.25, sq: 0.5, sz: 4, sp: 3, sv: 1, ssk: null,
      sku: 3, percentiles: {5: low, 95: high}}, ...change};
}

// A page with scans that differ from one of 3 x 2 cells, and its arrays.
export function pageOf(scans, others, arrays = []) {
  const views = {none: viewOf(-0.5, 4), plane: viewOf(-2, 2, {offset: 1, perColumn: 0.5, perRow: 2})};
  const scan = {source: "Top", frame: 0, index: 70, kind: "surface", columns: 3, rows: 2, width: 3,
    length: 2, x: 10, y: -1, stepX: 0.5, stepY: -0.25, heights: 0, scale: 0.5, offset: 1, measured: 5,
    valid: 5, reduced: false, views};
  const page = {palette: "AAECAwQF", frames: 9, budget: 500, every: 1, leftOut: 0, ...others};
  page.scans = scans.map((change) => ({...scan, ...change}));
  return new PageData(page, (id) => Buffer.from(arrays[id].buffer).toString("base64"));
}

export function scanOf(change, heights, ...arrays) {
  return pageOf([change], {}, [Int16Array.from(heights), ...arrays]).scanOf("Top", 0);
}
