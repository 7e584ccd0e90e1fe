// SPDX-License-Identifier: MIT
// What the page makes of the data that it carries: values, units, figures, texts and links.
import {areaOf, stepPairs} from "../../inspect/page/areas.mjs";
import {factName, factText} from "../../inspect/page/facts.mjs";
import {figureRows, lineFigurePairs, sizeText} from "../../inspect/page/figures.mjs";
import {linkOf, parseLink} from "../../inspect/page/link.mjs";
import {OddCells} from "../../inspect/page/odd.mjs";
import {csvText, fileName} from "../../inspect/page/save.mjs";
import {clean, decimalsFor, labelsThatFit, number, ticksOf} from "../../inspect/page/text.mjs";
import {heightUnit, lengthUnit, ratioOf} from "../../inspect/page/units.mjs";
import {beyond, beyondText, rangesOf, viewOf} from "../../inspect/page/views.mjs";
import {pageOf, scanOf, table, viewOf as made} from "./table.mjs";

table(clean, [
  [["a\tb\u009f\u00a0<b>"], "a\ufffdb\ufffd\u00a0<b>"], [[7], "7"],
  [["\u200e\u200f\u2010\u2027\u2028\u202e\u202f\u2065\u2066\u2069"],
    "\ufffd\ufffd\u2010\u2027\ufffd\ufffd\u202f\u2065\ufffd\ufffd"],
  [["\u00ac\u00ad\u061c\u200a\u200b\ufeff"], "\u00ac\ufffd\ufffd\u200a\ufffd\ufffd"]]);
table(decimalsFor, [
  [[0.001], 3], [[-0.0001], 4], [[0.00099], 5], [[20], 0], [[1e-8], 8], [[1e-10], 10], [[0], 3],
  [[Infinity], 3], [[-0.01, 0.0005], 3], [[0.01, 0.00005], 2], [[1e-8, 1.2345678905], 9], [[0.25], 2], [[1.25], 2]]);
table(number, [[[1.23456], "1.235"], [[-0.0001], "0.000"], [[-2, 0], "-2"], [[NaN], "–"],
  [[-1e12, 3], "-1e+12"], [[-999999999999, 1], "-999999999999.0"], [[1.25e-11, 12], "1.25e-11"],
  [[0, 12], "0"], [[2, 9], "2.000000000"]]);
table(function ticks(...given) { return Object.values(ticksOf(...given)).flat(); }, [
  [[0, 4, 4], [0, 1, 2, 3, 4, 0]], [[-0.3, 0.31, 5], [-0.2, 0, 0.2, 1]], [[13, 58, 2], [50, 0]],
  [[0, 64, 8], [0, 10, 20, 30, 40, 50, 60, 0]], [[0, 4e-11, 2.5], [0, 2e-11, 4e-11, 11]],
  [[7, 7, 8], [7, 3]]]);
// 10 pixels for each character.
table(function labels(...given) {
  return labelsThatFit(...given, (text) => 10 * text.length).map(([, text]) => text).join(" ");
}, [[[0, 10, 200], "0 2 4 6 8 10"], [[0, 1e6, 90], "0 1000000"], [[0, 1e6, 60], "0"],
  [[0.001, 0.0012, 99], "0.0010 0.0012"], [[5, 5, 99], "5.000"]]);

const [mm, nm, volt] = [["mm", 1], ["nm", 1e-6], ["a.\u202eu.", 0]];
table(function unit(given, ...values) {
  const {name, factor, referenceText} = lengthUnit(given, ...values);
  return [name, Number(factor.toPrecision(9)), referenceText];
}, [[[mm, 0.8], ["µm", 1e3, ""]], [[mm, 1], ["mm", 1, ""]], [[mm, 1e3], ["m", 1e-3, ""]],
  [[mm, 1e-10], ["pm", 1e9, ""]], [[nm, 2500], ["µm", 1e-3, ""]], [[volt, 1e9], ["a.\ufffdu.", 1, ""]]]);
table(function heights(given, low, high, step) {
  const unit = heightUnit(given, low, high).tellingApart(step, low);
  return [unit.range(low, high), unit.axis("z"), unit.text(NaN), unit.difference(high - low),
    Number(unit.back(unit.shown(high)).toPrecision(12)) === high].join("; ");
}, [
  [[mm, 0, 0.8, 0.001], "0 to 800 µm; z (µm); not measured; 800 µm; true"],
  [[mm, 12.3359, 12.3539, 1e-4],
    "12.345 mm + -9.1 to 8.9 µm; z − 12.345 mm (µm); not measured; 18.0 µm; true"],
  [[mm, 123.4559, 123.4641, 1e-4],
    "123.460 mm + -4.1 to 4.1 µm; z − 123.460 mm (µm); not measured; 8.2 µm; true"],
  [[["nm", 1e-6], -12345010, -12344990, 0.1],
    "-12.34500 mm + -10.0 to 10.0 nm; z + 12.34500 mm (nm); not measured; 20.0 nm; true"],
  [[mm, 0, 0, 1], "0 to 0 pm; z (pm); not measured; 0 pm; true"],
  [[mm, 5, 5, 1], "5 to 5 mm; z (mm); not measured; 0 mm; true"],
  [[["", 0], 1e5, 100001, 0.5], "100000.5 + -0.5 to 0.5; z − 100000.5; not measured; 1.0; true"]]);
