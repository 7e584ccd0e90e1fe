// SPDX-License-Identifier: MIT
// A line plot of heights over x, with a cursor that jumps from point to point.
import {drawOnDemand, fitCanvas, onDrag, onKeys, onWheel, placeAt, pointIn, themeColour} from "./drawing.mjs";
import {element} from "./elements.mjs";
import {PlotView} from "./plotview.mjs";
import {labelsThatFit} from "./text.mjs";

export class LinePlot {
  // `onCursor(index, byKey)` hears of the point with the readout; `onView()` of every drawing.
  constructor(stage, {label, onCursor, onView = () => {}}) {
    this.stage = stage;
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
    const zoomAt = (factor, {x}) => this.view.zoomBy(factor, this.view.toX(x));
    onDrag(this.canvas, {
      pinch: zoomAt,
      start: (event) => this.setIndex(this.view.nearest(pointIn(this.canvas, event).x), false),
      move: (dx) => this.view.moveBy(-dx / this.view.scaleX),
    });
    onWheel(this.canvas, (factor, event) => zoomAt(factor, pointIn(this.canvas, event)));
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
    const {left, right, top, bottom} = this.view.margin;
    context.save();
    context.beginPath();
    context.rect(left, top, width - left - right, height - top - bottom);
    context.clip();
    if (this.view.points.lowest) this.drawBand(context);
    this.drawLine(context);
    context.restore();
    this.placeCursor();
    this.onView(context);
  }

  drawAxes(context, width, height) {
    const {view} = this;
    const {margin} = view;
    const bottom = height - margin.bottom;
    context.font = "12px system-ui, sans-serif";
    context.strokeStyle = themeColour("--rule");
    context.fillStyle = themeColour("--faint");
    context.lineWidth = 1;
    const wide = (text) => context.measureText(text).width;
    const up = labelsThatFit(view.low, view.high, bottom - margin.top, () => 20);
    margin.left = Math.max(40, 14 + Math.max(0, ...up.map(([, text]) => wide(text))));
    context.beginPath();
    context.textAlign = "right";
    for (const [tick, text] of up) {
      const y = Math.round(view.toScreenZ(tick)) + 0.5;
      context.moveTo(margin.left, y);
      context.lineTo(width - margin.right, y);
      context.fillText(text, margin.left - 6, y + 4);
    }
    const across = width - margin.left - margin.right;
    for (const [tick, text] of labelsThatFit(view.seen.low, view.seen.high, across,
      (label) => wide(label) + 24)) {
      const x = Math.round(view.toScreenX(tick)) + 0.5;
      const half = wide(text) / 2;
      context.moveTo(x, margin.top);
      context.lineTo(x, bottom);
      context.textAlign = "center";
      context.fillText(text, Math.min(x, width - half - 1), bottom + 15);
    }
    context.stroke();
    const {xTitle = "", zTitle = ""} = view.points;
    context.textAlign = "right";
    context.fillText(xTitle, width - margin.right, height - 6);
    context.textAlign = "left";
    context.fillText(zTitle, 4, height - 6);
  }

  // From the lowest to the highest of what points stand for.
  drawBand(context) {
    const {view} = this;
    const {x, lowest, highest} = view.points;
    context.fillStyle = themeColour("--band");
    for (const run of view.runs()) {
      const kept = view.outline(run);
      context.beginPath();
      for (const i of kept) context.lineTo(view.toScreenX(x[i]), view.toScreenZ(highest[i]) - 0.5);
      for (const i of kept.reverse()) {
        context.lineTo(view.toScreenX(x[i]), view.toScreenZ(lowest[i]) + 0.5);
      }
      context.fill();
    }
  }

  drawLine(context) {
    const {view} = this;
    const {x, z} = view.points;
    context.strokeStyle = context.fillStyle = themeColour("--accent");
    context.lineWidth = 1.5;
    context.lineJoin = "round";
    context.beginPath();
    for (const run of view.runs()) {
      view.outline(run).forEach((i, k) => {
        const [px, py] = [view.toScreenX(x[i]), view.toScreenZ(z[i])];
        if (k > 0) context.lineTo(px, py);
        else context.moveTo(px, py);
        if (run[0] === run[1]) context.fillRect(px - 1, py - 1, 2, 2);
      });
    }
    context.stroke();
  }

  placeCursor() {
    if (this.view.low === undefined || this.view.points.x.length === 0) return;
    const x = this.view.toScreenX(this.view.points.x[this.index]);
    const z = this.view.points.z[this.index];
    placeAt(this.line, x, 0, this.view.shown);
    this.line.hidden ||= x < this.view.margin.left - 1;
    this.line.style.height = `${this.view.shown.height - this.view.margin.bottom}px`;
    this.line.style.setProperty("--dot", Number.isNaN(z) ? "-99px" : `${this.view.toScreenZ(z)}px`);
  }
}
