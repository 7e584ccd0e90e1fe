// SPDX-License-Identifier: MIT
// Opens pages of the examples from disk in Chromium, does what users do, and looks at the outcome.
import assert from "node:assert/strict";
import {execFileSync, spawn} from "node:child_process";
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from "node:fs";
import {tmpdir} from "node:os";
import test, {after} from "node:test";
import {setTimeout} from "node:timers/promises";
import {fileURLToPath} from "node:url";

const folder = mkdtempSync(`${tmpdir()}/pages-`);
const examples = fileURLToPath(new URL("../../examples/", import.meta.url));
const browsers = [];
after(async () => {
  const ended = (browser) => new Promise((done) => browser.once("exit", done).kill());
  await Promise.all(browsers.map(ended));
  rmSync(folder, {recursive: true, maxRetries: 9, retryDelay: 100});
});

// Starts Chromium; returns what sends it a command, and what it told on its own.
function startBrowser(...options) {
  if (process.getuid() === 0) options.push("--no-sandbox");
  const browser = spawn("chromium", ["--headless", "--remote-debugging-pipe", "--disable-gpu",
    "--disable-background-networking", "--window-size=1200,1000",
    `--user-data-dir=${folder}/${browsers.length}`, ...options],
  {stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"]});
  browsers.push(browser);
  const [asked, events] = [[], []];
  let rest = "";
  browser.stdio[4].setEncoding("utf8").on("data", (text) => {
    const messages = (rest + text).split("\0");
    rest = messages.pop();
    for (const {id, result, error, method, params} of messages.map(JSON.parse)) {
      if (id !== undefined) asked[id](result ?? error);
      else events.push({method, ...params});
    }
  });
  const send = (method, params, sessionId) => new Promise((done) => {
    browser.stdio[3].write(`${JSON.stringify({id: asked.push(done) - 1, method, params, sessionId})}\0`);
  });
  return {send, events};
}

// Runs in the page: after each [act, selector, ...], tells of what each step wants to see.
async function tour(steps) {
  const find = (selector) => document.querySelector(selector);
  const drawn = () => new Promise((done) => requestAnimationFrame(done));
  const pointer = (node, type, x, y, more) => {
    const {left, top} = node.getBoundingClientRect();
    node.dispatchEvent(new (type === "wheel" ? WheelEvent : PointerEvent)(type,
      {clientX: left + x, clientY: top + y, cancelable: true, ...more}));
  };
  const acts = {
    keys: (node, keys, shiftKey) => keys.forEach((key) =>
      node.dispatchEvent(new KeyboardEvent("keydown", {key, shiftKey, cancelable: true}))),
    pointer,
    drag: (node, [x, y], [toX, toY], more) => {
      pointer(node, "pointerdown", x, y, more);
      pointer(node, "pointermove", toX, toY, {buttons: 1});
      pointer(node, "pointerup", toX, toY);
      pointer(node, "pointermove", 5, 5, {buttons: 1});
    },
    click: (node) => node.click(),
    set: (node, value) => {
      node.value = value;
      for (const type of ["input", "change"]) node.dispatchEvent(new Event(type));
    },
  };
  const tell = {
    text: (node) => node.checkVisibility() ? node.innerText.replace(/\s+/g, " ").trim() : "hidden",
    at: ({hidden, style: {left, top, width}}) =>
      hidden ? "hidden" : [left, top,
        width].map((one) => Math.round(parseFloat(one) || 0)).join(" "),
    // The number of the first picture that looks like this one.
    drawn: (node) => {
      const picture = node.toDataURL();
      if (!pictures.includes(picture)) pictures.push(picture);
      return `${pictures.indexOf(picture)}`;
    },
    pixel: (node, x, y) => {
      const copy = document.createElement("canvas").getContext("2d");
      copy.drawImage(node, -x, -y);
      return [...copy.getImageData(0, 0, 1, 1).data].slice(0, 3).join(" ");
    },
    count: (node, children) => `${node.querySelectorAll(children).length}`,
  };
  Element.prototype.setPointerCapture = () => {};  // there is no real pointer
  const style = document.createElement("style");
  style.textContent = "canvas[role] {width: 640px !important; height: 480px !important}";
  document.head.append(style);
  for (let i = 0; i < 3; ++i) await drawn();
  const [pictures, told] = [[], []];
  for (const [[act, selector, ...given], wanted] of steps) {
    acts[act]?.(find(selector), ...given);
    await drawn();
    told.push(Object.keys(wanted).map((one) => {
      const [what, how = "text", ...more] = one.split("@");
      return (tell[how] ?? ((node) => node.getAttribute(how)))(find(what), ...more);
    }));
  }
  return told;
}

// Checks what each step of a tour tells; the page asks for nothing but itself and complains of nothing.
async function explore({send, events}, example, steps, change = (description) => description) {
  const file = `${folder}/${example}.html`;
  execFileSync(process.env.TRELVANE_INSPECT, ["--html", file, examples + example]);
  writeFileSync(file, readFileSync(file, "utf8").replace(/(?<=id="document">).*(?=<)/, (json) =>
    JSON.stringify(change(JSON.parse(json))).replaceAll("<", "\\u003c")));
  const {targetId} = await send("Target.createTarget", {url: "about:blank"});
  const {sessionId} = await send("Target.attachToTarget", {targetId, flatten: true});
  for (const domain of ["Runtime", "Log", "Network", "Page"]) await send(`${domain}.enable`, {},
    sessionId);
  events.length = 0;
  await send("Page.navigate", {url: `file://${file}`}, sessionId);
  while (!events.some(({method}) => method === "Page.loadEventFired")) await setTimeout(20);
  const {result, exceptionDetails} = await send("Runtime.evaluate",
    {expression: `(${tour})(${JSON.stringify(steps)})`,
    awaitPromise: true, returnByValue: true}, sessionId);
  assert.equal(exceptionDetails?.exception.description, undefined);
  steps.forEach(([act, wanted], step) => Object.entries(wanted).forEach(([what, one], i) => {
    const told = result.value[step][i];
    assert.ok(one instanceof RegExp ? one.test(told) : told === one,
      `${act}: ${what} is ${told}, not ${one}`);
  }));
  // Drivers complain of the pictures that the tour takes.
  const noise = events.filter(({method, entry}) => entry?.source !== "rendering" &&
    /requestWillBeSent$|exceptionThrown|entryAdded|consoleAPICalled/.test(method));
  assert.deepEqual(noise.map((one) => one.request?.url ?? one), [`file://${file}`]);
}

const see = ["see", "body"];
const webgl = startBrowser("--use-angle=swiftshader", "--enable-unsafe-swiftshader");
const plot = "#section-plot canvas";
const ends = (a, b) => ({"#line-a@at": `${a} 0`, "#line-b@at": b === "hidden" ? b : `${b} 0`});
const dragged = ["drag", "#map", [100, 250], [130, 240]];
const pictures = (node, acts) => acts.map(([picture, ...act]) => [act,
  {[`${node}@drawn`]: `${picture}`}]);

// The map has 2 pixels for each of 320 x 240 cells.
test("a surface", () => explore(webgl, "part.sur", [
  [see, {h1: "part.sur", "#choice": "hidden", "#profile-view": "hidden", "#notice": "",
    "#scan-text": /^Surface of 320 × 240/, "#solid-text": /^15.950/, "#bar-labels": "0 1 2 3 4 5",
    "#bar@aria-label": "Colours from -0.007 to 5.308 mm", "#bar-colours@pixel@0@0": "247 234 64",
    "#bar-colours@pixel@0@255": "39 21 99", "#map@pixel@322@130": "195 225 102",
    "#map@pixel@2@200": "230 233 236", "#map@pixel@2@0": "39 21 99", "#cell-mark@at": "321 239 9",
    "#map@pixel@300@239": "191 191 191",
      "#line-a@aria-label": "End A: x -6.425 mm, y 0.025 mm, z 3.300 mm",
    "#section-readout": /^distance 0.0000 mm .* column 31 row 120$/, ...ends("63 239", "575 239")}],
  [["keys", "#map", ["Home", "PageUp", ...Array(9).fill("ArrowRight")]], {"#cell-mark@at": "19 1 9",
    "#map-readout": /^x -7.525 mm y 5.975 mm z 0.000 mm column 9 row 239$/, "#spoken": /row 239$/}],
  [["keys", "#map", ["ArrowDown"], true], {"#map-readout": /column 9 row 229$/}],
  [["pointer", "#map", "pointermove", 401, 140, {buttons: 0}], {"#cell-mark@at": "401 141 9",
    "#spoken": /row 229$/}],
  [["keys", "#map", ["a"]], {...ends("401 141", "575 239"), "#section-facts": /^length 4.9925 mm/}],
  [["drag", "#map", [100, 250], [400, 100]], {...ends("101 251", "401 101"),
    "#section-facts": /^length 8.3853 mm height difference B − A 2.378 mm/,
      "#map-readout": /column 200 row 189$/}],
  [["pointer", "#map", "wheel", 321, 240, {deltaY: -300}], ends("39 254", "424 62")],
  [[...dragged, {shiftKey: true}], ends("69 244", "454 52")], [[...dragged, {button: 1}],
    ends("99 234", "484 42")],
  [[...dragged, {button: 2}], ends("99 234", "484 42")], [["click", "[value=move]"],
    {"#map@class": "moves"}],
  [dragged, ends("129 224", "514 32")], [["click", "#map-whole"], ends("101 251", "401 101")],
  [["click", "#map-in"], ends("101 245", "551 20")], [["click", "#map-out"], ends("101 251",
    "401 101")],
  [["keys", "#map", ["+", "="]], ends("101 236", "hidden")], [["keys", "#map", ["-"]],
    ends("101 245", "551 20")],
  [["keys", "#map", ["0", "B", "x"]], ends("101 251", "101 263")],
  [["keys", "#line-a", ["ArrowLeft"], true], {...ends("81 251", "101 263"),
    "#spoken": /column 40, row 114$/}],
  [["drag", "#line-b", [9, 9], [309, -120]], ends("81 251", "399 131")],
  [["keys", plot, ["Home", "ArrowRight"]],
    {"#section-readout": /^distance 0.0534 .* column 41 row 114$/,
    "#map-readout": /column 41 row 114$/, "#spoken": /column 41, row 114$/}],
  ...pictures(plot, [[0, "see", plot], [1, "keys", plot, ["+", "="]], [2, "keys", plot, ["-"]], [0,
    "keys", plot, ["0"]],
    [3, "pointer", plot, "wheel", 60, 50, {deltaY: -50}], [4, "drag", plot, [300, 50], [200, 50]]]),
  [["pointer", plot, "pointermove", 500, 9, {buttons: 0}], {"#section-plot .cursor@at": "498 0 0"}],
  ...pictures("#solid", [[5, "keys", "#solid", ["0"]], [6, "keys", "#solid", ["ArrowLeft"]],
    [5, "keys", "#solid", ["ArrowRight"]], [7, "keys", "#solid", ["ArrowUp"]], [5, "keys",
      "#solid", ["ArrowDown"]],
    [8, "click", "#solid-in"], [5, "click", "#solid-out"], [8, "keys", "#solid", ["+"]], [5,
      "keys", "#solid", ["-"]],
    [9, "drag", "#solid", [50, 50], [60, 70]], [5, "click", "#solid-reset"], [10, "set",
      "#solid-stretch", "5"],
    [5, "set", "#solid-stretch", "1"], [11, "pointer", "#solid", "wheel", 9, 9, {deltaY: -99}]]),
]));

const handle = "#profile-plot .handle:last-of-type";
test("a profile", () => explore(webgl, "part.pro", [
  [see, {"#surface-views": "hidden", "#profile-readout": /point 320$/,
    "#profile-facts": /^distance 15.6956 mm/}],
  [["keys", "#profile-plot canvas", ["Home", "a", "ArrowRight"]],
    {"#profile-readout": /^x -7.9625 mm .* point 1$/,
    "#profile-facts": /^distance an end .* along x 15.9750 mm/, "#spoken": /point 1$/}],
  [["keys", handle, ["ArrowLeft"], true], {"#profile-facts": /along x 15.7250 mm/,
    "#spoken": /point 629$/}],
  [["drag", handle, [0, 0], [-100, 9]], {"#profile-facts": /along x 12.6250 mm/,
    [`${handle}@at`]: "508 128 0",
    [`${handle}@aria-label`]: "End B: x 4.6375 mm, z 3.997 mm, point 505"}],
  [["keys", "#profile-plot canvas", ["+", "End"]],
    {"#profile-plot .cursor@at": "628 0 0", "#profile-plot .handle@at": "hidden"}],
]));

test("a recording", () => explore(webgl, "recording.ovrec", [
  [see, {"#frame-name": "1 of 3, index 0", "#choice": /^Source Left Right Frame/}],
  [["set", "#frame", "2"], {"#frame-name": /^3 of 3/, "#map-readout": /z 2.601 mm/,
    "#section-facts": /^length 6.4/}],
  [["set", "#source", "Right"], {"#map-readout": /z 4.001 mm/,
    "#bar@aria-label": /-0.007 to 5.307/}],
]));

const hostile = "<img src=x onerror=alert(1)></script>\u202e";
const shown = "<img src=x onerror=alert(1)></script>\ufffd";
test("texts of a file are text, and what is not there is hidden", () => explore(webgl, "part.pcd", [
  [see, {h1: shown, "body@count@img": "0", "#source": shown, "#facts@count@tr": "101",
    "#facts@count@h4": "1",
    "#facts": `${shown} ${shown} size x 1, y 2 rows a b${" 1 c d".repeat(100)} Show all 101 rows deep er x y`,
    "#frame-choice": /^Frame 1 of 1/, "#facts@count@.number": "101", "#facts@count@.lines": "100",
      "#notice": /left out besides: 1/}],
  [["click", "#facts button"], {"#facts@count@tr": "102", "#facts@count@button": "0"}],
  [["set", "#frame", "1"], {"#scan-text": "This source has no scan in this frame.",
    "#surface-views": "hidden", "#profile-view": "hidden"}],
], (description) => ({...description, name: hostile, leftOut: 1,
  facts: {[hostile]: hostile, size: {x: 1, y: 2}, rows: Array(101).fill({a: 1, b: {c: "d"}}),
    deep: {er: {x: "y"}}},
  scans: [description.scans[0], {...description.scans[0], source: hostile, frame: 1}]})));

test("without WebGL", () => explore(startBrowser("--disable-3d-apis"), "part.sur", [
  [see, {"#solid-text": /needs WebGL 2/, "#solid": "hidden", "#solid-view .tools": "hidden",
    "#map@pixel@322@130": "195 225 102"}],
]));
