// SPDX-License-Identifier: MIT
// Puts the parts of the page together: which scan is shown, and what its views tell each other.

let scan = null;
let profile = null;  // made when there is one to show

const surface = (() => {
  const plot = new LinePlot(byId("section-plot"), {
    label: "Cross-section. Left and right move along the line.",
    xName: "distance from A",
    onCursor: (index, byKey) => tellSection(index, byKey),
  });
  const map = new HeightMap(byId("map-stage"), tellCell, (context) => {
    line.draw(context);
    placeCellMark();
  });
  const line = new SectionLine(map, [byId("line-a"), byId("line-b")], () => cutSection(true));
  const solid = new SolidView(byId("solid"), byId("solid-text"));
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
  const {x, y} = map.placeOf(map.cell);
  const mark = byId("cell-mark");
  mark.style.width = `${Math.max(9, map.cellWidth * map.zoom + 2)}px`;
  mark.style.height = `${Math.max(9, map.cellHeight * map.zoom + 2)}px`;
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
  });
}

function tellSection(index, byKey) {
  const cell = surface.cells[index];
  if (!cell) return;
  const pairs = [["distance", mm(cell.distance, 4)], ...scan.tell(cell.column, cell.row)];
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
    if (event.buttons === 0) map.setCell(map.cellAt(pointIn(canvas, event)), false);
  });
  onDrag(canvas, {
    start: (event) => {
      moving = toMove() || event.shiftKey || event.button === 1;
      map.setCell(map.cellAt(pointIn(canvas, event)), false);
      if (!moving) line.ends = [map.cell, map.cell];
    },
    move: (dx, dy, event) => {
      if (moving) {
        map.moveBy(dx, dy);
        return;
      }
      map.setCell(map.cellAt(pointIn(canvas, event)), false);
      line.moveEnd(1, map.cell);
    },
    end: () => line.onLine(),
  });
  onWheel(canvas, (factor, event) => {
    const {x, y} = pointIn(canvas, event);
    map.zoomBy(factor, x, y);
  });
  const zoomAtCell = (factor) => {
    const {x, y} = map.placeOf(map.cell);
    map.zoomBy(factor, x, y);
  };
  onKeys(canvas, (key, by) => {
    const cell = map.step(map.cell, key, by);
    if (cell) map.setCell(cell, true);
    else if (key === "+" || key === "=") zoomAtCell(1.5);
    else if (key === "-") zoomAtCell(1 / 1.5);
    else if (key === "0") map.showWhole();
    else if (/^[ab]$/i.test(key)) line.moveEnd("ab".indexOf(key.toLowerCase()), map.cell);
    else return false;
    return true;
  });
  byId("map-in").addEventListener("click", () => zoomAtCell(1.5));
  byId("map-out").addEventListener("click", () => zoomAtCell(1 / 1.5));
  byId("map-whole").addEventListener("click", () => map.showWhole());
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
  const range = heightRange(scan.source);
  drawColourBar(range, scan.decimals);
  surface.line.fit(scan);
  surface.map.show(scan, range);
  cutSection();
  surface.solid.show(scan, range);
}

function showChosen() {
  const source = sourceNames[byId("source").selectedIndex];
  const frame = frameNumbers[Number(byId("frame").value)];
  const entry = pageData.scans.find((one) => one.source === source && one.frame === frame);
  const of = `${frame + 1} of ${pageData.frames}`;
  const index = pageData.scans.find((one) => one.frame === frame)?.index;
  byId("frame-name").textContent = `${of}, index ${index}`;
  const drawable = entry !== undefined && entry.width > 0 && entry.length > 0;
  const isProfile = drawable && entry.kind === "profile";
  byId("surface-views").hidden = !drawable || isProfile;
  byId("profile-view").hidden = !isProfile;
  scan = entry ? new Scan(entry) : null;
  byId("scan-text").textContent = scan ? scan.text : "This source has no scan in this frame.";
  if (isProfile) {
    profile ??= new ProfileView();
    profile.show(scan);
  } else if (drawable) {
    showSurface();
  }
}

function start() {
  const name = clean(pageData.name);
  document.title = name;
  byId("name").textContent = name;
  byId("notice").textContent = noticeText();
  appendFacts(byId("facts"), pageData.facts);
  const options = sourceNames.map((source) => element("option", "", clean(source)));
  byId("source").append(...options);
  byId("source-choice").hidden = sourceNames.length < 2;
  byId("frame-choice").hidden = frameNumbers.length < 2;
  byId("choice").hidden = sourceNames.length < 2 && frameNumbers.length < 2;
  byId("frame").max = Math.max(0, frameNumbers.length - 1);
  byId("source").addEventListener("change", showChosen);
  byId("frame").addEventListener("input", showChosen);
  byId("choice").addEventListener("submit", (event) => event.preventDefault());
  listenToMap();
  listenToSolid();
  showChosen();
}

start();
