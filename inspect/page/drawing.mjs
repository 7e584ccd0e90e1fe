// SPDX-License-Identifier: MIT
// What all drawings have in common.

export const themeColour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name);

// Gives the canvas the pixels of the screen; returns its context in CSS pixels, and its size.
export function fitCanvas(canvas) {
  const {clientWidth: width, clientHeight: height} = canvas;
  const ratio = window.devicePixelRatio || 1;
  canvas.width = Math.max(1, Math.round(width * ratio));
  canvas.height = Math.max(1, Math.round(height * ratio));
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
  return context.createPattern(tile, "repeat");
}

// Calls `move(dx, dy, event)` while the pointer that went down on `target` is dragged.
export function onDrag(target, {start = () => {}, move, end = () => {}}) {
  target.addEventListener("pointerdown", (event) => {
    if (event.button > 1) return;
    if (event.button === 1) event.preventDefault();
    target.setPointerCapture(event.pointerId);
    let [x, y] = [event.clientX, event.clientY];
    start(event);
    const drag = new AbortController();
    const listen = (type, act) => target.addEventListener(type, act, {signal: drag.signal});
    listen("pointermove", (next) => {
      move(next.clientX - x, next.clientY - y, next);
      [x, y] = [next.clientX, next.clientY];
    });
    for (const type of ["pointerup", "pointercancel"]) {
      listen(type, () => {
        drag.abort();
        end();
      });
    }
  });
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

// Moves an element inside its stage; out of sight where it would be outside.
export function placeAt(node, x, y, stage) {
  node.hidden = !(x >= 0 && y >= 0 && x <= stage.clientWidth && y <= stage.clientHeight);
  node.style.left = `${x}px`;
  node.style.top = `${y}px`;
}
