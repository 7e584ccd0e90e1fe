// SPDX-License-Identifier: MIT
// Where the views put what they show, and what they tell of it.
import {partsOf, pixelsOf} from "../../inspect/page/map.mjs";
import {MapView} from "../../inspect/page/mapview.mjs";
import {makeMesh, strideOf, turnMatrix} from "../../inspect/page/mesh.mjs";
import {PlotView} from "../../inspect/page/plotview.mjs";
import {distanceFacts, endsOf, pointsOf} from "../../inspect/page/profile.mjs";
import {SectionLine, cellsAlong, sectionFacts} from "../../inspect/page/section.mjs";
import {scanOf, table} from "./table.mjs";

const none = -32768;
const surface = (width, heights, change) => scanOf({width, length: heights.length / width, x: 0,
  y: 0, stepX: 2, stepY: 1.25, offset: 0, low: 0, ...change}, heights);
const rounded = (values) => [...values].map((value) => Number(value.toFixed(6)));

const twice = ["zoomBy", 2, 300, 120];
const lowest = ["reveal", {column: 9, row: 0}];

// 10 x 10 cells of 2 x 1.25 mm on 400 x 300 pixels: 20 pixels for a mm, 25 free above and below.
const map = (change, width = 10, heights = Array(100).fill(0), onChange = () => {}) => {
  const view = new MapView({clientWidth: 400, clientHeight: 300}, onChange);
  view.show(surface(width, heights, change));
  view.keepInside();
  return view;
};
// Tells the zoom, where column 0 of row 0 is, and how often a change was told.
table(function mapAfter(acts, change) {
  let changes = 0;
  const view = map(change, 10, undefined, () => { ++changes; });
  for (const [act, ...given] of acts) {
    if (act === "resize") Object.assign(view.canvas, given[0]);
    else if (act === "show") view.show(surface(given[0], Array(given[1]).fill(0), given[2]));
    else view[act](...given);
    if (act !== "reveal") view.keepInside();
  }
  return [...rounded([view.zoom, ...Object.values(view.placeOf({column: 0, row: 0}))]), changes];
}, [
  [[[], {stepX: -2}], [20, 380, 262.5, 0]],
  [[[], {stepY: 0}], [30, 65, 285, 0]],
  [[[twice, ["moveBy", -9999, -9999]]], [40, -360, 275, 2]],
  [[[twice, lowest, lowest]], [40, -332, 288, 3]],
  [[[twice, ["reveal", {column: 0, row: 9}]]], [40, 12, 462, 2]],
  [[[["zoomBy", 99, 0, 0]]], [51.2, 51.2, 608, 1]],
  [[[twice, ["zoomBy", 0.1, 0, 0], ["resize", {clientWidth: 200}]]], [10, 10, 206.25, 2]],
  [[[twice, ["show", 10, 100]]], [40, -260, 405, 1]],
  [[[twice, ["show", 10, 100, {stepX: -2}]]], [20, 380, 262.5, 1]]]);
table(function mapStep(key, by, change) {
  return Object.values(map(change).step({column: 4, row: 4}, key, by) ?? {});
}, [[["ArrowRight", 3], [7, 4]], [["ArrowUp", 1], [4, 5]], [["ArrowDown", 2], [4, 2]],
  [["ArrowLeft", 10], [0, 4]], [["ArrowRight", 10], [9, 4]], [["ArrowUp", 10], [4, 9]],
  [["ArrowDown", 10], [4, 0]], [["End"], [9, 4]], [["PageDown"], [4, 0]], [["x", 1], []],
  [["Home", 1, {stepX: -2}], [9, 4]], [["PageUp", 1, {stepY: -1}], [4, 0]]]);
table(function cellAt(x, y, change) { return Object.values(map(change).cellAt({x, y})); }, [
  [[39, 274], [0, 0]], [[41, 249], [1, 1]], [[-9, 0], [0, 9]], [[999, 999], [9, 0]],
  [[41, 249, {stepX: -2, stepY: -1.25}], [8, 8]]]);
