// SPDX-License-Identifier: MIT
// What the page was made with: one description of everything, and arrays in base64.
import {Scan, bytesOf, unitsOf} from "./scan.mjs";
import {extentOf} from "./text.mjs";

const unique = (values) => [...new Set(values)];

export class PageData {
  // `arrayText(id)` gives the text of an array.
  constructor(description, arrayText) {
    Object.assign(this, description);
    this.arrayText = arrayText;
    this.palette = bytesOf(description.palette);  // 256 times red, green, blue
    this.sourceNames = unique(this.scans.map((entry) => entry.source));
    this.frameNumbers = unique(this.scans.map((entry) => entry.frame));
  }

  // Null where the source has no scan in the frame.
  scanOf(source, frame) {
    const entry = this.scans.find((one) => one.source === source && one.frame === frame);
    return entry ? new Scan(entry, this.arrayText) : null;
  }

  // Those of the file and of a scan, which has some of the file's too.
  cautionsOf(scan) {
    return unique([...(this.facts.cautions ?? []).map((caution) => caution.text),
      ...(scan?.cautions ?? [])]);
  }

  frameText(frame) {
    const index = this.scans.find((entry) => entry.frame === frame)?.index;
    return `${frame + 1} of ${this.frames}, index ${index}`;
  }

  // All scans of a source in one unit share their colours, so that frames can be compared.
  heightRange(source, unit = "mm") {
    const entries = this.scans.filter((entry) => entry.source === source && entry.measured > 0 &&
      unitsOf(entry)[2] === unit);
    if (entries.length === 0) return {low: 0, high: 0};
    return extentOf(entries.flatMap((entry) => [entry.low, entry.high]));
  }

  // What of the file is on the page.
  get notice() {
    const {scans, budget, every, frames, leftOut} = this;
    const reduced = scans.filter((entry) => entry.reduced).length;
    const sentences = [];
    if (every > 1) {
      sentences.push(`Of ${frames} frames, the first and every ${every}. after it are here.`);
    }
    if (leftOut > 0) sentences.push(`Scans left out besides: ${leftOut}.`);
    if (reduced > 0 && scans.length === 1) sentences.push("The scan is reduced.");
    else if (reduced > 0) sentences.push(`Reduced scans: ${reduced} of ${scans.length}.`);
    if (sentences.length === 0) return "";
    return `${sentences.join(" ")} This page holds at most ${budget} points (--points).`;
  }
}
