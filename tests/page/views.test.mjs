// SPDX-License-Identifier: MIT
// Where the views put what they show, and what they tell of it.
import {countPoints, extentFor, spreadCounts} from "../../inspect/page/colourbar.mjs";
import {colourNumber, colourTable, numbering} from "../../inspect/page/colours.mjs";
import {Blocks, blockFor, shownOf} from "../../inspect/page/grid.mjs";
import {MapView} from "../../inspect/page/mapview.mjs";
import {autoStretch, blocksOf, fitFor, makeMesh, meshText, turnMatrix} from "../../inspect/page/mesh.mjs";
import {paint, placesOf} from "../../inspect/page/paint.mjs";
import {PlotView} from "../../inspect/page/plotview.mjs";
import {distanceFacts, endsOf, pointsOf, profileTable} from "../../inspect/page/profile.mjs";
import {SectionLine, cellsAlong, sectionFacts, sectionPoints, sectionTable} from "../../inspect/page/section.mjs";
import {countBeyond} from "../../inspect/page/surface.mjs";
import {scanOf, table, viewOf} from "./table.mjs";

const none = -32768;
const surface = (width, heights, change) => scanOf({width, length: heights.length / width, x: 0,
  y: 0, stepX: 2, stepY: 1.25, scale: 1, offset: 0, views: {none: viewOf(0, 4)}, ...change}, heights);
const rounded = (values) => [...values].map((value) => Number(value.toFixed(6)));

const twice = ["zoomBy", 2, 300, 120];
const revealed = ["reveal", {column: 9, row: 0}];

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
  [[[twice, revealed, revealed]], [40, -332, 288, 3]],
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
table(function stretch(width, length) {
  const view = map({}, width, Array(width * length).fill(0));
  const {left, right, top, bottom} = view.box;
  return [view.stretchText, ...[right - left, bottom - top].map(Math.round)];
}, [[[300, 4], ["Not to scale: y is stretched 48 times.", 400, 160]],
  [[2, 600], ["Not to scale: x is stretched 100 times.", 160, 300]], [[4, 4], ["", 400, 250]]]);
table(function placeAt(x, y) { return [map().xAt(x), map().yAt(y)].map((place) => rounded([place])[0]); },
  [[[0, 275], [-1, -0.625]], [[400, 262.5], [19, 0]]]);
table(function seen() {
  const [one, other] = [map(), map()];
  one.zoomBy(2, 300, 100);
  other.see(one.seen);
  return rounded([...one.seen, other.zoom - one.zoom, other.centreX - one.centreX]);
}, [[[], [2, 0.625, 0.4, 0, 0]]]);

const palette = Uint8Array.from({length: 768}, (_, i) => i % 3 === 0 ? i / 3 : i % 3);
const colours = colourTable(palette, [9, 9, 9], [8, 8, 8]);
const reds = (pixels) => [...new Uint8Array(new Int32Array(pixels).buffer)].filter((_, i) => i % 4 === 0);
table(function colour(z, range) { return reds([colours[colourNumber(z - 5, numbering(range, 5))]])[0]; }, [
  [[-1, {low: -1, high: 1}], 0], [[0.5, {low: -1, high: 1}], 191], [[1, {low: -1, high: 1}], 255],
  [[-1.001, {low: -1, high: 1}], 9], [[1.001, {low: -1, high: 1}], 8], [[NaN, {low: 0, high: 1}], 0],
  [[5, {low: 5, high: 5}], 128]]);
