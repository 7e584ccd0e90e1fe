// SPDX-License-Identifier: MIT
// The views of a surface or cloud, and what they tell each other: map, colours, section, 3-D.
import {StepAreas, stepPairs} from "./areas.mjs";
import {ColourBar, countPoints, spreadCounts} from "./colourbar.mjs";
import {onDrag, onKeys, onWheel, placeAt, pointIn} from "./drawing.mjs";
import {byId, showPairs, speak} from "./elements.mjs";
import {Blocks} from "./grid.mjs";
import {HeightMap} from "./map.mjs";
import {LinePlot} from "./plot.mjs";
import {csvText} from "./save.mjs";
import {SectionLine, cellsAlong, distanceUnit, sectionFacts} from "./section.mjs";
import {sectionPoints, sectionTable} from "./section.mjs";
import {SolidView} from "./view3d.mjs";
import {beyond, beyondText} from "./views.mjs";

// Where every point is a cell, they are counted; else the histogram of all tells about it.
export function countBeyond(scan, blocks, range) {
  if (scan.reduced || scan.kind === "cloud") return beyond(scan.view, range);
  const {mean} = blocks.grids[0];
  const room = (range.high - range.low) * 1e-6;
  const [low, high] = [range.low - room - blocks.origin, range.high + room - blocks.origin];
  let [below, above] = [0, 0];
  for (let i = 0; i < mean.length; ++i) {
    if (mean[i] < low) ++below;
    else if (mean[i] > high) ++above;
  }
  return {below, above, exact: true};
}

export class SurfaceView {
  // `colours`: palette, table, below, above. `onRange(range)` hears of a colour range that was
  // chosen, `onSeen()` of every other change that a link tells of.
  constructor(colours, onRange, onSeen) {
    this.onSeen = onSeen;
    this.cells = [];
    this.plot = new LinePlot(byId("section-plot"), {
      label: "Cross-section. Left and right move along the line.",
      onCursor: (index, byKey) => this.tellSection(index, byKey),
    });
    this.map = new HeightMap(byId("map"), [byId("map-axis-x"), byId("map-axis-y")], colours.table,
      (cell, byKey) => this.tellCell(cell, byKey), (context) => {
        this.areas.draw(context);
        this.line.draw(context);
        this.placeCellMark();
        const {stretchText} = this.map.view;
        if (byId("map-scale").textContent !== stretchText) byId("map-scale").textContent = stretchText;
        this.onSeen();
      });
    this.areas = new StepAreas(this.map, () => this.tellStep());
    this.line = new SectionLine(this.map, [byId("line-a"), byId("line-b")], () => this.cut());
    this.solid = new SolidView(byId("solid"), byId("solid-text"), colours);
    this.bar = new ColourBar(byId("bar-colours"), [byId("range-low"), byId("range-high")],
      colours.palette, (range, done) => {
        this.recolour(range, done);
        onRange(range);
      });
    this.listenToMap();
    this.listenToSolid();
  }

  // `full`: all heights that share the colours of `range`.
  show(scan, full, range) {
    this.scan = scan;
    this.blocks = new Blocks(scan);
    this.line.fit(scan);
    if (this.size !== `${scan.width} ${scan.length}`) this.areas.clear();
    this.size = `${scan.width} ${scan.length}`;
    this.map.show(scan, this.blocks, range);
    this.bar.show({range, full, unit: scan.unitZ, count: (extent) => this.countHeights(extent)});
    byId("bar-unit").textContent = scan.unitZ.axis("z");
    this.cut();
    this.tellStep();
    this.recolour(range, true);
  }

  countHeights(extent) {
    const {scan, blocks} = this;
    if (scan.reduced || scan.kind === "cloud") return spreadCounts(scan.view ?? {histogram: []}, extent);
    return countPoints(blocks.grids[0].mean, blocks.origin, extent);
  }

  // While a handle is dragged, only what is quick.
  recolour(range, done) {
    this.map.setRange(range);
    byId("beyond").textContent =
      this.scan.view ? beyondText(countBeyond(this.scan, this.blocks, range)) : "";
    if (done) this.solid.show(this.scan, this.blocks, range);
    else this.solid.setRange(range);
  }
  setRange(range) {
    this.bar.setRange(range);
    this.recolour(range, true);
  }