const palette = Uint8Array.from({length: 768}, (_, i) => i % 3 === 0 ? i / 3 : i % 3);
table(function pixels(part) {
  return [...pixelsOf(map({}, 3, [0, 1, none, 4, 5, 6]), part, palette, {low: 0, high: 255 / 2})];
}, [[[{x: 1, y: 0, width: 2, height: 2}], [5, 1, 2, 255, 6, 1, 2, 255, 1, 1, 2, 255, 0, 0, 0, 0]]]);
table(function parts(...size) { return partsOf(...size).map(Object.values); }, [[[2049, 2050],
  [[0, 0, 2048, 2048], [2048, 0, 1, 2048], [0, 2048, 2048, 2], [2048, 2048, 1, 2]]]]);

// 330 x 148 pixels within the margins. Tells what is seen, and how often a change was told.
const plot = (x, z, onChange = () => {}) => {
  const view = new PlotView({clientWidth: 400, clientHeight: 196}, onChange);
  view.show({x, z}, true);
  return view;
};
table(function plotAfter(...acts) {
  let changes = 0;
  const view = plot([10, 60, 110], [5, NaN, 9], () => { ++changes; });
  for (const [act, ...given] of acts) view[act](...given);
  view.fitHeights();
  return rounded([view.seen.low, view.seen.high, view.low, view.high, changes]);
}, [
  [[["zoomBy", 2, 30], ["zoomBy", 4, NaN]], [20, 70, -0.06, 1.06, 1]],
  [[["zoomBy", 9e4, 10]], [10, 10.001111, 4.99, 5.01, 1]],
  [[["zoomBy", 2, 30], ["moveBy", 70]], [60, 110, 8.99, 9.01, 2]],
  [[["zoomBy", 4, 40], ["reveal", 1]], [35, 60, -0.06, 1.06, 2]],
  [[["zoomBy", 2, 30], ["zoomBy", 0.1, 60]], [10, 110, 4.76, 9.24, 2]],
  [[["zoomBy", 2, 30], ["show", {x: [30], z: [7000]}, true]], [20, 70, 6993, 7007, 1]],
  [[["show", {x: [7], z: [-7000]}, false]], [6.5, 7.5, -7007, -6993, 0]],
  [[["show", {x: [], z: []}, false]], [0, 1, -0.06, 1.06, 0]]]);
table(function plotStep(key, by) { return plot([0, 1, 2, 3, 4], []).step(2, key, by); }, [
  [["ArrowLeft", 1], 1], [["ArrowRight", 1], 3], [["ArrowLeft", 9], 0], [["ArrowRight", 9], 4],
  [["Home"], 0], [["End"], 4], [["Tab"], -1]]);
table(function runs(x, z) { return plot(x, z).runs(); },
  [[[[0, 1, 2, NaN, 4, 5], [3, 3, NaN, 3, 3, NaN]], [[0, 1], [4, 4]]]]);
table(function nearest(screen, x = [-3, 0, 3, 30]) { return plot(x, []).nearest(screen); },
  [[[0], 0], [[102], 1], [[104], 2], [[999], 3], [[9, []], -1]]);
table(function onScreen(x, z) {
  const view = plot([-3, 30], [1, -1]);
  view.fitHeights();
  return rounded([view.toScreenX(x), view.toScreenZ(z)]);
}, [[[-3, 1.12], [58, 10]], [[30, -1.12], [388, 158]], [[0, 0], [88, 84]]]);

const profile = surface(4, [none, 2, 8, none], {kind: "profile", x: 10, stepX: -3});
const [unknown, difference] = ["an end is not measured", "height difference B − A"];
table(endsOf, [[[[...pointsOf(profile).z]], [1, 2]], [[[NaN]], [0, 0]]]);
table(distanceFacts, [
  [[{x: [0, 3], z: [4, 0], units: profile.units, heightUnit: 1}, [0, 1], 3],
    [["distance", "5.0000 mm"], ["along x", "3.0000 mm"], [difference, "-4.000 mm"]]],
  [[{x: [0, 3], z: [4, 0], units: ["m", "", "dm"], heightUnit: 0.1}, [0, 1], 3],
    [["distance", "3.0265 m"], ["along x", "3.0000 m"], [difference, "-4.000 dm"]]],
  [[{x: [0, 3], z: [4, 0], units: ["mm", "", "V"], heightUnit: 0}, [0, 1], 3],
    [["distance", "z is no length"], ["along x", "3.0000 mm"], [difference, "-4.000 V"]]]]);