// Cells 0 to 8 by 3, a gap, and a spike of 90 in one of them.
const spiky = surface(3, [0, 1, 2, 3, none, 5, 6, 7, 90], {views: {none: viewOf(0, 90)}});
table(function joinedBlocks(columns, rows) {
  const {mean, lowest, highest} = new Blocks(spiky).of(columns, rows);
  return [mean, lowest, highest].map((values) => rounded(values).map((z) => rounded([z + 45])[0]));
}, [[[2, 1], [[0.5, 2, 3, 5, 6.5, 90], [0, 2, 3, 5, 6, 90], [1, 2, 3, 5, 7, 90]]],
  [[2, 2], [[1.333332, 3.5, 6.5, 90], [0, 2, 6, 90], [3, 5, 7, 90]]],
  [[4, 4], [[14.25], [0], [90]]]]);
table(function twiceJoined() {
  const blocks = new Blocks(surface(8, Array.from({length: 32}, (_, i) => i)));
  blocks.of(2, 1);
  const {columns, rows, mean} = blocks.of(4, 2);
  return [columns, rows, ...mean, blocks.of(4, 2) === blocks.grids.at(-1), blocks.grids.length];
}, [[[], [4, 2, 3.5, 7.5, 19.5, 23.5, true, 3]]]);
table(function shown(mean, low, high, large) {
  return shownOf({mean: [mean], lowest: [low], highest: [high]}, 0, large);
}, [[[5, 4, 7, 1.5], 7], [[5, 2, 7, 1.5], 2], [[5, 4, 6, 1], 5], [[5, 2, 8, 1], 8]]);
table(function painted(columns, rows) {
  const grid = new Blocks(surface(3, [0, 51, none, 153, 204, 255],
    {scale: 1, views: {none: viewOf(0, 255)}})).of(1, 1);
  const pixels = new Int32Array(columns.length * rows.length);
  paint(pixels, grid, columns, rows, colours, numbering({low: 0, high: 204}, 127.5), 99);
  return reds(pixels);
}, [[[[-1, 0, 1, 2], [1, 1, -1, 0]], [0, 191, 255, 8, 0, 191, 255, 8, 0, 0, 0, 0, 0, 0, 64, 0]]]);
table(placesOf, [[[6, 1, 2, 2, false, 1], Int32Array.of(-1, 0, 0, 1, 1, -1)],
  [[6, -1, 0.5, 99, true, 4], Int32Array.of(23, 23, 22, 22, 21, 21)]]);
table(blockFor, [[[1], 1], [[3], 1], [[0.5], 2], [[0.49], 4], [[0.001], 1024]]);
const [full, histogram] = [{low: 0, high: 100}, [1, 0, 0, 8]];
table(extentFor, [[[{low: 40, high: 60}, full], {low: 37, high: 63}], [[full, full], full],
  [[{low: -10, high: 90}, full], {low: -10, high: 100}],
  [[{low: 5, high: 5}, {low: 5, high: 5}], {low: 4.5, high: 5.5}]]);
table(function spread(...given) { return [...spreadCounts({...full, histogram}, ...given)]; }, [
  [[full, 2], [1, 8]], [[{low: 50, high: 100}, 4], [0, 0, 4, 4]], [[{low: -50, high: 150}, 4], [0, 1, 8, 0]],
  [[{low: 80, high: 90}, 1], [3.2]]]);
table(function counted(values) { return [...countPoints(values, 10, {low: 0, high: 8}, 4)]; },
  [[[[-10, -8.01, -8, -2, -1.9, -11, NaN]], [2, 1, 0, 1]]]);
table(function reallyBeyond(change, range) {
  return countBeyond(Object.assign(spiky, change), new Blocks(spiky), range);
}, [[[{}, {low: 1, high: 5}], {below: 1, above: 3, exact: true}],
  [[{reduced: true}, {low: 0, high: 45}], {below: 0, above: 7, exact: true}]]);
spiky.reduced = false;