table(ratioOf, [[[mm, nm], 1e-6], [[mm, volt], 0], [[volt, volt], 1], [[mm, ["mm", 0]], 0], [[["V", 0], ["A", 0]], 0]]);
table(sizeText, [[[mm, 0.00123456], "1.235 µm"], [[mm, 0], "0.000 pm"], [[mm, null], "–"],
  [[volt, 123456], "123456 a.\ufffdu."]]);

table(factName, [[["x2Y_z_a\u0007"], "x2 y z a\ufffd"]]);
table(factText, [
  [[null], "–"], [[true], "yes"], [[0.12345678], "0.1234568"], [[123456789], "123456789"],
  [[[]], "none"], [[[1, "b"]], "1, b"], [[[{a: 1, b: 2}, {a: [3]}]], "a 1, b 2\na 3"],
  [[{aB: {b: 1}, c: "\u202e<i>"}], "a b b 1\nc \ufffd<i>"]]);

const heights = [-32768, 2, -3, 4, 5, 6];
const [low, high] = [Int16Array.of(0, 0, -4, 4, 5, 6), Int16Array.of(0, 2, -3, 4, 5, 8)];
const spread = {lows: {array: 2, scale: 0.5, offset: 1}, highs: {array: 3, scale: 0.5, offset: 1}};
const intensities = Uint8Array.of(0, 50, 100, 150, 200, 255);
const levelled = (change, level, ...arrays) => {
  const scan = scanOf(change, heights, ...arrays);
  scan.setLevel(level, null);
  return scan;
};
table(function tell(column, row, change, level = "none") {
  return levelled(change, level, intensities, low, high).tell(column, row)
    .map((pair) => pair.join(" ")).join(", ");
}, [
  [[1, 1, {intensities: 1}], "x 10.5 mm, y -1.25 mm, z 3.5 mm, intensity 200, column 1, row 1"],
  [[1, 1, {}, "plane"], "x 10.5 mm, y -1.25 mm, z 0.0 mm, column 1, row 1"],
  [[1, 1, {}, "mean"], "x 10.5 mm, y -1.25 mm, z 2.5 mm, column 1, row 1"],
  [[0, 0, {}], "x 10.0 mm, y -1.00 mm, z not measured, column 0, row 0"],
  [[1, 0, {...spread, kind: "cloud"}, "plane"], "x 10.5 mm, y -1.00 mm, mean z 0.500 mm, " +
    "lowest -0.500 mm, highest 0.500 mm, note front and back may be mixed here, column 1, row 0"],
  [[0, 1, spread], "x 10.0 mm, y -1.25 mm, z 3.000 mm, column 0, row 1"],
  [[1, 0, {scale: 1e-4, units: [["nm", 1e-6], ["\u202em", 0], ["V", 0]]}],
    "x 10.5 nm, y -1.00 \ufffdm, z 1.0002 V, column 1, row 0"]]);
table(function shifted(level) { return [...levelled({}, level).shifted(scanOf({}, heights).heights, 0.5)]; },
  [[["none"], [NaN, 1.5, -1, 2.5, 3, 3.5]], [["plane"], [NaN, 0, -3, -0.5, -0.5, -0.5]]]);
const told = "points. Heights from -0.5 to 4.0 mm";
const extremes = "a cell keeps its lowest and its highest point beside the mean.";
table(function text(change, level = "none") { return levelled(change, level).text; }, [
  [[{columns: 6, rows: 4, reduced: true}], `Surface of 6 × 4 ${told} (of all points). ` +
    `Reduced to 3 × 2 cells of about 4.00 points; ${extremes}`],
  [[{kind: "cloud", units: [mm, mm, nm]}], `Point cloud of 3 × 2 ${told.replace("mm", "nm")} (of all ` +
    `points). Seen from above in 3 × 2 cells of 0.5 mm × 0.25 mm; ${extremes} The file tells x in mm, ` +
    "y in mm, z in nm; a conversion takes all of them for mm."],
  [[{}, "plane"], "Surface of 3 × 2 points. Heights from -2.0 to 2.0 mm. Levelled by a plane: it is " +
    "taken off all heights. Every point is here."],
  [[{views: undefined}], "Surface of 3 × 2 points. Nothing was measured, or has no finite place."]]);
