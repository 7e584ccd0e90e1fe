// SPDX-License-Identifier: MIT
// What all drawings have in common.

const colours = new Map();  // as the style sheet has them now

export function themeColour(name) {
  if (colours.size === 0) {
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => colours.clear(),
      {once: true});
  }
  if (!colours.has(name)) {
    colours.set(name, getComputedStyle(document.documentElement).getPropertyValue(name));
  }
  return colours.get(name);
}

// Gives the canvas the pixels of the screen; returns its context in CSS pixels, and its size.
export function fitCanvas(canvas) {
  const {clientWidth: width, clientHeight: height} = canvas;
  const ratio = window.devicePixelRatio || 1;
  const [across, down] = [width, height].map((size) => Math.max(1, Math.round(size * ratio)));
  if (canvas.width !== across || canvas.height !== down) [canvas.width, canvas.height] = [across, down];
  const context = canvas.getContext("2d");
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  return {context, width, height};
}

// Draws again, once a frame at most, when asked, when the size changes and when the colours do.
export function drawOnDemand(canvas, draw) {
  let waiting = false;
  const demand = () => {
    if (waiting) return;
    waiting = true;
    requestAnimationFrame(() => {
      waiting = false;
      if (canvas.clientWidth > 0) draw();
    });
  };
  new ResizeObserver(demand).observe(canvas);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", demand);
  return demand;
}

// Marks what was not measured: not a colour of the palette, and nothing that a surface looks like.
export function hatchPattern(context) {
  const look = ["--hatch", "--hatch-line"].map(themeColour).join();
  if (hatch?.look !== look) hatch = {look, tile: hatchTile()};
  return context.createPattern(hatch.tile, "repeat");
}
let hatch = null;  // as it was drawn last

function hatchTile() {
  const tile = document.createElement("canvas");
  tile.width = tile.height = 8;
  const part = tile.getContext("2d");
  part.fillStyle = themeColour("--hatch");
  part.fillRect(0, 0, 8, 8);
  part.strokeStyle = themeColour("--hatch-line");
  for (const shift of [-8, 0, 8]) {
    part.moveTo(shift - 1, 9);
    part.lineTo(shift + 9, -1);
  }
  part.stroke();
  return tile;
}

// Calls `move(dx, dy, event)` while the pointer that went down on `target` is dragged, and
// `pinch(factor, {x, y})` while two are: how much farther apart they are, and what is between them.
export function onDrag(target, {start = () => {}, move, end = () => {}, pinch}) {
  const pointers = new Map();  // those that are down, and where
  const apart = ([a, b]) => Math.hypot(a.x - b.x, a.y - b.y);
  let dragging = null;         // null while two are down, and until both are up
  target.addEventListener("pointerdown", (event) => {
    if (event.button > 1) return;
    if (event.button === 1) event.preventDefault();
    target.setPointerCapture(event.pointerId);
    if (pointers.size === 0) {
      dragging = event.pointerId;
      start(event);
    } else if (pinch) {
      dragging = null;
    }
    pointers.set(event.pointerId, pointIn(target, event));
  });
  target.addEventListener("pointermove", (event) => {
    const before = pointers.get(event.pointerId);
    if (!before) return;
    const places = [...pointers.values()];
    const now = pointIn(target, event);
    pointers.set(event.pointerId, now);
    if (dragging === event.pointerId) {
      move(now.x - before.x, now.y - before.y, event);
    } else if (dragging === null && pointers.size === 2) {
      const [a, b] = [...pointers.values()];
      pinch(apart([a, b]) / Math.max(1, apart(places)), {x: (a.x + b.x) / 2, y: (a.y + b.y) / 2});
    }
  });
  for (const type of ["pointerup", "pointercancel"]) {
    target.addEventListener(type, (event) => {
      if (pointers.delete(event.pointerId) && pointers.size === 0) end(event);
    });
  }
}

// Calls the handler for the key, if there is one that takes it.
export function onKeys(target, handle) {
  target.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    if (handle(event.key, event.shiftKey ? 10 : 1)) event.preventDefault();
  });
}

// Turns the wheel into factors around 1.
export function onWheel(target, zoom) {
  target.addEventListener("wheel", (event) => {
    event.preventDefault();
    zoom(Math.exp(-Math.sign(event.deltaY) * Math.min(Math.abs(event.deltaY), 100) / 400), event);
  }, {passive: false});
}

export function pointIn(target, event) {
  const box = target.getBoundingClientRect();
  return {x: event.clientX - box.left, y: event.clientY - box.top};
}

// Moves an element inside a stage of a size; out of sight where it would be outside.
export function placeAt(node, x, y, {width, height}) {
  node.hidden = !(x >= 0 && y >= 0 && x <= width && y <= height);
  node.style.left = `${x}px`;
  node.style.top = `${y}px`;
}