const cut = surface(4, [2, 9, 9, 9, 9, 8, none, 9, 9, 9, 9, 4], {stepX: -4, stepY: 1.5, low: 1});
const cell = (column, row) => ({column, row});
table(function along(a, b) {
  return cellsAlong(cut, cell(...a), cell(...b)).map(Object.values).map(rounded);
}, [[[[3, 2], [0, 1]], [[3, 2, 0], [2, 2, 4.031129], [1, 1, 8.062258], [0, 1, 12.093387]]],
  [[[3, 2], [3, 2]], [[3, 2, 0]]]]);
table(function section(a, b) {
  return sectionFacts(cut, cell(...a), cell(...b), cellsAlong(cut, cell(...a), cell(...b)));
}, [[[[0, 0], [3, 2]], [["length", "12.3693 mm"], [difference, "1.000 mm"], ["lowest", "1.000 mm"],
  ["highest", "4.000 mm"]]],
[[[2, 1], [2, 1]], [["length", "0.0000 mm"], [difference, unknown], ["lowest", "not measured"],
  ["highest", "not measured"]]]]);
const line = new SectionLine({}, [], () => {});
table(function fit(width, length) {
  line.fit({width, length});
  return line.ends.map(Object.values);
}, [[[21, 7], [[2, 3], [18, 3]]], [[19, 4], [[2, 3], [18, 3]]], [[18, 4], [[1, 2], [15, 2]]]]);

table(function mesh(width, heights, stride = 1) {
  const {places, triangles, points: single} = makeMesh(surface(width, heights), stride);
  return [places.length / 3, triangles, single];
}, [[[2, [1, 2, 3, 4]], [4, [0, 1, 2, 1, 3, 2], []]], [[2, [none, 2, 3, 4]], [4, [1, 3, 2], []]],
  [[2, [1, none, 3, 4]], [4, [0, 3, 2], []]], [[2, [1, 2, none, 4]], [4, [0, 1, 3], []]],
  [[2, [1, 2, 3, none]], [4, [0, 1, 2], []]], [[2, [1, none, none, 4]], [4, [], [0, 3]]],
  [[2, [1, 2, none, none, 5, 6, none, 8]], [8, [4, 5, 7], [0, 1]]],
  [[3, [1, 2, 3, 4, 5, 6, 7, 8, 9], 2], [4, [0, 1, 2, 1, 3, 2], []]]]);
// 12 x 9 x 8 mm are 17 across the corners.
table(function corner(index, stride, change) {
  const steps = {stepX: 4, stepY: 3, ...change};
  const scan = surface(3, [0, 1, 2, 3, 4, 8, 5, 6, 7], {high: 8, ...steps});
  const {places, radius, middleZ} = makeMesh(scan, stride);
  const place = places.slice(3 * index, 3 * index + 3).map((part) => part * radius);
  return rounded([...place, radius, middleZ]);
}, [[[0, 1], [-4, -3, -4, 8.5, 4]], [[3, 2], [4, 3, -0.5, 8.5, 4]],
  [[2, 1, {stepX: 0, stepY: null, low: 2}], [1, -1, -4, 3.674235, 5]],
  [[0, 1, {heightUnit: 0.5}], [-8, -6, -4, 15.524175, 4]],
  [[0, 1, {heightUnit: 0}], [-4, -3, -4, 8.5, 4]]]);
table(strideOf, [[[{width: 500, length: 500}], 1], [[{width: 501, length: 500}], 2]]);
table(function turn(...angles) { return rounded(turnMatrix(...angles)); }, [
  [[Math.PI / 6, Math.acos(0.6)], [0.866025, 0.3, -0.4, -0.5, 0.519615, -0.69282, 0, 0.8, 0.6]]]);
