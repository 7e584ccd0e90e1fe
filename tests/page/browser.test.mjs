// SPDX-License-Identifier: MIT
// Opens pages of the examples from disk in Chromium, does what users do, and looks at the outcome.
import assert from "node:assert/strict";
import {execFileSync} from "node:child_process";
import {readFileSync, writeFileSync} from "node:fs";
import test, {after} from "node:test";
import {startBrowser} from "./chromium.mjs";

const {folder, send, events, open, close} = startBrowser();
after(close);

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
    // Two fingers that are so many pixels apart, and then twice as many.
    pinch: (node, apart) => {
      node.setPointerCapture = () => {};
      const {left, top, width, height} = node.getBoundingClientRect();
      [["down", 1, 0], ["down", 2, apart], ["move", 2, 2 * apart], ["up", 1, 0], ["up", 2, 0]]
        .forEach(([type, pointerId, x]) => node.dispatchEvent(new PointerEvent(`pointer${type}`,
          {pointerId, clientX: left + width / 2 + x, clientY: top + height / 2})));
    },
    click: (node) => node.click(),
    // What would be saved, and its name, as a text on the page.
    save: (node) => new Promise((done) => {
      document.querySelector("#saved")?.remove();
      const saved = document.body.appendChild(document.createElement("output"));
      saved.id = "saved";
      let blob = null;
      URL.createObjectURL = (one) => { blob = one; return "#"; };
      HTMLAnchorElement.prototype.click = async function click() {
        saved.textContent = `${this.download} ${blob.type} ${(await blob.text()).slice(0, 99)}`;
        delete HTMLAnchorElement.prototype.click;
        done();
      };
      node.dispatchEvent(new Event("click"));
    }),
    wait: (node, ms) => new Promise((done) => setTimeout(done, ms)),
    hash: (node, hash) => new Promise((done) => {
      window.addEventListener("hashchange", done, {once: true});
      window.location.hash = hash;
    }),
    set: (node, value) => ["input", "change"].forEach((type) =>
      Object.assign(node, {value}).dispatchEvent(new Event(type))),
  };
  const tell = (node) => {
    if (!node) return window.location.hash;
    if (!node.checkVisibility()) return "hidden";
    if (!node.toDataURL) return node.innerText.replace(/\s+/g, " ").trim();
    // Pictures that look the same have the same number.
    pictures.add(node.toDataURL());
    return `picture ${[...pictures].indexOf(node.toDataURL())}`;
  };
  for (let i = 0; i < 3; ++i) await nextFrame();
  for (const [[act, selector, ...given], wanted] of steps) {
    await acts[act]?.(document.querySelector(selector), ...given);
    await nextFrame();
    told.push(Object.keys(wanted).map((what) => tell(document.querySelector(what))));
  }
  return told;
}

// Checks what each step tells; the page asks for nothing but itself and complains of nothing.
async function explore(example, steps, change = (text) => text, hash = "") {
  const file = `${folder}/${example}.html`;
  const options = ["--html", file, `${import.meta.dirname}/../../examples/${example}`];
  execFileSync(process.env.TRELVANE_INSPECT, options);
  writeFileSync(file, change(readFileSync(file, "utf8")).replace("</style>",
    "canvas[role] {width: 640px !important; height: 480px !important}</style>"));
  const sessionId = await open(`file://${file}${hash}`);
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
  [["see"], {h1: "part.sur", "#source-choice": "hidden", "#profile-view": "hidden",
    "#strip-view": "hidden", "#scan-text": /^Surface of 320 × 240 .* -0.007 to 5.308 mm. Every/,
    "#solid-text": /^15.950 mm .* × 1\.$/, "#section-readout": /^distance 0.000 mm .* column 31 row 120$/,
    "#map": "picture 0", "#figures": /Sa 1.317 mm 1.307 mm .* valid points 68884 68884/}],
  [["keys", "#map", "Home", "PageUp"], {"#map-readout": /column 0 row 239$/}],
  [["click", "#map-in"], {"#map": "picture 1"}], [["click", "#map-whole"], {"#map": "picture 0"}],
  [["pinch", "#map", 100], {"#map": /picture [^0]/}], [["click", "#map-whole"], {"#map": "picture 0"}],
  [["drag", "#map", [100, 250], [400, 100]], {"#map-readout": /column 200 row 189$/,
    "#section-facts": /^length 8.385 mm height difference B − A 2.378 mm/}],
  [["keys", "#section-plot canvas", "End"], {"#spoken": /^distance 8.385 mm.*, row 189$/}],
  [["save", "#save-section-csv"], {"#saved":
    /^part.sur-section.csv text\/csv .?distance \(mm\),x \(mm\),y \(mm\),z \(mm\)/}],
  [["save", "#save-map"], {"#saved": /^part.sur-map.png image\/png .PNG/}],
  [["save", "#save-solid"], {"#saved": /^part.sur-3d.png image\/png/}],
  [["keys", "#range-high", "PageDown"], {"#beyond": /^\d+ points above$/, "#map": /picture [^0]/}],
  [["keys", "#range-low", "ArrowUp"], {"#beyond": /^\d+ points above, \d+ points below$/}],
  [["wait", "body", 400], {"#no": "#range=0.0408350019,4.77650023&line=50,114,200,189"}],
  [["drag", "#range-low", [12, 5], [12, -95]], {}],
  [["wait", "body", 400], {"#no": /^#range=1.217\d*,4.77650023&/}],
  [["click", "#range-full"], {"#beyond": "hidden"}],
  [["keys", "#map", "Home", "PageDown", "1", "ArrowRight", "1", "End", "2", "2"],
    {"#step-facts": /^area 1 mean .* 2 points area 2 mean .* 1 points step from 1 to 2 /}],
  [["click", "[value=step]"], {}],
  [["drag", "#map", [100, 250], [400, 100]], {"#step-facts": /^area 1 mean .* \d{5} points/}],
  [["set", "#level", "plane"], {"#scan-text": /Heights from -3.455 to 2.166 mm. Levelled by a plane/}],
  [["keys", "#solid", "0"], {"#solid": "picture 4"}],
  [["keys", "#solid", "ArrowLeft"], {"#solid": "picture 5"}]]));

