// SPDX-License-Identifier: MIT
// Which part of a map is seen, and where its cells are. x points to the right and y up, whatever
// order the rows have.

// Pixels that a map is wide and high at least, stretched where it must be; on a small screen, a part
// of its width.
const SHORT = 160;
const SHORT_PART = 0.6;

// How much a side that would have so many pixels is stretched to have others, in two digits.
const stretchOf = (pixels, wanted) =>
  pixels > 0 && pixels < wanted ? Number((wanted / pixels).toPrecision(2)) : 1;

export class MapView {
  // `canvas` has a clientWidth and a clientHeight. `onChange()` hears that the view was moved.
  constructor(canvas, onChange) {
    this.canvas = canvas;
    this.onChange = onChange;
    this.measure();
  }

  // Asks for the canvas's size, once for each drawing: a browser may have to work it out anew.
  measure() {
    this.shown = {width: this.canvas.clientWidth, height: this.canvas.clientHeight};
  }

  // Shows all of a scan that has other cells than the one before, and tells whether it has.
  show(scan) {
    const before = this.scan;
    this.scan = scan;
    const steps = [scan.stepX, scan.stepY * scan.sideRatio].map(Math.abs);
    const sized = steps.every((step) => Number.isFinite(step) && step > 0);
    this.steps = sized ? steps : [1, 1];  // units of x, or cells
    this.mirrored = scan.stepX < 0;
    this.upwards = !(scan.stepY < 0);
    const same = before && before.width === scan.width && before.length === scan.length &&
      before.stepX === scan.stepX && before.stepY === scan.stepY;
    if (!same) this.fitted = true;
    this.measure();
    this.stretch();
    return !same;
  }

  // A side that would be too narrow to be of use is drawn longer than it is.
  stretch() {
    const [width, height] = [this.scan.width * this.steps[0], this.scan.length * this.steps[1]];
    const zoom = Math.min(this.shown.width / width, this.shown.height / height);
    const short = Math.min(SHORT, SHORT_PART * this.shown.width);
    this.stretchX = stretchOf(width * zoom, short);
    this.stretchY = stretchOf(height * zoom, short);
    this.cellWidth = this.steps[0] * this.stretchX;
    this.cellHeight = this.steps[1] * this.stretchY;
    this.stretchedFor = `${this.shown.width} ${this.shown.height}`;
  }
  get stretchText() {
    const axis = this.stretchX > 1 ? "x" : "y";
    const factor = Math.max(this.stretchX, this.stretchY);
    return factor > 1 ? `Not to scale: ${axis} is stretched ${factor} times.` : "";
  }

  // From the place of a column or row in the picture to its number, and back.
  flipColumn(column) { return this.mirrored ? this.scan.width - 1 - column : column; }
  flipRow(row) { return this.upwards ? this.scan.length - 1 - row : row; }

  // As drawn, in units of x or cells.
  get size() {
    return {width: this.scan.width * this.cellWidth, height: this.scan.length * this.cellHeight};
  }

  wholeZoom() {
    return Math.min(this.shown.width / this.size.width, this.shown.height / this.size.height);
  }

  // The view: `zoom` pixels for each unit, and the place in the picture that is in the middle.
  zoomBy(factor, x, y) {
    const whole = this.wholeZoom();
    const most = Math.max(whole, 64 / Math.min(this.cellWidth, this.cellHeight));
    const zoom = Math.min(Math.max(this.zoom * factor, whole), most);
    const [dx, dy] = [x - this.shown.width / 2, y - this.shown.height / 2];
    this.centreX += dx / this.zoom - dx / zoom;
    this.centreY += dy / this.zoom - dy / zoom;
    this.zoom = zoom;
    this.fitted = zoom <= whole;
    this.onChange();
  }
  moveBy(dx, dy) {
    this.centreX -= dx / this.zoom;
    this.centreY -= dy / this.zoom;
    this.onChange();
  }
  showWhole() {
    this.fitted = true;
    this.onChange();
  }

