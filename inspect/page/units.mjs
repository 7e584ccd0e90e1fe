// SPDX-License-Identifier: MIT
// Units that fit what is told in them. A page carries values in the units that the file tells.
import {clean, decimalsFor, number} from "./text.mjs";

const LENGTHS = [["m", 1e3], ["mm", 1], ["µm", 1e-3], ["nm", 1e-6], ["pm", 1e-9]];  // [name, mm]
const LARGE = 100;  // spans from 0 from which heights are told from a reference

// The largest unit that is no larger than a span in mm.
export const fittingLength = (span) =>
  LENGTHS.find(([, mm]) => mm <= span * (1 + 1e-9)) ?? LENGTHS.at(-1);

// How the values along an axis are told: shown = (value - reference) * factor.
export class Unit {
  constructor(name, factor, reference = 0, referenceText = "") {
    Object.assign(this, {name, factor, reference, referenceText});
  }

  // For neighbouring values so far from each other.
  tellingApart(step, offset = 0) {
    this.decimals = decimalsFor(step * this.factor, (offset - this.reference) * this.factor);
    return this;
  }

  shown(value) { return (value - this.reference) * this.factor; }
  back(shown) { return shown / this.factor + this.reference; }
  number(value) { return number(this.shown(value), this.decimals); }
  named(text) { return this.name === "" ? text : `${text} ${this.name}`; }

  text(value) {
    if (!Number.isFinite(value)) return "not measured";
    return this.referenceText === "" ? this.named(this.number(value))
      : `${this.referenceText} + ${this.named(this.number(value))}`;
  }
  difference(value) {
    return Number.isFinite(value) ? this.named(number(value * this.factor, this.decimals)) : "–";
  }
  range(low, high) {
    const ends = this.named(`${this.number(low)} to ${this.number(high)}`);
    return this.referenceText === "" ? ends : `${this.referenceText} + ${ends}`;
  }
  // The title of an axis.
  axis(name) {
    const from = this.referenceText.startsWith("-") ? ` + ${this.referenceText.slice(1)}`
      : ` − ${this.referenceText}`;
    const left = this.referenceText === "" ? name : name + from;
    return this.name === "" ? left : `${left} (${this.name})`;
  }
}

// Lengths of any span.
export function lengthUnit([name, mm], span) {
  if (!(mm > 0)) return new Unit(clean(name), 1);
  const [fitting, size] = fittingLength(span * mm);
  return new Unit(fitting, mm / size);
}

// Heights from low to high. Where they lie far from 0, most of their digits are the same and go into
// a reference.
export function heightUnit([name, mm], low, high) {
  const span = high - low;
  const largest = Math.max(Math.abs(low), Math.abs(high));
  const unit = lengthUnit([name, mm], span > 0 ? span : largest);
  if (!(span > 0) || !(largest > LARGE * span)) return unit;
  const power = 10 ** Math.floor(Math.log10(span / 2) + 1e-9);
  unit.reference = Math.round((low + span / 2) / power) * power;
  const own = lengthUnit([name, mm], Math.abs(unit.reference));
  unit.referenceText = own.named(number(unit.reference * own.factor,
    decimalsFor(power * own.factor)));
  return unit;
}

const MM = [["mm", 1], ["mm", 1], ["mm", 1]];

// The units that the file tells of x, y and z: [name, mm], 0 mm for no known length.
export const unitsOf = (entry) => entry.units ?? MM;

// Whether x and y can be compared, and how many of the first make one of the second: of z and x too.
export function ratioOf([oneName, oneMm], [otherName, otherMm]) {
  if (oneMm > 0 && otherMm > 0) return otherMm / oneMm;
  return oneMm > 0 || otherMm > 0 || oneName !== otherName ? 0 : 1;
}
