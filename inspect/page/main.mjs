// SPDX-License-Identifier: MIT
// Puts the parts of the page together: which scan is shown, in which view, and what a link keeps.
import {colourTable} from "./colours.mjs";
import {PageData} from "./data.mjs";
import {byId, element} from "./elements.mjs";
import {appendFacts} from "./facts.mjs";
import {LINE_HINT} from "./figures.mjs";
import {showFigures} from "./figurestable.mjs";
import {linkOf, parseLink} from "./link.mjs";
import {ProfileView, profileTable} from "./profile.mjs";
import {csvText, fileName, save, savePicture} from "./save.mjs";
import {FrameStrip} from "./strip.mjs";
import {SurfaceView} from "./surface.mjs";
import {clean} from "./text.mjs";

const PLAYED = 300;  // ms for a frame
const LINKED = 250;  // ms until the address tells of a change

const data = new PageData(JSON.parse(byId("document").textContent),
  (id) => byId(`array${id}`).textContent);
const colours = {palette: data.palette, below: data.below, above: data.above,
  table: colourTable(data.palette, data.below, data.above)};

// `range` is chosen heights, "auto", "full" or, as the page begins, null.
const chosen = {source: data.sourceNames[0], frame: data.frameNumbers[0], level: data.level, range: null};
let scan = null;
let ranges = null;
let surface = null, profile = null;  // made when there is one to show
let strip = null;
let linkTimer = 0;

const drawn = () => scan !== null && scan.width > 0 && scan.length > 0;

// The colour range as it is chosen, in the view.
function rangeNow() {
  if (chosen.range === "auto") return ranges.auto;
  if (chosen.range === "full") return ranges.full;
  return chosen.range ?? data.firstRange(ranges, chosen.level);
}

function chooseRange(range) {
  chosen.range = range;
  keepLink();
}

function setRange(range) {
  chooseRange(range);
  if (drawn() && !scan.isLine) surface.setRange(rangeNow());
}

// The address tells what is seen, without a step in the browser's history.
function keepLink() {
  clearTimeout(linkTimer);
  linkTimer = setTimeout(() => {
    const ends = !drawn() ? null : scan.isLine ? profile.marks
      : surface.line.ends.flatMap(({column, row}) => [column, row]);
    const text = linkOf({
      source: data.sourceNames.length > 1 ? chosen.source : null,
      frame: data.frameNumbers.length > 1 ? chosen.frame : null,
      level: chosen.level === data.level ? null : chosen.level,
      range: chosen.range, seen: drawn() && !scan.isLine ? surface.map.view.seen : null, ends});
    window.history.replaceState(null, "", `#${text}`);
  }, LINKED);
}

function followLink() {
  const link = parseLink(window.location.hash);
  if (data.sourceNames.includes(link.source)) chosen.source = link.source;
  if (data.frameNumbers.includes(link.frame)) chosen.frame = link.frame;
  chosen.level = link.level ?? data.level;
  chosen.range = link.range;
  showChosen();
  if (!drawn()) return;
  if (scan.isLine) {
    if (link.ends?.length === 2) link.ends.forEach((index, end) => profile.moveMark(end, index));
    return;
  }
  if (link.ends?.length === 4) {
    const [a, b, c, d] = link.ends;
    surface.line.ends = [{column: a, row: b}, {column: c, row: d}];
    surface.line.fit(scan);
    surface.cut();
  }
  window.requestAnimationFrame(() => surface.map.view.see(link.seen));  // when the map has its size
}

function showChosen() {
  const {source, frame, level} = chosen;
  byId("source").selectedIndex = data.sourceNames.indexOf(source);
  byId("frame").value = data.frameNumbers.indexOf(frame);
  byId("level").value = level;
  scan = data.scanOf(source, frame);
  byId("frame-name").textContent = data.frameText(frame);
  if (scan) {
    ranges = data.ranges(source, scan.fileUnits[2][0], level);
    scan.setLevel(level, ranges.auto);
  }
  byId("scan-text").textContent = scan ? scan.text : "This source has no scan in this frame.";
  byId("cautions").replaceChildren(...data.cautionsOf(scan).map((text) =>
    element("li", "", `Caution: ${clean(text)}`)));
  byId("surface-views").hidden = !drawn() || scan.isLine;
  byId("profile-view").hidden = !drawn() || !scan.isLine;
  if (drawn() && scan.isLine) {
    profile ??= new ProfileView(keepLink);
    profile.show(scan);
  } else if (drawn()) {
    surface ??= new SurfaceView(colours, chooseRange, keepLink);
    surface.show(scan, ranges.full, rangeNow());
  }
  byId(drawn() && !scan.isLine ? "surface-views" : "profile-place").append(byId("figures-view"));
  showFigures(byId("figures"), scan);
  strip?.show(data.frameNumbers.map((number) => data.entryOf(source, number)), data.frameNumbers,
    level, data.frameNumbers.indexOf(frame));
  keepLink();
}

