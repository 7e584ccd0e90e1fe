// SPDX-License-Identifier: MIT
// A line plot of heights over x, with a cursor that jumps from point to point.
import {drawOnDemand, fitCanvas, onDrag, onKeys, onWheel, placeAt, pointIn, themeColour} from "./drawing.mjs";
import {element} from "./elements.mjs";
import {MARGIN, PlotView} from "./plotview.mjs";
import {number, ticksOf} from "./text.mjs";

export class LinePlot {
  // `onCursor(index, byKey)` hears of the point with the readout; `onView()` of every drawing.
  constructor(stage, {label, xName, onCursor, onView = () => {}}) {
    this.stage = stage;
    this.xName = xName;
    this.onCursor = onCursor;
    this.onView = onView;
    this.canvas = element("canvas");
    this.canvas.tabIndex = 0;
    this.canvas.setAttribute("role", "application");
    this.canvas.setAttribute("aria-label", label);
    this.line = element("div", "cursor");
    stage.append(this.canvas, this.line);
    this.index = 0;
    this.demand = drawOnDemand(this.canvas, () => this.draw());
    this.view = new PlotView(this.canvas, this.demand);
    this.listen();
  }

  listen() {
    this.canvas.addEventListener("pointermove", (event) => {
      if (event.buttons === 0) this.setIndex(this.view.nearest(pointIn(this.canvas, event).x), false);
    });
    onDrag(this.canvas, {
      start: (event) => this.setIndex(this.view.nearest(pointIn(this.canvas, event).x), false),
      move: (dx) => this.view.moveBy(-dx / this.view.scaleX),
    });
    onWheel(this.canvas, (factor, event) =>
      this.view.zoomBy(factor, this.view.toX(pointIn(this.canvas, event).x)));
    onKeys(this.canvas, (key, by) => {
      if (key === "+" || key === "=") this.view.zoomBy(1.5, this.view.points.x[this.index]);
      else if (key === "-") this.view.zoomBy(1 / 1.5, this.view.points.x[this.index]);
      else if (key === "0") this.view.showAll();
      else {
        const index = this.view.step(this.index, key, by);
        if (index < 0) return false;
        this.setIndex(index, true);
      }
      return true;
    });
  }

  show(points, keepSeen = false) {
    this.view.show(points, keepSeen);
    this.index = Math.min(this.index, Math.max(0, points.x.length - 1));
    this.demand();
    this.onCursor(this.index, false);
  }

  setIndex(index, byKey) {
    if (index < 0) return;
    this.index = index;
    if (byKey) this.view.reveal(index);
    this.placeCursor();
    this.onCursor(index, byKey);
  }

  draw() {
    const {context, width, height} = fitCanvas(this.canvas);
    context.clearRect(0, 0, width, height);
    this.view.fitHeights();
    this.drawAxes(context, width, height);
    context.save();
    context.beginPath();
    context.rect(MARGIN.left, MARGIN.top, width - MARGIN.left - MARGIN.right,
      height - MARGIN.top - MARGIN.bottom);
    context.clip();
    this.drawLine(context);
    context.restore();
    this.placeCursor();
    this.onView(context);
  }

  drawAxes(context, width, height) {
    const bottom = height - MARGIN.bottom;
    context.font = "12px system-ui, sans-serif";
    context.strokeStyle = themeColour("--rule");
    context.fillStyle = themeColour("--faint");
    context.lineWidth = 1;
    context.beginPath();
    const across = ticksOf(this.view.seen.low, this.view.seen.high, Math.max(2, width / 90));
    context.textAlign = "center";
    for (const tick of across.ticks) {
      const x = Math.round(this.view.toScreenX(tick)) + 0.5;
      context.moveTo(x, MARGIN.top);
      context.lineTo(x, bottom);
      context.fillText(number(tick, across.decimals), x, bottom + 15);
    }
    const up = ticksOf(this.view.low, this.view.high, Math.max(2, height / 45));
    context.textAlign = "right";
    for (const tick of up.ticks) {
      const y = Math.round(this.view.toScreenZ(tick)) + 0.5;
      context.moveTo(MARGIN.left, y);
      context.lineTo(width - MARGIN.right, y);
      context.fillText(number(tick, up.decimals), MARGIN.left - 6, y + 4);
    }
    context.stroke();
    const [xUnit, , zUnit] = this.view.points.units ?? ["mm", "mm", "mm"];
    context.fillText(`${this.xName} in ${xUnit}`, width - MARGIN.right, height - 6);
    context.textAlign = "left";
    context.fillText(`z in ${zUnit}`, 4, height - 6);
  }

  drawLine(context) {
    const {x, z} = this.view.points;
    context.strokeStyle = context.fillStyle = themeColour("--accent");
    context.lineWidth = 1.5;
    context.lineJoin = "round";
    context.beginPath();
    for (const [first, last] of this.view.runs()) {
      for (let i = first; i <= last; ++i) {
        const [px, py] = [this.view.toScreenX(x[i]), this.view.toScreenZ(z[i])];
        if (i > first) context.lineTo(px, py);
        else context.moveTo(px, py);
        if (first === last) context.fillRect(px - 1, py - 1, 2, 2);
      }
    }
    context.stroke();
  }

  placeCursor() {
    if (this.view.low === undefined || this.view.points.x.length === 0) return;
    const x = this.view.toScreenX(this.view.points.x[this.index]);
    const z = this.view.points.z[this.index];
    placeAt(this.line, x, 0, this.canvas);
    this.line.hidden ||= x < MARGIN.left - 1;
    this.line.style.height = `${this.canvas.clientHeight - MARGIN.bottom}px`;
    this.line.style.setProperty("--dot", Number.isNaN(z) ? "-99px" : `${this.view.toScreenZ(z)}px`);
  }
}
