// SPDX-License-Identifier: MIT
// The height map: what is drawn where. x points to the right and y up, whatever order the rows have.

const TILE = 2048;  // cells of a part of the image: no browser takes images of any size

class HeightMap {
  // `onCell(cell, byKey)` hears of the cell with the readout; `onView()` of every drawing.
  constructor(stage, onCell, onView) {
    this.stage = stage;
    this.canvas = stage.querySelector("canvas");
    this.onCell = onCell;
    this.onView = onView;
    this.cell = {column: 0, row: 0};
    this.demand = drawOnDemand(this.canvas, () => this.draw());
  }

  show(scan, range) {
    const before = this.scan;
    this.scan = scan;
    const sized = [scan.stepX, scan.stepY].every((step) => Number.isFinite(step) && step !== 0);
    this.cellWidth = sized ? Math.abs(scan.stepX) : 1;   // as drawn, mm or cells
    this.cellHeight = sized ? Math.abs(scan.stepY) : 1;
    this.mirrored = scan.stepX < 0;
    this.upwards = !(scan.stepY < 0);
    this.tiles = this.makeTiles(range);
    this.canvas.style.setProperty("--shape", this.size.width / this.size.height);
    const same = before && before.width === scan.width && before.length === scan.length &&
      before.stepX === scan.stepX && before.stepY === scan.stepY;
    if (!same) {
      this.fitted = true;
      this.cell = {column: scan.width >> 1, row: scan.length >> 1};
    }
    this.demand();
    this.onCell(this.cell, false);
  }

  makeTiles(range) {
    const {width, length} = this.scan;
    const tiles = [];
    for (let y = 0; y < length; y += TILE) {
      for (let x = 0; x < width; x += TILE) {
        tiles.push(this.makeTile(x, y, Math.min(TILE, width - x), Math.min(TILE, length - y), range));
      }
    }
    return tiles;
  }

  makeTile(x, y, width, height, range) {
    const canvas = document.createElement("canvas");
    canvas.width = width;
    canvas.height = height;
    const context = canvas.getContext("2d");
    const image = context.createImageData(width, height);
    for (let j = 0, i = 0; j < height; ++j) {
      const row = this.flipRow(y + j);
      for (let k = 0; k < width; ++k, i += 4) {
        const z = this.scan.z(row * this.scan.width + this.flipColumn(x + k));
        if (Number.isNaN(z)) continue;  // transparent
        const colour = 3 * colourIndex(z, range);
        image.data[i] = palette[colour];
        image.data[i + 1] = palette[colour + 1];
        image.data[i + 2] = palette[colour + 2];
        image.data[i + 3] = 255;
      }
    }
    context.putImageData(image, 0, 0);
    return {canvas, x, y, width, height};
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
  zoomBy(factor, x = this.canvas.clientWidth / 2, y = this.canvas.clientHeight / 2) {
    const whole = this.wholeZoom();
    const most = Math.max(whole, 64 / Math.min(this.cellWidth, this.cellHeight));
    const zoom = Math.min(Math.max(this.zoom * factor, whole), most);
    const [dx, dy] = [x - this.canvas.clientWidth / 2, y - this.canvas.clientHeight / 2];
    this.centreX += dx / this.zoom - dx / zoom;
    this.centreY += dy / this.zoom - dy / zoom;
    this.zoom = zoom;
    this.fitted = zoom <= whole;
    this.demand();
  }
  moveBy(dx, dy) {
    this.centreX -= dx / this.zoom;
    this.centreY -= dy / this.zoom;
    this.demand();
  }
  showWhole() {
    this.fitted = true;
    this.demand();
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
    let [x, y] = [this.flipColumn(column), this.flipRow(row)];
    if (key === "ArrowLeft") x -= by;
    else if (key === "ArrowRight") x += by;
    else if (key === "ArrowUp") y -= by;
    else if (key === "ArrowDown") y += by;
    else if (key === "Home") x = 0;
    else if (key === "End") x = width - 1;
    else if (key === "PageUp") y = 0;
    else if (key === "PageDown") y = length - 1;
    else return null;
    x = Math.min(Math.max(x, 0), width - 1);
    y = Math.min(Math.max(y, 0), length - 1);
    return {column: this.flipColumn(x), row: this.flipRow(y)};
  }

  setCell(cell, byKey) {
    this.cell = cell;
    if (byKey) this.reveal(cell);
    this.onCell(cell, byKey);
    this.demand();
  }

  // Moves the map as little as shows the cell.
  reveal(cell) {
    const place = this.placeOf(cell);
    const outside = (value, shown) => Math.min(value - 12, 0) + Math.max(value + 12 - shown, 0);
    this.moveBy(-outside(place.x, this.canvas.clientWidth),
      -outside(place.y, this.canvas.clientHeight));
    this.keepInside();
  }

  draw() {
    const {context, width, height} = fitCanvas(this.canvas);
    context.clearRect(0, 0, width, height);
    if (!this.scan || this.scan.width === 0 || this.scan.length === 0) return;
    this.keepInside();
    const edge = (cells, cell, toScreen) => Math.round(toScreen.call(this, cells * cell));
    const left = edge(0, this.cellWidth, this.toScreenX);
    const top = edge(0, this.cellHeight, this.toScreenY);
    const right = edge(this.scan.width, this.cellWidth, this.toScreenX);
    const bottom = edge(this.scan.length, this.cellHeight, this.toScreenY);
    context.fillStyle = hatchPattern(context);
    context.fillRect(left, top, right - left, bottom - top);
    context.imageSmoothingEnabled = Math.min(this.cellWidth, this.cellHeight) * this.zoom < 1;
    for (const tile of this.tiles) {
      const x = edge(tile.x, this.cellWidth, this.toScreenX);
      const y = edge(tile.y, this.cellHeight, this.toScreenY);
      const endX = edge(tile.x + tile.width, this.cellWidth, this.toScreenX);
      const endY = edge(tile.y + tile.height, this.cellHeight, this.toScreenY);
      context.drawImage(tile.canvas, x, y, Math.max(1, endX - x), Math.max(1, endY - y));
    }
    this.onView(context);
  }
}