// 330 x 148 pixels within the margins. Tells what is seen, and how often a change was told.
const plot = (x, z, onChange = () => {}) => {
  const view = new PlotView({clientWidth: 400, clientHeight: 196}, onChange);
  view.margin.left = 58;
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

table(function band() {
  const view = plot([], []);
  view.show({x: [0, 1, 2], z: [1, 2, 3], lowest: [0, 2, -7], highest: [1, 9, 3]}, false);
  view.seen = {low: 0, high: 1.5};
  view.fitHeights();
  return rounded([view.low, view.high]);
}, [[[], [-0.54, 9.54]]]);
// 4000 points at 330 pixels: of each pixel, the first, the extremes and the last remain.
table(function outline(count) {
  const z = Array.from({length: count}, (_, i) => i === 2003 ? 99 : i === 2004 ? -99 : i % 2);
  const view = plot(z.map((_, i) => i), z);
  const kept = view.outline([1, count - 1]);
  return [kept.length < count / 2, kept[0], kept.at(-1), kept.includes(2003), kept.includes(2004),
    kept.every((i, k) => k === 0 || i > kept[k - 1])];
}, [[[4000], [true, 1, 3999, true, true, true]], [[1000], [false, 1, 999, false, false, true]]]);

const lineOf = (units, change) => scanOf({kind: "profile", width: 4, length: 1, x: 0, stepX: -3, scale: 1,
  offset: 0, units, ...change}, [none, 0, 4, none]);
const [mm, m, volt] = [["mm", 1], ["m", 1000], ["V", 0]];
const [unknown, difference] = ["an end is not measured", "height difference B − A"];
table(endsOf, [[[[...pointsOf(lineOf()).z]], [1, 2]], [[[NaN]], [0, 0]]]);
table(function distance(ends, units, change) {
  return distanceFacts(lineOf(units, change), ends).map((pair) => pair.join(" ")).slice(0, 4).join(", ");
}, [
  [[[1, 2]], `distance 5.0 mm, along x 3.0 mm, ${difference} -4 mm, Ra 2.000 mm`],
  [[[2, 1], [m, m, ["dm", 100]]], `distance 3.0 m, along x -3.0 m, ${difference} 400 mm, Ra 200.0 mm`],
  [[[1, 2], [mm, mm, volt]], `distance z is no length, along x 3.0 mm, ${difference} -4 V, Ra 2.000 V`],
  [[[0, 2]], `distance ${unknown}, along x 6.0 mm, ${difference} ${unknown}, Ra 2.000 mm`],
  [[[1, 2], [volt, mm, mm], {kind: "surface", width: 1, length: 4, stepY: 3}],
    `distance ${unknown}`.replace(unknown, "5.0 mm") + `, along y 3.0 mm, ${difference} 4 mm, Ra 2.000 mm`]]);
table(function profileRows() { return profileTable(lineOf([mm, mm, volt])); },
  [[[], [["x (mm)", "z (V)"], [-9, NaN], [-6, 4], [-3, 0], [0, NaN]]]]);
table(function columnHead() {
  return profileTable(lineOf([mm, m, volt], {kind: "surface", width: 1, length: 4, stepY: 2})).slice(0, 3);
}, [[[], [["y (m)", "z (V)"], [-1, NaN], [1, 0]]]]);

const around = Int16Array.of(2, 9, 9, 9, 9, 9, none, 9, 9, 9, 9, 4);
const cut = (change) => scanOf({width: 4, length: 3, x: 10, y: 0, stepX: -4, stepY: 1.5, scale: 0.5, offset: 0,
  views: {none: viewOf(1, 4)}, ...change}, [2, 9, 9, 9, 9, 8, none, 9, 9, 9, 9, 4], around);
const spread = {lows: {array: 0, scale: 0.5, offset: 0}, highs: {array: 1, scale: 0.5, offset: 0}};
const along = (scan, a, b) => cellsAlong(scan, cell(...a), cell(...b));
const cell = (column, row) => ({column, row});
table(function cells(a, b, change) { return along(cut(change), a, b).map(Object.values).map(rounded); }, [
  [[[3, 2], [0, 1]], [[3, 2, 11, 0], [2, 2, 10, 4.031129], [1, 1, 5, 8.062258], [0, 1, 4, 12.093387]]],
  [[[3, 2], [3, 2]], [[3, 2, 11, 0]]],
  [[[0, 0], [0, 1], {units: [m, mm, mm]}], [[0, 0, 0, 0], [0, 1, 4, 0.0015]]],
  [[[0, 0], [1, 1], {units: [m, volt, mm]}], [[0, 0, 0, 0], [1, 1, 5, 1.414214]]]]);
table(function section(a, b, change) {
  const scan = cut(change);
  return sectionFacts(scan, along(scan, a, b)).map((pair) => pair.join(" ")).join(", ");
}, [[[[0, 0], [3, 2]], `length 12.37 mm, ${difference} 1.0 mm, lowest 1.0 mm, highest 4.0 mm, ` +
  "Ra 1.111 mm, Rq 1.247 mm, Rz 3.000 mm"],
[[[0, 0], [3, 2], spread], `length 12.37 mm, ${difference} 1.000 mm, lowest 1.000 mm, highest 4.500 mm, ` +
  "Ra 1.111 mm, Rq 1.247 mm, Rz 3.000 mm"],
[[[2, 1], [2, 1]], `length 0.00 mm, ${difference} ${unknown}, lowest not measured, ` +
  "highest not measured, Ra –, Rq –, Rz –"]]);
table(function csv(change) {
  const scan = cut({...spread, ...change});
  return sectionTable(scan, along(scan, [0, 0], [1, 1])).map((row) => row.map((value) =>
    typeof value === "number" ? rounded([value])[0] : value).join()).join(" ");
}, [[[{}], "distance (mm),x (mm),y (mm),z (mm),lowest (mm),highest (mm) 0,10,0,1,1,1 4.272002,6,1.5,4,4,4.5"],
  [[{units: [mm, volt, ["", 0]]}], "distance (cells),x (mm),y (V),z,lowest,highest 0,10,0,1,1,1 1.414214,6,1.5,4,4,4.5"]]);
table(function sectionShown() {
  const scan = cut(spread);
  const {x, z, lowest, highest, xTitle, zTitle} = sectionPoints(scan, along(scan, [0, 1], [1, 1]));
  return [[x, z, lowest, highest].map((values) => [...values]), xTitle, zTitle];
}, [[[], [[[0, 4], [4.5, 4], [4.5, 4], [4.5, 4.5]], "distance from A (mm)", "z (mm)"]]]);
const line = new SectionLine({}, [], () => {});
table(function fit(width, length) {
  line.fit({width, length});
  return line.ends.map(Object.values);
}, [[[21, 7], [[2, 3], [18, 3]]], [[19, 4], [[2, 3], [18, 3]]], [[18, 4], [[1, 2], [15, 2]]]]);

const meshOf = (scan, blocks, large = 99) => makeMesh(scan, new Blocks(scan), blocks, scan, large);
table(function mesh(width, heights, change, blocks = [1, 1]) {
  const {places, triangles, points} = meshOf(surface(width, heights, change), blocks);
  return [places.length / 3, [...triangles], [...points]];
}, [[[2, [1, 2, 3, 4]], [4, [0, 1, 2, 1, 3, 2], []]], [[2, [none, 2, 3, 4]], [4, [1, 3, 2], []]],
  [[2, [1, none, 3, 4]], [4, [0, 3, 2], []]], [[2, [1, 2, none, 4]], [4, [0, 1, 3], []]],
  [[2, [1, 2, 3, none]], [4, [0, 1, 2], []]], [[2, [1, none, none, 4]], [4, [], [0, 3]]],
  [[2, [1, 2, none, none, 5, 6, none, 8]], [8, [4, 5, 7], [0, 1]]],
  [[2, [1, 2, 3, 4], {kind: "cloud"}], [4, [], [0, 1, 2, 3]]],
  // A jump of 12 over steps of 2 is as steep as 80.5°.
  [[2, [0, 0, 0, 12], {views: {none: viewOf(0, 47)}}], [4, [0, 1, 2], [3]]],
  [[2, [0, 0, 0, 12], {views: {none: viewOf(0, 49)}}], [4, [0, 1, 2, 1, 3, 2], []]],
  [[4, [0, 0, 0, 0, 0, 0, 18, 18], {views: {none: viewOf(0, 40)}}, [2, 1]], [4, [0, 1, 2, 1, 3, 2], []]],
  [[2, [0, 0, 0, 11], {views: {none: viewOf(0, 40)}}], [4, [0, 1, 2, 1, 3, 2], []]],
  [[2, [0, 0, 0, 99], {units: [mm, mm, volt]}], [4, [0, 1, 2, 1, 3, 2], []]],
  [[3, [1, 2, 3, 4, 5, 6, 7, 8, 9], {}, [2, 2]], [4, [0, 1, 2, 1, 3, 2], []]]]);
// 12 x 9 x 8 mm are 17 across the corners.
table(function meshCorner(index, blocks, change, large) {
  const scan = surface(3, [0, 1, 2, 3, 4, 8, 5, 6, 7], {stepX: 4, stepY: 3, views: {none: viewOf(0, 8)},
    ...change});
  const {places, radius, middleZ} = meshOf(scan, blocks, large);
  const place = places.slice(3 * index, 3 * index + 3).map((part) => part * radius);
  return rounded([...place, radius, middleZ]);
}, [[[0, [1, 1]], [-4, -3, -4, 8.5, 4]], [[3, [2, 2]], [4, 3, 3, 8.5, 4]],
  [[0, [2, 2]], [-2, -1.5, -2, 8.5, 4]], [[0, [4, 4], {}, 3.9], [0, 0, 4, 8.5, 4]],
  [[2, [1, 1], {stepX: 0, stepY: null, views: {none: viewOf(2, 8)}}], [1, -1, -3, 3.674235, 5]],
  [[0, [1, 1], {units: [m, m, ["x", 500]]}], [-8, -6, -4, 15.524175, 4]],
  [[0, [1, 1], {units: [m, m, volt]}], [-8, -6, -4, 15.524175, 4]]]);
table(blocksOf, [[[{width: 500, length: 500}, 250000], [1, 1]], [[{width: 501, length: 500}, 250000], [2, 1]],
  [[{width: 4, length: 300000}, 1000], [1, 2048]], [[{width: 100, length: 100}, 2500], [2, 2]]]);
table(function auto(change) { return autoStretch(surface(3, [0, 0, 0], change), {low: 1, high: 9}); }, [
  [[{}], 0.25], [[{units: [mm, ["m", 1000], ["µm", 1e-3]]}], 52000], [[{stepX: 0, stepY: 0}], 1],
  [[{units: [mm, mm, volt]}], 1]]);
table(function fit(flat, stretch) { return rounded([fitFor({flat}, stretch)])[0]; },
  [[[0.6, 1], 1], [[0.6, 2], 0.585206], [[0.6, 0], 1.666667]]);
table(function meshTells(blocks, stretch, change) {
  return meshText(surface(3, [0, 0, 0, 0, 0, 0], change), blocks, stretch);
}, [[[[1, 1], 2.4], "4 mm × 1.25 mm × 4 mm; heights are drawn × 2.4."],
  [[[2, 4], 12, {units: [mm, mm, volt]}], "4 mm × 1.25 mm × 4 V; heights are no lengths, and drawn to fit; " +
    "each corner stands for 2 × 4 cells: their mean, or an extreme far from it."]]);
table(function turn(...angles) { return rounded(turnMatrix(...angles)); }, [
  [[Math.PI / 6, Math.acos(0.6)], [0.866025, 0.3, -0.4, -0.5, 0.519615, -0.69282, 0, 0.8, 0.6]]]);
