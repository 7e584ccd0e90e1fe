// SPDX-License-Identifier: MIT
// A line plot of heights over x, with a cursor that jumps from point to point.

const MARGIN = {left: 58, right: 12, top: 10, bottom: 38};

class LinePlot {
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
    this.points = {x: [], z: []};
    this.index = 0;
    this.demand = drawOnDemand(this.canvas, () => this.draw());
    this.listen();
  }

  listen() {
    this.canvas.addEventListener("pointermove", (event) => {
      if (event.buttons === 0) this.setIndex(this.nearest(pointIn(this.canvas, event).x), false);
    });
    onDrag(this.canvas, {
      start: (event) => this.setIndex(this.nearest(pointIn(this.canvas, event).x), false),
      move: (dx) => this.moveBy(-dx / this.scaleX),
    });
    onWheel(this.canvas, (factor, event) =>
      this.zoomBy(factor, this.toX(pointIn(this.canvas, event).x)));
    onKeys(this.canvas, (key, by) => {
      if (key === "+" || key === "=") this.zoomBy(1.5, this.points.x[this.index]);
      else if (key === "-") this.zoomBy(1 / 1.5, this.points.x[this.index]);
      else if (key === "0") this.showAll();
      else return this.moveCursor(key, by);
      return true;
    });
  }

  // x and z in mm, from left to right; NaN in z is a gap.
  show(points, keepView = false) {
    this.points = points;
    let [low, high] = [Infinity, -Infinity];
    for (const x of points.x) {
      if (x < low) low = x;
      if (x > high) high = x;
    }
    this.all = low < high ? {low, high} : {low: (low || 0) - 0.5, high: (low || 0) + 0.5};
    if (!Number.isFinite(this.all.low)) this.all = {low: 0, high: 1};
    if (!keepView || !this.view) this.view = {...this.all};
    this.index = Math.min(this.index, Math.max(0, points.x.length - 1));
    this.demand();
    this.onCursor(this.index, false);
  }

  showAll() {
    this.view = {...this.all};
    this.demand();
  }
  zoomBy(factor, x) {
    const whole = this.all.high - this.all.low;
    const width = Math.min((this.view.high - this.view.low) / factor, whole);
    if (width < whole * 1e-5 || Number.isNaN(x)) return;
    const part = (x - this.view.low) / (this.view.high - this.view.low);
    this.view = {low: x - width * part, high: x + width * (1 - part)};
    this.moveBy(0);
  }
  moveBy(dx) {
    const width = this.view.high - this.view.low;
    const low = Math.max(this.all.low, Math.min(this.view.low + dx, this.all.high - width));
    this.view = {low, high: low + width};
    this.demand();
  }

  // The point that a key leads to from another; -1 for other keys.
  step(index, key, by) {
    const last = this.points.x.length - 1;
    if (key === "ArrowLeft") return Math.max(0, index - by);
    if (key === "ArrowRight") return Math.min(last, index + by);
    if (key === "Home") return 0;
    if (key === "End") return last;
    return -1;
  }
  moveCursor(key, by) {
    const index = this.step(this.index, key, by);
    if (index < 0) return false;
    this.setIndex(index, true);
    return true;
  }
  setIndex(index, byKey) {
    if (index < 0) return;
    this.index = index;
    const x = this.points.x[index];
    if (byKey && x < this.view.low) this.moveBy(x - this.view.low);
    if (byKey && x > this.view.high) this.moveBy(x - this.view.high);
    this.placeCursor();
    this.onCursor(index, byKey);
  }

  get scaleX() {
    const width = this.canvas.clientWidth - MARGIN.left - MARGIN.right;
    return width / (this.view.high - this.view.low);
  }
  get scaleZ() {
    const height = this.canvas.clientHeight - MARGIN.top - MARGIN.bottom;
    return height / (this.high - this.low);
  }
  toScreenX(x) { return MARGIN.left + (x - this.view.low) * this.scaleX; }
  toScreenZ(z) { return MARGIN.top + (this.high - z) * this.scaleZ; }
  toX(screen) { return this.view.low + (screen - MARGIN.left) / this.scaleX; }

  nearest(screen) {
    const x = this.toX(screen);
    let [best, least] = [-1, Infinity];
    this.points.x.forEach((value, i) => {
      const distance = Math.abs(value - x);
      if (distance < least) [best, least] = [i, distance];
    });
    return best;
  }

  fitHeights() {
    let [low, high] = [Infinity, -Infinity];
    this.points.z.forEach((z, i) => {
      const x = this.points.x[i];
      if (Number.isNaN(z) || x < this.view.low || x > this.view.high) return;
      if (z < low) low = z;
      if (z > high) high = z;
    });
    if (low > high) [low, high] = [0, 1];
    const room = high > low ? (high - low) * 0.06 : Math.max(Math.abs(low) * 1e-3, 0.01);
    this.low = low - room;
    this.high = high + room;
  }

  draw() {
    const {context, width, height} = fitCanvas(this.canvas);
    context.clearRect(0, 0, width, height);
    this.fitHeights();
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
    const across = ticksOf(this.view.low, this.view.high, Math.max(2, width / 90));
    context.textAlign = "center";
    for (const tick of across.ticks) {
      const x = Math.round(this.toScreenX(tick)) + 0.5;
      context.moveTo(x, MARGIN.top);
      context.lineTo(x, bottom);
      context.fillText(number(tick, across.decimals), x, bottom + 15);
    }
    const up = ticksOf(this.low, this.high, Math.max(2, height / 45));
    context.textAlign = "right";
    for (const tick of up.ticks) {
      const y = Math.round(this.toScreenZ(tick)) + 0.5;
      context.moveTo(MARGIN.left, y);
      context.lineTo(width - MARGIN.right, y);
      context.fillText(number(tick, up.decimals), MARGIN.left - 6, y + 4);
    }
    context.stroke();
    context.fillText(`${this.xName} in mm`, width - MARGIN.right, height - 6);
    context.textAlign = "left";
    context.fillText("z in mm", 4, height - 6);
  }

  drawLine(context) {
    const {x, z} = this.points;
    context.strokeStyle = context.fillStyle = themeColour("--accent");
    context.lineWidth = 1.5;
    context.lineJoin = "round";
    context.beginPath();
    const known = (i) => i >= 0 && i < z.length && !Number.isNaN(z[i]) && !Number.isNaN(x[i]);
    for (let i = 0; i < z.length; ++i) {
      if (!known(i)) continue;
      const [px, py] = [this.toScreenX(x[i]), this.toScreenZ(z[i])];
      if (known(i - 1)) context.lineTo(px, py);
      else context.moveTo(px, py);
      if (!known(i - 1) && !known(i + 1)) context.fillRect(px - 1, py - 1, 2, 2);
    }
    context.stroke();
  }

  placeCursor() {
    if (this.low === undefined || this.points.x.length === 0) return;
    const x = this.toScreenX(this.points.x[this.index]);
    const z = this.points.z[this.index];
    placeAt(this.line, x, 0, this.canvas);
    this.line.hidden ||= x < MARGIN.left - 1;
    this.line.style.height = `${this.canvas.clientHeight - MARGIN.bottom}px`;
    this.line.style.setProperty("--dot", Number.isNaN(z) ? "-99px" : `${this.toScreenZ(z)}px`);
  }
}