function choose(change) {
  Object.assign(chosen, change);
  showChosen();
}

function listenToChoice() {
  byId("source").addEventListener("change", (event) => choose({
    source: data.sourceNames[event.target.selectedIndex], range: null}));
  byId("frame").addEventListener("input", (event) => choose({
    frame: data.frameNumbers[Number(event.target.value)]}));
  // Heights of one view mean nothing in another one.
  byId("level").addEventListener("change", (event) => choose({level: event.target.value,
    range: typeof chosen.range === "string" ? chosen.range : null}));
  byId("range-auto").addEventListener("click", () => setRange("auto"));
  byId("range-full").addEventListener("click", () => setRange("full"));
  byId("choice").addEventListener("submit", (event) => event.preventDefault());
  window.addEventListener("hashchange", followLink);
}

// One frame after the other, and from the beginning again.
function listenToPlay() {
  const button = byId("play");
  let timer = 0;
  const show = () => {
    button.textContent = timer === 0 ? "Play" : "Pause";
    button.setAttribute("aria-pressed", String(timer !== 0));
  };
  button.addEventListener("click", () => {
    if (timer !== 0) {
      clearInterval(timer);
      timer = 0;
    } else {
      timer = setInterval(() => {
        const next = (data.frameNumbers.indexOf(chosen.frame) + 1) % data.frameNumbers.length;
        choose({frame: data.frameNumbers[next]});
      }, PLAYED);
    }
    show();
  });
  show();
}

function listenToSaving() {
  const name = (what, ending) => fileName([clean(data.name), clean(chosen.source),
    data.frameNumbers.length > 1 && String(chosen.frame), what], ending);
  const head = (what) => [[clean(data.name), clean(chosen.source),
    data.frameNumbers.length > 1 && `frame ${chosen.frame}`, what].filter(Boolean).join(", "), scan.text];
  const table = (what, text) => save(name(what, "csv"), new Blob([`\ufeff${text}`], {type: "text/csv"}));
  const listen = (id, act) => byId(id).addEventListener("click", act);
  listen("save-map", () => {
    const beyond = byId("beyond").textContent;
    const colour = `Colours: ${byId("bar-unit").textContent}. Hatched: not measured.` +
      (beyond === "" ? "" : ` Beyond the colours: ${beyond}.`);
    savePicture(name("map", "png"), head("height map"), [byId("map-axis-y"), byId("map"),
      byId("bar-colours"), byId("map-axis-x")], [byId("map-scale").textContent, colour].filter(Boolean));
  });
  listen("save-section", () => savePicture(name("section", "png"),
    head("cross-section"), [surface.plot.canvas], [byId("section-facts").innerText.replace(/\n/g, " ")]));
  listen("save-section-csv", () => table("section", surface.sectionCsv()));
  listen("save-solid", () => {
    surface.solid.draw();  // what was drawn before is gone
    savePicture(name("3d", "png"), head("3-D view"), [byId("solid")], [byId("solid-text").textContent]);
  });
  listen("save-profile", () => savePicture(name("profile", "png"), head("profile"),
    [profile.plot.canvas], [byId("profile-facts").innerText.replace(/\n/g, " ")]));
  listen("save-profile-csv", () => table("profile", csvText(profileTable(scan))));
}

const name = clean(data.name);
document.title = name;
byId("name").textContent = name;
byId("notice").textContent = data.notice;
appendFacts(byId("facts"), data.facts);
byId("source").append(...data.sourceNames.map((source) => element("option", "", clean(source))));
const severalFrames = data.frameNumbers.length > 1;
byId("source-choice").hidden = data.sourceNames.length < 2;
byId("frame-choice").hidden = byId("strip-view").hidden = !severalFrames;
byId("frame").max = Math.max(0, data.frameNumbers.length - 1);
for (const end of ["below", "above"]) {
  document.documentElement.style.setProperty(`--${end}`, `rgb(${data[end].join(" ")})`);
}
for (const place of document.querySelectorAll(".line-hint")) place.title = LINE_HINT;
if (severalFrames) {
  strip = new FrameStrip(byId("strip"), byId("strip-text"), (index) => choose({
    frame: data.frameNumbers[index]}));
}
listenToChoice();
listenToPlay();
listenToSaving();
followLink();
