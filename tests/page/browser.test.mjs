// SPDX-License-Identifier: MIT
// Opens pages of the examples from disk in Chromium, does what users do, and looks at the outcome.
import assert from "node:assert/strict";
import {execFileSync, spawn} from "node:child_process";
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from "node:fs";
import {tmpdir} from "node:os";
import test, {after} from "node:test";
import {setTimeout} from "node:timers/promises";

const folder = mkdtempSync(`${tmpdir()}/pages-`);
const browser = spawn("chromium", ["--headless", "--remote-debugging-pipe", "--disable-gpu",
  "--disable-background-networking", "--use-angle=swiftshader", "--enable-unsafe-swiftshader",
  "--window-size=1200,1000", `--user-data-dir=${folder}/user`,
  ...process.getuid() === 0 ? ["--no-sandbox"] : []],
{stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"]});
after(() => browser.once("exit", () => rmSync(folder, {recursive: true, maxRetries: 9})).kill());

const [asked, events] = [[], []];  // who waits for answers; what the browser told on its own
let rest = "";
browser.stdio[4].setEncoding("utf8").on("data", (text) => {
  const messages = (rest + text).split("\0");
  rest = messages.pop();
  for (const {id, result, error, method, params} of messages.map(JSON.parse)) {
    if (id === undefined) events.push({method, ...params});
    else asked[id](result ?? error);
  }
});
const send = (method, params, sessionId) => new Promise((done) => {
  const id = asked.push(done) - 1;
  browser.stdio[3].write(`${JSON.stringify({id, method, params, sessionId})}\0`);
});

// Runs in the page: after each [act, selector, ...], tells of what each step wants to see.
async function tour(steps) {
  const nextFrame = () => new Promise((done) => requestAnimationFrame(done));
  const [pictures, told] = [new Set(), []];
  const acts = {
    keys: (node, ...keys) => keys.forEach((key) =>
      node.dispatchEvent(new KeyboardEvent("keydown", {key}))),
    drag: (node, from, to) => {
      node.setPointerCapture = () => {};  // there is no real pointer
      const {left, top} = node.getBoundingClientRect();
      [["down", from], ["move", to], ["up", to]].forEach(([type, [x, y]]) => node.dispatchEvent(
        new PointerEvent(`pointer${type}`, {clientX: left + x, clientY: top + y})));
    },
    click: (node) => node.click(),
    set: (node, value) => ["input", "change"].forEach((type) =>
      Object.assign(node, {value}).dispatchEvent(new Event(type))),
  };
  const tell = (node) => {
    if (!node.checkVisibility()) return "hidden";
    if (!node.toDataURL) return node.innerText.replace(/\s+/g, " ").trim();
    // Pictures that look the same have the same number.
    pictures.add(node.toDataURL());
    return `picture ${[...pictures].indexOf(node.toDataURL())}`;
  };
  for (let i = 0; i < 3; ++i) await nextFrame();
  for (const [[act, selector, ...given], wanted] of steps) {
    acts[act]?.(document.querySelector(selector), ...given);
    await nextFrame();
    told.push(Object.keys(wanted).map((what) => tell(document.querySelector(what))));
  }
  return told;
}

// Checks what each step tells; the page asks for nothing but itself and complains of nothing.
async function explore(example, steps, change = (text) => text) {
  const file = `${folder}/${example}.html`;
  const options = ["--html", file, `${import.meta.dirname}/../../examples/${example}`];
  execFileSync(process.env.TRELVANE_INSPECT, options);
  writeFileSync(file, change(readFileSync(file, "utf8")).replace("</style>",
    "canvas[role] {width: 640px !important; height: 480px !important}</style>"));
  const {targetId} = await send("Target.createTarget", {url: "about:blank"});
  const {sessionId} = await send("Target.attachToTarget", {targetId, flatten: true});
  await Promise.all(["Runtime", "Log", "Network", "Page"].map((domain) =>
    send(`${domain}.enable`, {}, sessionId)));
  events.length = 0;
  await send("Page.navigate", {url: `file://${file}`}, sessionId);
  while (!events.some(({method}) => method === "Page.loadEventFired")) await setTimeout(20);
  const {result, exceptionDetails} = await send("Runtime.evaluate", {awaitPromise: true,
    returnByValue: true, expression: `(${tour})(${JSON.stringify(steps)})`}, sessionId);
  assert.equal(exceptionDetails?.exception.description, undefined);
  steps.forEach(([act, wanted], step) => Object.entries(wanted).forEach(([what, one], i) => {
    const told = result.value[step][i];
    assert.ok(one.test?.(told) ?? told === one, `${act}: ${what} is ${told}, not ${one}`);
  }));
  // Drivers complain of the pictures that the tour takes.
  const noise = events.filter(({method, entry}) => entry?.source !== "rendering" &&
    /requestWillBeSent$|exceptionThrown|entryAdded|consoleAPICalled/.test(method));
  assert.deepEqual(noise.map((one) => one.request?.url ?? one), [`file://${file}`]);
}

test("a surface", () => explore("part.sur", [
  [["see"], {h1: "part.sur", "#choice": "hidden", "#profile-view": "hidden",
    "#scan-text": /^Surface of 320 × 240/, "#solid-text": /^15.950/, "#bar-labels": "0 1 2 3 4 5",
    "#section-readout": /^distance 0.0000 mm .* column 31 row 120$/, "#map": "picture 0"}],
  [["keys", "#map", "Home", "PageUp"], {"#map-readout": /column 0 row 239$/}],
  [["click", "#map-in"], {"#map": "picture 1"}], [["click", "#map-whole"], {"#map": "picture 0"}],
  [["drag", "#map", [100, 250], [400, 100]], {"#map-readout": /column 200 row 189$/,
    "#section-facts": /^length 8.3853 mm height difference B − A 2.378 mm/}],
  [["keys", "#section-plot canvas", "End"], {"#spoken": /^distance 8.3853 mm.*, row 189$/}],
  [["keys", "#solid", "0"], {"#solid": "picture 2"}],
  [["keys", "#solid", "ArrowLeft"], {"#solid": "picture 3"}]]));

test("a profile", () => explore("part.pro", [
  [["see"], {"#surface-views": "hidden", "#profile-facts": /^distance 15.6956 mm/}],
  [["keys", "#profile-plot canvas", "Home", "a", "ArrowRight"],
    {"#profile-readout": /^x -7.9625 mm .* point 1$/, "#profile-facts": /along x 15.9750 mm/}]]));

const shown = "<img src=x onerror=alert(1)></script>\ufffd";
const json = JSON.stringify(shown).replaceAll("<", "\\u003c").replace("\ufffd", "\\u202e");
test("a recording with texts that would act", () => explore("recording.ovrec", [
  [["see"], {h1: shown, "#source": `${shown} Right`, "#facts dt": shown, "#facts dd": shown,
    "#frame-name": "1 of 3, index 0"}],
  [["set", "#frame", "2"], {"#frame-name": /^3 of 3/, "#map-readout": /z 2.601 mm/}],
  [["set", "#source", "Right"], {"#map-readout": /z 4.001 mm/}]],
(text) => text.replace('"name":"recording.ovrec"', `"name":${json}`)
  .replace('"facts":{', `"facts":{${json}:${json},`)
  .replaceAll('"source":"Left"', `"source":${json}`)));

test("without WebGL", () => explore("part.sur", [
  [["see"], {"#solid-text": /needs WebGL 2/, "#solid": "hidden", "#solid-view .tools": "hidden"}]],
(text) => text.replace('"webgl2"', '"none"')));