test("a link", () => explore("part.sur", [
  [["wait", "body", 400], {"#level": /./, "#scan-text": /Levelled by the mean/, "#beyond": /above.*below/,
    "#section-facts": /^length 7.071 mm/, "#no": "#level=mean&range=-1,1&zoom=2,0.4,0.6&line=0,0,100,100"}],
  [["hash", "body", "#line=0,0,100,0&range=full"], {"#scan-text": /Every point is here/, "#beyond": "hidden",
    "#section-facts": /^length 5.000 mm/}],
  [["hash", "body", "#line=0,0,999,0&level=up"], {"#section-facts": /^length/}]],
(text) => text, "#level=mean&range=-1,1&zoom=2,0.4,0.6&line=0,0,100,100"));

test("a profile", () => explore("part.pro", [
  [["see"], {"#surface-views": "hidden", "#profile-facts": /^distance 15.69556 mm/,
    "#figures": /^ ?as measured levelled by a line Ra .* Rku/}],
  [["keys", "#profile-plot canvas", "Home", "a", "ArrowRight"],
    {"#profile-readout": /^x -7.9625 mm .* point 1$/, "#profile-facts": /along x 15.975/}],
  [["save", "#save-profile-csv"], {"#saved": /^part.pro-profile.csv text\/csv .?x \(mm\),z \(mm\)/}]]));

const shown = "<img src=x onerror=alert(1)></script>\ufffd";
const json = JSON.stringify(shown).replaceAll("<", "\\u003c").replace("\ufffd", "\\u202e");
test("a recording with texts that would act", () => explore("recording.ovrec", [
  [["see"], {h1: shown, "#source": `${shown} Right`, "#facts dt": shown, "#facts dd": shown,
    "#frame-name": "0 (of 0 to 2), index 0", "#strip-text": /^z \(mm\) of each frame/, "#play": "Play"}],
  [["set", "#frame", "2"], {"#frame-name": /^2 \(of/, "#map-readout": /z 2.601 mm/}],
  [["set", "#source", "Right"], {"#map-readout": /z 4.001 mm/}],
  [["click", "#play"], {"#play": "Pause"}], [["wait", "body", 450], {"#frame-name": /^[01] /}],
  [["click", "#play"], {"#play": "Play"}]],
(text) => text.replace('"name":"recording.ovrec"', `"name":${json}`)
  .replace('"facts":{', `"facts":{${json}:${json},`)
  .replaceAll('"source":"Left"', `"source":${json}`)));

test("a cloud", () => explore("part.pcd", [
  [["see"], {"#scan-text": /^Point cloud of 80 × 60 .* cells of/, "#solid": "picture 0"}],
  [["set", "#solid-stretch", "10"], {"#solid": "picture 1", "#solid-text": /× 10\.$/}]]));

test("without WebGL", () => explore("part.sur", [
  [["see"], {"#solid-text": /needs WebGL 2/, "#solid": "hidden", "#solid-view .tools": "hidden"}]],
(text) => text.replace('"webgl2"', '"none"')));
