// SPDX-License-Identifier: MIT
// The colours of the heights, and the heights that they stand for.

function drawColourBar(range, decimals) {
  const context = byId("bar-colours").getContext("2d");
  const image = context.createImageData(1, 256);
  for (let i = 0; i < 256; ++i) {
    image.data.set(palette.subarray(3 * (255 - i), 3 * (255 - i) + 3), 4 * i);
    image.data[4 * i + 3] = 255;
  }
  context.putImageData(image, 0, 0);

  const labels = [];
  const add = (z, text) => {
    const part = range.high > range.low ? (range.high - z) / (range.high - range.low) : 0.5;
    const label = element("span", "", text);
    label.style.top = `${2 + 96 * part}%`;
    labels.push(label);
  };
  const {ticks, decimals: tickDecimals} = ticksOf(range.low, range.high, 8);
  const flat = range.high <= range.low;
  for (const tick of ticks) add(tick, number(tick, flat ? decimals : tickDecimals));
  byId("bar-labels").replaceChildren(...labels);
  byId("bar").setAttribute("aria-label",
    `Colours from ${number(range.low, decimals)} to ${mm(range.high, decimals)}`);
}
