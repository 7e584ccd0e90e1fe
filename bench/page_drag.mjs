#!/usr/bin/env node
// SPDX-License-Identifier: MIT
// How long a page of a million points works for each step of a drag, in Chromium without a window:
// what its JavaScript does until the next picture, without the browser's own drawing.
//
// bench/page_drag.mjs [trelvane-inspect]: prints rows for docs/performance.md.
import {execFileSync} from "node:child_process";
import {writeFileSync} from "node:fs";
import {startBrowser} from "../tests/page/chromium.mjs";

const SIDE = 1000;
const STEPS = 60;
const program = process.argv[2] ?? `${import.meta.dirname}/../build/release/trelvane-inspect`;

// Waves with some noise, 1 µm for each raw height.
function surface() {
  const file = Buffer.alloc(512 + 2 * SIDE * SIDE);
  file.write("DIGITAL SURF", 0);
  [0, 1, 1, 2].forEach((value, i) => file.writeInt16LE(value, 12 + 2 * i));
  file.writeInt16LE(16, 98);
  [-1000, 1000, SIDE, SIDE, SIDE * SIDE].forEach((value, i) => file.writeInt32LE(value, 100 + 4 * i));
  [0.01, 0.01, 0.001].forEach((value, i) => file.writeFloatLE(value, 120 + 4 * i));
  for (let i = 0; i < 6; ++i) file.write("mm", 180 + 16 * i);
  for (let i = 0; i < SIDE * SIDE; ++i) {
    const [x, y] = [i % SIDE, Math.floor(i / SIDE)];
    const z = 600 * Math.sin(x / 90) + 300 * Math.sin(y / 100) + i * 7919 % 31;
    file.writeInt16LE(Math.round(z), 512 + 2 * i);
  }
  return file;
}

// Runs in the page.
async function drags(steps) {
  const whenDrawn = window.requestAnimationFrame.bind(window);
  let work = 0;
  const timed = (act) => {
    const start = performance.now();
    act();
    work += performance.now() - start;
  };
  window.requestAnimationFrame = (act) => whenDrawn((now) => timed(() => act(now)));
  const frame = () => new Promise((done) => whenDrawn(done));
  document.querySelector("[value=move]").click();
  document.querySelector("#map-in").click();
  const told = [];
  for (const [what, selector, dx, dy] of [["the map", "#map", 3, 1], ["an end of the section", "#line-a", 3, 1],
    ["an end of the colours", "#range-high", 0, 1], ["the 3-D view", "#solid", 3, 1]]) {
    const node = document.querySelector(selector);
    node.setPointerCapture = () => {};  // there is no real pointer
    const {left, top, width, height} = node.getBoundingClientRect();
    const send = (type, i) => node.dispatchEvent(new PointerEvent(`pointer${type}`, {buttons: 1,
      clientX: left + width / 2 + dx * i, clientY: top + height / 2 + dy * i}));
    const times = [];
    send("down", 0);
    await frame();
    for (let i = 1; i <= steps; ++i) {
      work = 0;
      timed(() => send("move", i));
      await frame();
      times.push(work);
    }
    send("up", steps);
    await new Promise((done) => setTimeout(done, 500));  // what follows is not part of a drag
    times.sort((a, b) => a - b);
    told.push([what, ...[times.length >> 1, times.length - 1].map((i) => times[i].toFixed(1))]);
  }
  return told;
}

const {folder, send, open, close} = startBrowser();
writeFileSync(`${folder}/million.sur`, surface());
execFileSync(program, ["--html", `${folder}/million.html`, `${folder}/million.sur`]);
const sessionId = await open(`file://${folder}/million.html`);
const {result, exceptionDetails} = await send("Runtime.evaluate", {awaitPromise: true, returnByValue: true,
  expression: `(${drags})(${STEPS})`}, sessionId);
if (exceptionDetails) console.error(exceptionDetails.exception.description);
for (const [what, median, most] of result.value ?? []) {
  console.log(`| drag ${what}, 1000 x 1000 points | page | ${median} | at most ${most} |`);
}
close();