  tellCell({column, row}, byKey) {
    const pairs = this.scan.tell(column, row);
    showPairs(byId("map-readout"), pairs);
    if (byKey) speak(pairs);
  }
  tellStep() {
    showPairs(byId("step-facts"), this.scan ? stepPairs(this.scan, this.areas.corners) : []);
  }

  placeCellMark() {
    const {view, cell} = this.map;
    const {x, y} = view.placeOf(cell);
    const mark = byId("cell-mark");
    mark.style.width = `${Math.max(9, view.cellWidth * view.zoom + 2)}px`;
    mark.style.height = `${Math.max(9, view.cellHeight * view.zoom + 2)}px`;
    placeAt(mark, x, y, view.shown);
  }

  cut() {
    this.cells = cellsAlong(this.scan, ...this.line.ends);
    showPairs(byId("section-facts"), sectionFacts(this.scan, this.cells));
    this.plot.show(sectionPoints(this.scan, this.cells));
    this.onSeen();
  }
  sectionCsv() { return csvText(sectionTable(this.scan, this.cells)); }

  tellSection(index, byKey) {
    const cell = this.cells[index];
    if (!cell) return;
    const pairs = [["distance", distanceUnit(this.scan).text(cell.distance)],
      ...this.scan.tell(cell.column, cell.row)];
    showPairs(byId("section-readout"), pairs);
    if (byKey) {
      speak(pairs);
      this.map.setCell({column: cell.column, row: cell.row}, false);
    }
  }

  listenToMap() {
    const {map, line, areas} = this;
    const {canvas} = map;
    const mode = () => document.querySelector("[name=drag]:checked").value;
    let act = "";  // what the drag does
    let from = null;  // its first cell, until it has more
    canvas.addEventListener("pointermove", (event) => {
      if (event.buttons === 0) map.setCell(map.view.cellAt(pointIn(canvas, event)), false);
    });
    const zoomAt = (factor, {x, y}) => map.view.zoomBy(factor, x, y);
    onDrag(canvas, {
      start: (event) => {
        act = event.shiftKey || event.button === 1 ? "move" : mode();
        map.setCell(map.view.cellAt(pointIn(canvas, event)), false);
        from = map.cell;
      },
      move: (dx, dy, event) => {
        if (act === "move") {
          map.view.moveBy(dx, dy);
          return;
        }
        map.setCell(map.view.cellAt(pointIn(canvas, event)), false);
        if (from) {
          if (act === "step") areas.begin(from);
          else line.ends = [from, from];
          from = null;
        }
        if (act === "step") areas.grow(map.cell);
        else line.moveEnd(1, map.cell);
      },
      end: () => {
        if (!from && act === "step") areas.finish();
      },
      pinch: zoomAt,
    });
    onWheel(canvas, (factor, event) => zoomAt(factor, pointIn(canvas, event)));
    const zoomAtCell = (factor) => zoomAt(factor, map.view.placeOf(map.cell));
    onKeys(canvas, (key, by) => {
      const cell = map.view.step(map.cell, key, by);
      if (cell) map.setCell(cell, true);
      else if (key === "+" || key === "=") zoomAtCell(1.5);
      else if (key === "-") zoomAtCell(1 / 1.5);
      else if (key === "0") map.view.showWhole();
      else if (/^[ab]$/i.test(key)) line.moveEnd("ab".indexOf(key.toLowerCase()), map.cell);
      else if (key === "1" || key === "2") areas.mark(Number(key) - 1, map.cell);
      else return false;
      return true;
    });
    byId("map-in").addEventListener("click", () => zoomAtCell(1.5));
    byId("map-out").addEventListener("click", () => zoomAtCell(1 / 1.5));
    byId("map-whole").addEventListener("click", () => map.view.showWhole());
    for (const choice of document.querySelectorAll("[name=drag]")) {
      choice.addEventListener("change", () => canvas.classList.toggle("moves", mode() === "move"));
    }
  }

  listenToSolid() {
    const {solid} = this;
    if (!solid.gl) return;
    byId("solid-in").addEventListener("click", () => solid.zoomBy(1.25));
    byId("solid-out").addEventListener("click", () => solid.zoomBy(1 / 1.25));
    byId("solid-reset").addEventListener("click", () => solid.turnBack());
    byId("solid-stretch").addEventListener("change", (event) =>
      solid.stretch(Number(event.target.value)));
  }
}
