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

// A page with scans that differ from one of 3 x 2 cells, and its arrays.
export function pageOf(scans, others, arrays = []) {
  const scan = {source: "Top", frame: 0, index: 70, kind: "surface", columns: 3, rows: 2, width: 3,
    length: 2, x: 10, y: -1, stepX: 0.5, stepY: -0.25, heights: 0, scale: 0.5, offset: 1, low: -0.5,
    high: 4, measured: 5, reduced: false};
  const page = {palette: "AAECAwQF", frames: 9, budget: 500, every: 1, leftOut: 0, ...others};
  page.scans = scans.map((change) => ({...scan, ...change}));
  return new PageData(page, (id) => Buffer.from(arrays[id].buffer).toString("base64"));
}

export function scanOf(change, heights, ...arrays) {
  return pageOf([change], {}, [Int16Array.from(heights), ...arrays]).scanOf("Top", 0);
}