const profile = {kind: "profile", rows: 1, width: 6, length: 1};
table(function places(change, raw) {
  const {xs, order, placeUnit} = scanOf({...profile, ...change}, [1, 2, 3, 4, 5], raw);
  return [...xs, ...order, placeUnit.decimals];
}, [
  [[{stepX: -1}], [6, 7, 8, 9, 10, 4, 3, 2, 1, 0, 0]],
  [[{kind: "surface", width: 1, length: 5, stepY: 2}], [-1, 1, 3, 5, 7, 0, 1, 2, 3, 4, 0]],
  [[{places: 1, placeScale: 0.01, placeOffset: 0.0005}, Int16Array.of(-32768, 300, -32768, 200, 9)],
    [0.0905, 2.0005, 3.0005, 3.0005, 3.0005, 4, 3, 2, 1, 0, 3]]]);
// A plane by the places of the points, and not by their number.
table(function placed(point) {
  const scan = scanOf({...profile, places: 1, placeScale: 1, placeOffset: 0}, [1, 1, 1],
    Int16Array.of(0, 10, 40));
  scan.setLevel("plane", null);
  return scan.z(point);
}, [[[0], 0.5], [[2], -19.5]]);

table(function mean() {
  const {offset, low: least, to, figures} = viewOf({views: {none: made(-1, 5)}}, "mean");
  return [offset, least, to, figures.mean, figures.median, figures.percentiles, figures.sq];
}, [[[], [1, -2, 4, 0, 1, {5: -2, 95: 4}, 0.5]]]);
table(function ranges(...views) { return rangesOf(views).auto; }, [
  [[made(0, 10, {from: 2, to: 6}), made(1, 11, {from: 4, to: 7})], {low: 2, high: 7}],
  [[made(0, 10, {from: 2, to: 7})], {low: 0, high: 10}],
  [[made(100, 104, {from: 100, to: 103})], {low: 100, high: 104}],
  [[made(0, 10, {from: 2, to: 2})], {low: 0, high: 10}], [[], {low: 0, high: 0}]]);
table(function beyondRange(...given) { return beyondText(beyond(made(0, 8), ...given)); }, [
  [[{low: 2, high: 6}], "4 points above, 1 point below"], [[{low: 1, high: 5}],
    "about 5 points above, about 1 point below"], [[{low: -9, high: 9}], ""]]);
table(function figures(isLine) {
  return figureRows([made(-0.5, 4), made(-2, 2)], mm, isLine).map((row) => row.join(" ")).join(", ");
}, [[[false], "Sa 250.0 µm 250.0 µm, Sq 500.0 µm 500.0 µm, Sz 4.000 mm 4.000 mm, Sp 3.000 mm 3.000 mm, " +
  "Sv 1.000 mm 1.000 mm, Ssk – –, Sku 3.0000 3.0000, mean 1.000 mm 1.000 mm, median 2.000 mm " +
  "2.000 mm, 5 % are below -0.500 mm -2.000 mm, 95 % are below 4.000 mm 2.000 mm, lowest " +
  "-0.500 mm -2.000 mm, highest 4.000 mm 2.000 mm, valid points 10 10"]]);
table(lineFigurePairs, [
  [[[1e6 + 3, NaN, 1e6 - 3, 1e6 + 1, 1e6 - 1], mm], [["Ra", "2.000 mm"], ["Rq", "2.236 mm"],
    ["Rz", "6.000 mm"]]],
  [[[NaN], mm], [["Ra", "–"], ["Rq", "–"], ["Rz", "–"]]]]);
const corner = (column, row) => ({column, row});
table(function area(...corners) { return areaOf(scanOf({}, heights), corners); }, [
  [[corner(2, 0), corner(1, 1)], {count: 4, mean: 2.25, deviation: Math.sqrt(12.25 / 3) }],
  [[corner(0, 0), corner(0, 0)], {count: 0, mean: NaN, deviation: NaN}]]);
table(function step(...areas) { return stepPairs(scanOf({}, heights), areas).flat().join(" "); }, [
  [[[corner(1, 0), corner(1, 0)], null], "area 1 mean 2.0 mm, standard deviation –, 1 points"],
  [[[corner(1, 0), corner(1, 0)], [corner(1, 1), corner(2, 1)]], "area 1 mean 2.0 mm, standard " +
    "deviation –, 1 points area 2 mean 3.8 mm, standard deviation 353.6 µm, 2 points " +
    "step from 1 to 2 1.8 mm"],
  [[[corner(0, 0), corner(0, 0)], [corner(0, 0), corner(0, 0)]], "area 1 mean not measured, standard " +
    "deviation –, 0 points area 2 mean not measured, standard deviation –, 0 points " +
    "step from 1 to 2 an area is not measured"]]);

