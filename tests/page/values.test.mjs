// SPDX-License-Identifier: MIT
// What the page makes of the data that it carries: values, texts and colours.
import {colourIndex, labelsOf} from "../../inspect/page/colourbar.mjs";
import {factName, factText} from "../../inspect/page/facts.mjs";
import {clean, decimalsFor, number, ticksOf} from "../../inspect/page/text.mjs";
import {pageOf, scanOf, table} from "./table.mjs";

table(clean, [
  [["a\tb\u009f\u00a0<b>"], "a\ufffdb\ufffd\u00a0<b>"], [[7], "7"],
  [["\u200e\u200f\u2010\u2027\u2028\u202e\u202f\u2065\u2066\u2069"],
    "\ufffd\ufffd\u2010\u2027\ufffd\ufffd\u202f\u2065\ufffd\ufffd"],
  [["\u00ac\u00ad\u061c\u200a\u200b\ufeff"], "\u00ac\ufffd\ufffd\u200a\ufffd\ufffd"]]);
table(decimalsFor, [
  [[0.001], 3], [[-0.0001], 4], [[0.00099], 4], [[20], 3], [[1e-8], 8], [[1e-9], 3], [[0], 3],
  [[-0.01, 0.0005], 4], [[0.01, 0.00005], 3], [[1e-8, 1.2345678905], 8]]);
table(number, [[[1.23456], "1.235"], [[-0.0001], "0.000"], [[-2, 0], "-2"], [[NaN], "–"],
  [[-1e9, 3], "-1.00000000e+9"], [[-999999999, 1], "-999999999.0"]]);
table(function ticks(...given) { return Object.values(ticksOf(...given)).flat(); }, [
  [[0, 4, 4], [0, 1, 2, 3, 4, 0]], [[-0.3, 0.31, 5], [-0.2, 0, 0.2, 1]], [[13, 58, 2], [50, 0]],
  [[0, 64, 8], [0, 10, 20, 30, 40, 50, 60, 0]],
  [[0, 4e-11, 2.5], [0, 2e-11, 4e-11, 9]], [[7, 7, 8], [7, 3]]]);
table(colourIndex, [[[-1, {low: -1, high: 1}], 0], [[0.5, {low: -1, high: 1}], 191],
  [[-9, {low: 0, high: 1}], 0], [[9, {low: 0, high: 1}], 255], [[5, {low: 5, high: 5}], 128]]);
table(labelsOf, [[[{low: 5, high: 5}, 4], [{text: "5.0000", top: 50}]],
  [[{low: 1, high: 5}, 3], Array.from({length: 9}, (_, i) =>
    ({text: (1 + i / 2).toFixed(1), top: 98 - 12 * i}))]]);
table(factName, [[["x2Y_z_a\u0007"], "x2 y z a\ufffd"]]);
table(factText, [
  [[null], "–"], [[true], "yes"], [[0.12345678], "0.1234568"], [[123456789], "123456789"],
  [[[]], "none"], [[[1, "b"]], "1, b"], [[[{a: 1, b: 2}, {a: [3]}]], "a 1, b 2\na 3"],
  [[{aB: {b: 1}, c: "\u202e<i>"}], "a b b 1\nc \ufffd<i>"]]);

const heights = [-32768, 2, -3, 4, 5, 6];
const intensities = Uint8Array.of(0, 50, 100, 150, 200, 255);
table(function tell(column, row, change) {
  return scanOf(change, heights, intensities).tell(column, row).map((pair) => pair.join(" "));
}, [
  [[1, 1, {intensities: 1}],
    ["x 10.500 mm", "y -1.250 mm", "z 3.500 mm", "intensity 200", "column 1", "row 1"]],
  [[1, 0, {scale: 1e-4, units: ["nm", "\u202em", "V"]}],
    ["x 10.500 nm", "y -1.000 \ufffdm", "z 1.0002 V", "column 1", "row 0"]]]);
const told = "points. Heights from -0.500 to 4.000 mm. ";
const profile = {kind: "profile", rows: 1};
table(function text(change) { return scanOf(change, heights).text; }, [
  [[{columns: 6, rows: 4, reduced: true}],
    `Surface of 6 × 4 ${told}Reduced to 3 × 2 cells: each is the mean of about 4.00 points.`],
  [[{measured: 0}], "Surface of 3 × 2 points. Nothing was measured, or has no finite place."]]);
table(function places(change, raw) {
  const {xs, order, placeDecimals} = scanOf({...profile, ...change}, [1, 2, 3, 4, 5], raw);
  return [...xs, ...order, placeDecimals];
}, [
  [[{stepX: -1}], [6, 7, 8, 9, 10, 4, 3, 2, 1, 0, 3]],
  [[{places: 1, placeScale: 0.01, placeOffset: 0.0005}, Int16Array.of(-32768, 300, -32768, 200, 9)],
    [0.0905, 2.0005, 3.0005, 3.0005, 3.0005, 4, 3, 2, 1, 0, 4]]]);

table(function cautions(file, scan) { return pageOf([{}], {facts: file}).cautionsOf(scan); }, [
  [[{cautions: [{text: "a"}, {text: "b"}]}, {cautions: ["c", "b"]}], ["a", "b", "c"]],
  [[{}, null], []]]);

const holds = "This page holds at most 500 points (--points).";
table(function notice(scans, others) { return pageOf(scans, others).notice; }, [
  [[[{}]], ""], [[[{reduced: true}], {leftOut: 1}],
    `Scans left out besides: 1. The scan is reduced. ${holds}`],
  [[[{reduced: true}, {}], {every: 2}], "Of 9 frames, the first and every 2. after it are here. " +
    `Reduced scans: 1 of 2. ${holds}`]]);
const page = pageOf([{}, {source: "Side", low: -9, high: 9}, {frame: 4, low: -2, high: 3},
  {frame: 8, low: -7, measured: 0}, {source: "Nano", low: 5, high: 6, units: ["m", "m", "nm"]}]);
table(function range(source, unit) { return page.heightRange(source, unit); },
  [[["Nano", "nm"], {low: 5, high: 6}], [["Nano"], {low: 0, high: 0}],
    [["Top"], {low: -2, high: 4}], [["Side"], {low: -9, high: 9}], [["None"], {low: 0, high: 0}]]);
