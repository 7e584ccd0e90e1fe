// SPDX-License-Identifier: MIT
// Which part of a map is seen, and where its cells are. x points to the right and y up, whatever
// order the rows have.

export class MapView {
  // `canvas` has a clientWidth and a clientHeight. `onChange()` hears that the view was moved.
  constructor(canvas, onChange) {
    this.canvas = canvas;
    this.onChange = onChange;
  }

  // Shows all of a scan that has other cells than the one before, and tells whether it has.
  show(scan) {
    const before = this.scan;
    this.scan = scan;
    const sized = [scan.stepX, scan.stepY].every((step) => Number.isFinite(step) && step !== 0);
    this.cellWidth = sized ? Math.abs(scan.stepX) : 1;   // as drawn, mm or cells
    this.cellHeight = sized ? Math.abs(scan.stepY) : 1;
    this.mirrored = scan.stepX < 0;
    this.upwards = !(scan.stepY < 0);
    const same = before && before.width === scan.width && before.length === scan.length &&
      before.stepX === scan.stepX && before.stepY === scan.stepY;
    if (!same) this.fitted = true;
    return !same;
  }

  // From the place of a column or row in the picture to its number, and back.
  flipColumn(column) { return this.mirrored ? this.scan.width - 1 - column : column; }
  flipRow(row) { return this.upwards ? this.scan.length - 1 - row : row; }

  get size() {
    return {width: this.scan.width * this.cellWidth, height: this.scan.length * this.cellHeight};
  }

  wholeZoom() {
    const {clientWidth, clientHeight} = this.canvas;
    return Math.min(clientWidth / this.size.width, clientHeight / this.size.height);
  }

  // The view: `zoom` pixels for each mm, and the place in the picture that is in the middle.
  zoomBy(factor, x, y) {
    const whole = this.wholeZoom();
    const most = Math.max(whole, 64 / Math.min(this.cellWidth, this.cellHeight));
    const zoom = Math.min(Math.max(this.zoom * factor, whole), most);
    const [dx, dy] = [x - this.canvas.clientWidth / 2, y - this.canvas.clientHeight / 2];
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

  keepInside() {
    const {width, height} = this.size;
    const {clientWidth, clientHeight} = this.canvas;
    const whole = this.wholeZoom();
    if (this.fitted || this.zoom < whole) this.zoom = whole;
    const keep = (centre, side, shown) => side <= shown ? side / 2
      : Math.min(Math.max(centre, shown / 2), side - shown / 2);
    this.centreX = keep(this.centreX ?? width / 2, width, clientWidth / this.zoom);
    this.centreY = keep(this.centreY ?? height / 2, height, clientHeight / this.zoom);
  }

  toScreenX(x) { return (x - this.centreX) * this.zoom + this.canvas.clientWidth / 2; }
  toScreenY(y) { return (y - this.centreY) * this.zoom + this.canvas.clientHeight / 2; }

  // Where a part of the picture, given in cells, is on the canvas, in whole pixels.
  boxOf({x, y, width, height}) {
    return {
      left: Math.round(this.toScreenX(x * this.cellWidth)),
      top: Math.round(this.toScreenY(y * this.cellHeight)),
      right: Math.round(this.toScreenX((x + width) * this.cellWidth)),
      bottom: Math.round(this.toScreenY((y + height) * this.cellHeight)),
    };
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
    const across = (x - this.canvas.clientWidth / 2) / this.zoom + this.centreX;
    const down = (y - this.canvas.clientHeight / 2) / this.zoom + this.centreY;
    return {
      column: this.flipColumn(inside(across / this.cellWidth, this.scan.width)),
      row: this.flipRow(inside(down / this.cellHeight, this.scan.length)),
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
    this.moveBy(-outside(place.x, this.canvas.clientWidth),
      -outside(place.y, this.canvas.clientHeight));
    this.keepInside();
  }
}
