// SPDX-License-Identifier: MIT
// Puts the parts of the page together: which scan is shown, and what its views tell each other.
import {drawColourBar} from "./colourbar.mjs";
import {PageData} from "./data.mjs";
import {onDrag, onKeys, onWheel, placeAt, pointIn} from "./drawing.mjs";
import {byId, element, showPairs, speak} from "./elements.mjs";
import {appendFacts} from "./facts.mjs";
import {HeightMap} from "./map.mjs";
import {LinePlot} from "./plot.mjs";
import {ProfileView} from "./profile.mjs";
import {SectionLine, cellsAlong, heightAt, sectionFacts} from "./section.mjs";
import {clean, measure} from "./text.mjs";
import {SolidView} from "./view3d.mjs";

const data = new PageData(JSON.parse(byId("document").textContent),
  (id) => byId(`array${id}`).textContent);
let scan = null;
let profile = null;  // made when there is one to show

const surface = (() => {
  const plot = new LinePlot(byId("section-plot"), {
    label: "Cross-section. Left and right move along the line.",
    xName: "distance from A",
    onCursor: (index, byKey) => tellSection(index, byKey),
  });
  const map = new HeightMap(byId("map"), data.palette, tellCell, (context) => {
    line.draw(context);
    placeCellMark();
  });
  const line = new SectionLine(map, [byId("line-a"), byId("line-b")], cutSection);
  const solid = new SolidView(byId("solid"), byId("solid-text"), data.palette);
  return {plot, map, line, solid, cells: []};
})();

function tellCell({column, row}, byKey) {
  if (scan.raw.length === 0) return;
  const pairs = scan.tell(column, row);
  showPairs(byId("map-readout"), pairs);
  if (byKey) speak(pairs);
}

function placeCellMark() {
  const {map} = surface;
  const {x, y} = map.view.placeOf(map.cell);
  const mark = byId("cell-mark");
  mark.style.width = `${Math.max(9, map.view.cellWidth * map.view.zoom + 2)}px`;
  mark.style.height = `${Math.max(9, map.view.cellHeight * map.view.zoom + 2)}px`;
  placeAt(mark, x, y, map.canvas);
}

function cutSection() {
  const {line, plot} = surface;
  const [a, b] = line.ends;
  surface.cells = cellsAlong(scan, a, b);
  showPairs(byId("section-facts"), sectionFacts(scan, a, b, surface.cells));
  plot.show({
    x: surface.cells.map((cell) => cell.distance),
    z: surface.cells.map((cell) => heightAt(scan, cell)),
    units: scan.units,
  });
}

function tellSection(index, byKey) {
  const cell = surface.cells[index];
  if (!cell) return;
  const pairs = [["distance", measure(cell.distance, 4, scan.units[0])],
    ...scan.tell(cell.column, cell.row)];
  showPairs(byId("section-readout"), pairs);
  if (byKey) {
    speak(pairs);
    surface.map.setCell({column: cell.column, row: cell.row}, false);
  }
}

function listenToMap() {
  const {map, line} = surface;
  const {canvas} = map;
  const toMove = () => document.querySelector("[name=drag]:checked").value === "move";
  let moving = false;
  canvas.addEventListener("pointermove", (event) => {
    if (event.buttons === 0) map.setCell(map.view.cellAt(pointIn(canvas, event)), false);
  });
  onDrag(canvas, {
    start: (event) => {
      moving = toMove() || event.shiftKey || event.button === 1;
      map.setCell(map.view.cellAt(pointIn(canvas, event)), false);
      if (!moving) line.ends = [map.cell, map.cell];
    },
    move: (dx, dy, event) => {
      if (moving) {
        map.view.moveBy(dx, dy);
        return;
      }
      map.setCell(map.view.cellAt(pointIn(canvas, event)), false);
      line.moveEnd(1, map.cell);
    },
    end: () => line.onLine(),
  });
  onWheel(canvas, (factor, event) => {
    const {x, y} = pointIn(canvas, event);
    map.view.zoomBy(factor, x, y);
  });
  const zoomAtCell = (factor) => {
    const {x, y} = map.view.placeOf(map.cell);
    map.view.zoomBy(factor, x, y);
  };
  onKeys(canvas, (key, by) => {
    const cell = map.view.step(map.cell, key, by);
    if (cell) map.setCell(cell, true);
    else if (key === "+" || key === "=") zoomAtCell(1.5);
    else if (key === "-") zoomAtCell(1 / 1.5);
    else if (key === "0") map.view.showWhole();
    else if (/^[ab]$/i.test(key)) line.moveEnd("ab".indexOf(key.toLowerCase()), map.cell);
    else return false;
    return true;
  });
  byId("map-in").addEventListener("click", () => zoomAtCell(1.5));
  byId("map-out").addEventListener("click", () => zoomAtCell(1 / 1.5));
  byId("map-whole").addEventListener("click", () => map.view.showWhole());
  for (const choice of document.querySelectorAll("[name=drag]")) {
    choice.addEventListener("change", () => canvas.classList.toggle("moves", toMove()));
  }
}

function listenToSolid() {
  const {solid} = surface;
  if (!solid.gl) return;
  byId("solid-in").addEventListener("click", () => solid.zoomBy(1.25));
  byId("solid-out").addEventListener("click", () => solid.zoomBy(1 / 1.25));
  byId("solid-reset").addEventListener("click", () => solid.turnBack());
  byId("solid-stretch").addEventListener("change", (event) =>
    solid.stretch(Number(event.target.value)));
}

function showSurface() {
  const range = data.heightRange(scan.source, scan.units[2]);
  drawColourBar(data.palette, range, scan.decimals, scan.units[2]);
  surface.line.fit(scan);
  surface.map.show(scan, range);
  cutSection();
  surface.solid.show(scan, range);
}

function showChosen() {
  const frame = data.frameNumbers[Number(byId("frame").value)];
  scan = data.scanOf(data.sourceNames[byId("source").selectedIndex], frame);
  byId("frame-name").textContent = data.frameText(frame);
  byId("scan-text").textContent = scan ? scan.text : "This source has no scan in this frame.";
  byId("cautions").replaceChildren(...data.cautionsOf(scan).map((text) =>
    element("li", "", `Caution: ${clean(text)}`)));
  const drawable = scan !== null && scan.width > 0 && scan.length > 0;
  const isProfile = drawable && scan.kind === "profile";
  byId("surface-views").hidden = !drawable || isProfile;
  byId("profile-view").hidden = !isProfile;
  if (isProfile) {
    profile ??= new ProfileView();
    profile.show(scan);
  } else if (drawable) {
    showSurface();
  }
}

const name = clean(data.name);
document.title = name;
byId("name").textContent = name;
byId("notice").textContent = data.notice;
appendFacts(byId("facts"), data.facts);
const options = data.sourceNames.map((source) => element("option", "", clean(source)));
byId("source").append(...options);
byId("source-choice").hidden = data.sourceNames.length < 2;
byId("frame-choice").hidden = data.frameNumbers.length < 2;
byId("choice").hidden = data.sourceNames.length < 2 && data.frameNumbers.length < 2;
byId("frame").max = Math.max(0, data.frameNumbers.length - 1);
byId("source").addEventListener("change", showChosen);
byId("frame").addEventListener("input", showChosen);
byId("choice").addEventListener("submit", (event) => event.preventDefault());
listenToMap();
listenToSolid();
showChosen();
