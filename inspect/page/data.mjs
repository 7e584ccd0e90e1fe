// SPDX-License-Identifier: MIT
// What the page was made with: one description of everything, and arrays in base64.
import {Scan, bytesOf} from "./scan.mjs";
import {unitsOf} from "./units.mjs";
import {rangesOf, viewOf} from "./views.mjs";

const unique = (values) => [...new Set(values)];

export class PageData {
  // `arrayText(id)` gives the text of an array.
  constructor(description, arrayText) {
    Object.assign(this, {level: "none", range: {kind: "auto"}, choice: {}}, description);
    this.arrayText = arrayText;
    this.palette = bytesOf(description.palette);  // 256 times red, green, blue
    this.sourceNames = unique(this.scans.map((entry) => entry.source));
    this.frameNumbers = unique(this.scans.map((entry) => entry.frame));
  }

  entryOf(source, frame) {
    return this.scans.find((one) => one.source === source && one.frame === frame);
  }

  // Null where the source has no scan in the frame.
  scanOf(source, frame) {
    const entry = this.entryOf(source, frame);
    return entry ? new Scan(entry, this.arrayText) : null;
  }

  // Those of the file and of a scan, which has some of the file's too.
  cautionsOf(scan) {
    return unique([...(this.facts?.cautions ?? []).map((caution) => caution.text),
      ...(scan?.cautions ?? [])]);
  }

  frameText(frame) {
    const index = this.scans.find((entry) => entry.frame === frame)?.index;
    const first = this.frameNumbers[0];  // as counted in the file
    return `${frame} (of ${first} to ${first + this.frames - 1}), index ${index}`;
  }

  // All scans of a source in one unit share their colours, so that frames can be compared.
  ranges(source, unit, level) {
    return rangesOf(this.scans.filter((entry) => entry.source === source &&
      unitsOf(entry)[2][0] === unit).map((entry) => viewOf(entry, level)).filter(Boolean));
  }

  // The colour range that the page begins with. Heights from a command line are those of the view
  // that it begins with, too.
  firstRange(ranges, level) {
    const {kind, low, high} = this.range;
    if (kind === "values" && level === this.level) return {low, high};
    return {full: ranges.full, percentiles: ranges.most}[kind] ?? ranges.auto;
  }

  // What of the file is on the page.
  get notice() {
    const {scans, budget, every, frames, leftOut, choice} = this;
    const reduced = scans.filter((entry) => entry.reduced).length;
    const sentences = [];
    const chosen = [["--frame", choice.frame], ["--source", choice.source]]
      .filter(([, value]) => value !== undefined).map((pair) => pair.join(" "));
    if (chosen.length > 0) {
      sentences.push(`Made with ${chosen.join(" and ")}: the file may hold more.`);
    }
    const plain = sentences.length;
    if (every > 1) {
      sentences.push(`Of ${frames} frames, the first and every ${every}. after it are here.`);
    }
    if (leftOut > 0) sentences.push(`Scans left out besides: ${leftOut}.`);
    if (reduced > 0 && scans.length === 1) sentences.push("The scan is reduced.");
    else if (reduced > 0) sentences.push(`Reduced scans: ${reduced} of ${scans.length}.`);
    if (sentences.length > plain) {
      sentences.push(`This page holds at most ${budget} points (--points).`);
    }
    return sentences.join(" ");
  }
}