table(csvText, [[[[["a, b", 'c"d'], [0.1 + 0.2, NaN], [-0.5, 12345678901]]],
  '"a, b","c""d"\n0.3,\n-0.5,1.23456789e+10\n'.replace("1.23456789e+10", "12345678900")]]);
table(fileName, [[[["a b/c.sur", "", "Tóp"], "png"], "a_b_c.sur-Tóp.png"]]);
const link = {source: "a&b, #", frame: 3, level: "plane", range: {low: -0.5, high: 2e-9},
  seen: [2, 0.25, 0.75], ends: [1, 2, 3, 4]};
table(function linkBack(change) { return parseLink(`#${linkOf({...link, ...change})}`); }, [
  [[{}], link], [[{range: "full", ends: [5, 6]}], {...link, range: "full", ends: [5, 6]}],
  [[{source: null, frame: null, level: null, range: null, seen: null, ends: null}],
    {source: null, frame: null, level: null, range: null, seen: null, ends: null}]]);
const nothing = {source: null, frame: null, level: null, range: null, seen: null, ends: null};
table(parseLink, [[[""], nothing], [["#frame=x&level=up&range=2,1&zoom=0.5,1,1&line=1,2,-3,4"], nothing],
  [["#range=1,&zoom=2,3&line=1.5,2"], nothing],
  [["#zoom=1,0,0"], {...nothing, seen: [1, 0, 0]}]]);

table(function cautions(file, scan) { return pageOf([{}], {facts: file}).cautionsOf(scan); }, [
  [[{cautions: [{text: "a"}, {text: "b"}]}, {cautions: ["c", "b"]}], ["a", "b", "c"]],
  [[{}, null], []]]);

const holds = "This page holds at most 500 points (--points).";
table(function notice(scans, others) { return pageOf(scans, others).notice; }, [
  [[[{}]], ""], [[[{reduced: true}], {leftOut: 1}],
    `Scans left out besides: 1. The scan is reduced. ${holds}`],
  [[[{}], {choice: {frame: "2:5", source: "Top"}}],
    "Made with --frame 2:5 and --source Top: the file may hold more."],
  [[[{reduced: true}, {}], {every: 2}], "Of 9 frames, the first and every 2. after it are here. " +
    `Reduced scans: 1 of 2. ${holds}`]]);
const views = (...range) => ({views: {none: made(...range), plane: made(-8, 8)}});
const page = (change) => pageOf([views(-0.5, 4), {source: "Side", ...views(-9, 9)},
  {frame: 4, ...views(-2, 3)}, {frame: 8, views: undefined},
  {source: "Nano", ...views(5, 6), units: [mm, mm, nm]}], change);
table(function range(source, unit, level) { return page().ranges(source, unit, level).full; }, [
  [["Nano", "nm", "none"], {low: 5, high: 6}], [["Nano", "mm", "none"], {low: 0, high: 0}],
  [["Top", "mm", "none"], {low: -2, high: 4}], [["Top", "mm", "plane"], {low: -8, high: 8}],
  [["Top", "mm", "mean"], {low: -3, high: 3}]]);
table(function firstRange(kind, level) {
  const ranges = {auto: "auto", full: "full", most: "most"};
  return page({level: "plane", range: {kind, low: 1, high: 2}}).firstRange(ranges, level);
}, [[["values", "plane"], {low: 1, high: 2}], [["values", "none"], "auto"], [["full", "none"], "full"],
  [["percentiles", "none"], "most"], [["auto", "none"], "auto"]]);
// Cells of 10 columns: a spike, a hole, a mean far away, noise; [above the mean, below it].
table(function odd(cells, from, to) {
  const mean = Float32Array.from({length: 100}, (_, i) => cells[i]?.[2] ?? (i === 99 ? NaN : i / 100));
  const grid = {width: 10, mean, highest: mean.map((z, i) => z + (cells[i]?.[0] ?? 0.1)),
    lowest: mean.map((z, i) => z - (cells[i]?.[1] ?? 0.1))};
  return new OddCells(grid).within({low: from, high: to}).map(({column, row}) => 10 * row + column)
    .sort((a, b) => a - b);
}, [
  [[{}, 0, 1], []], [[{34: [0.5, 0], 57: [0.1, 0.45], 58: [0.39, 0.39]}, 0, 1], [34, 57]],
  [[{34: [0.5, 0]}, 0, 4], []], [[{3: [0, 0, 2.1], 5: [0, 0, -1.1], 6: [0, 0, 1.9]}, 0, 1], [3, 5]],
  [[Object.fromEntries(Array.from({length: 20}, (_, i) => [i, [1, 0]])), 0, 1],
    Array.from({length: 20}, (_, i) => i)],
  [[Object.fromEntries(Array.from({length: 21}, (_, i) => [i, [1, 0]])), 0, 1], []]]);