  // What a link tells of it: how many times larger than the whole, and the parts of the picture to
  // the left of and above its middle. Null for the whole.
  get seen() {
    if (this.fitted || !this.zoom) return null;
    return [this.zoom / this.wholeZoom(), this.centreX / this.size.width,
      this.centreY / this.size.height];
  }
  see(seen) {
    this.fitted = seen === null;
    if (seen) {
      this.zoom = seen[0] * this.wholeZoom();
      this.centreX = seen[1] * this.size.width;
      this.centreY = seen[2] * this.size.height;
    }
    this.onChange();
  }

  keepInside() {
    this.measure();
    if (this.stretchedFor !== `${this.shown.width} ${this.shown.height}`) this.stretch();
    const {width, height} = this.size;
    const whole = this.wholeZoom();
    if (this.fitted || this.zoom < whole) this.zoom = whole;
    const keep = (centre, side, shown) => side <= shown ? side / 2
      : Math.min(Math.max(centre, shown / 2), side - shown / 2);
    this.centreX = keep(this.centreX ?? width / 2, width, this.shown.width / this.zoom);
    this.centreY = keep(this.centreY ?? height / 2, height, this.shown.height / this.zoom);
  }

  toScreenX(x) { return (x - this.centreX) * this.zoom + this.shown.width / 2; }
  toScreenY(y) { return (y - this.centreY) * this.zoom + this.shown.height / 2; }
  fromScreenX(x) { return (x - this.shown.width / 2) / this.zoom + this.centreX; }
  fromScreenY(y) { return (y - this.shown.height / 2) / this.zoom + this.centreY; }

  // The whole picture on the canvas.
  get box() {
    const {width, height} = this.size;
    return {left: this.toScreenX(0), top: this.toScreenY(0), right: this.toScreenX(width),
      bottom: this.toScreenY(height)};
  }

  // x or y, as the file tells them, at a place on the canvas; a cell is where its middle is.
  xAt(screen) {
    const place = this.fromScreenX(screen) / this.cellWidth - 0.5;
    return this.scan.xOf(this.flipColumn(place));
  }
  yAt(screen) {
    const place = this.fromScreenY(screen) / this.cellHeight - 0.5;
    return this.scan.yOf(this.flipRow(place));
  }

  // The middle of a cell on the canvas, and the cell nearest to a place on it.
  placeOf({column, row}) {
    return {
      x: this.toScreenX((this.flipColumn(column) + 0.5) * this.cellWidth),
      y: this.toScreenY((this.flipRow(row) + 0.5) * this.cellHeight),
    };
  }
  cellAt({x, y}) {
    const inside = (value, count) => Math.min(Math.max(Math.floor(value), 0), count - 1);
    return {
      column: this.flipColumn(inside(this.fromScreenX(x) / this.cellWidth, this.scan.width)),
      row: this.flipRow(inside(this.fromScreenY(y) / this.cellHeight, this.scan.length)),
    };
  }

  // The cell that a key leads to from another; null for other keys.
  step({column, row}, key, by) {
    const {width, length} = this.scan;
    const [x, y] = [this.flipColumn(column), this.flipRow(row)];
    const place = {
      ArrowLeft: [x - by, y], ArrowRight: [x + by, y], ArrowUp: [x, y - by], ArrowDown: [x, y + by],
      Home: [0, y], End: [width - 1, y], PageUp: [x, 0], PageDown: [x, length - 1],
    }[key];
    if (!place) return null;
    const inside = (value, count) => Math.min(Math.max(value, 0), count - 1);
    return {
      column: this.flipColumn(inside(place[0], width)), row: this.flipRow(inside(place[1], length)),
    };
  }

  // Moves the map as little as shows the cell.
  reveal(cell) {
    const place = this.placeOf(cell);
    const outside = (value, shown) => Math.min(value - 12, 0) + Math.max(value + 12 - shown, 0);
    this.moveBy(-outside(place.x, this.shown.width),
      -outside(place.y, this.shown.height));
    this.keepInside();
  }
}
