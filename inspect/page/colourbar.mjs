// SPDX-License-Identifier: MIT
// The colours of the heights, and the heights that they stand for.
import {byId, element} from "./elements.mjs";
import {measure, number, ticksOf} from "./text.mjs";

// Where a height lies in the palette.
export function colourIndex(z, range) {
  const part = range.high > range.low ? (z - range.low) / (range.high - range.low) : 0.5;
  return Math.round(255 * Math.min(Math.max(part, 0), 1));
}

// The heights that the bar tells, and how far below its top, in percent.
export function labelsOf(range, decimals) {
  const flat = range.high <= range.low;
  const {ticks, decimals: tickDecimals} = ticksOf(range.low, range.high, 8);
  return ticks.map((z) => ({
    text: number(z, flat ? decimals : tickDecimals),
    top: 2 + 96 * (flat ? 0.5 : (range.high - z) / (range.high - range.low)),
  }));
}

export function drawColourBar(palette, range, decimals, unit) {
  const context = byId("bar-colours").getContext("2d");
  const image = context.createImageData(1, 256);
  for (let i = 0; i < 256; ++i) {
    image.data.set(palette.subarray(3 * (255 - i), 3 * (255 - i) + 3), 4 * i);
    image.data[4 * i + 3] = 255;
  }
  context.putImageData(image, 0, 0);

  byId("bar-labels").replaceChildren(...labelsOf(range, decimals).map(({text, top}) => {
    const label = element("span", "", text);
    label.style.top = `${top}%`;
    return label;
  }));
  byId("bar").setAttribute("aria-label",
    `Colours from ${number(range.low, decimals)} to ${measure(range.high, decimals, unit)}`);
  byId("bar-unit").textContent = unit;
}
