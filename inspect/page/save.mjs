// SPDX-License-Identifier: MIT
// Saves what is shown: tables as CSV, pictures as PNG.
import {themeColour} from "./drawing.mjs";

// Numbers with the digits that count, gaps as nothing; texts that hold a comma or a quote in quotes.
export function csvText(rows) {
  const field = (value) => {
    if (typeof value === "number") return Number.isFinite(value) ? `${Number(value.toPrecision(10))}` : "";
    return /[",\n]/.test(value) ? `"${value.replaceAll('"', '""')}"` : value;
  };
  return rows.map((row) => `${row.map(field).join(",")}\n`).join("");
}

// A name that every file system takes.
export const fileName = (parts, ending) =>
  `${parts.filter(Boolean).join("-").replace(/[^\p{L}\p{N}._-]+/gu, "_")}.${ending}`;

export function save(name, blob) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}

// Canvases as they stand on the page, below lines of text.
export function savePicture(name, lines, canvases, notes = []) {
  const boxes = canvases.map((canvas) => canvas.getBoundingClientRect());
  const left = Math.min(...boxes.map((box) => box.left));
  const top = Math.min(...boxes.map((box) => box.top));
  const width = Math.max(320, ...boxes.map((box) => box.right - left));
  const height = Math.max(...boxes.map((box) => box.bottom - top));
  const picture = document.createElement("canvas");
  const context = picture.getContext("2d");
  const font = (i) => `${i === 0 ? "bold 15px" : "12px"} system-ui, sans-serif`;
  const texts = lines.flatMap((line, i) => wrapped(context, font(i), line, width)
    .map((text) => [font(i), text]));
  const below = notes.flatMap((note) => wrapped(context, font(1), note, width));
  const head = texts.length * 18 + 10;
  const ratio = window.devicePixelRatio || 1;
  picture.width = Math.ceil((width + 24) * ratio);
  picture.height = Math.ceil((head + height + below.length * 18 + 30) * ratio);
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  context.fillStyle = themeColour("--panel");
  context.fillRect(0, 0, picture.width, picture.height);
  context.fillStyle = themeColour("--ink");
  texts.forEach(([style, text], i) => {
    context.font = style;
    context.fillText(text, 12, 24 + 18 * i);
  });
  context.font = font(1);
  below.forEach((text, i) => context.fillText(text, 12, head + height + 32 + 18 * i));
  canvases.forEach((canvas, i) => context.drawImage(canvas, 12 + boxes[i].left - left,
    12 + head + boxes[i].top - top, boxes[i].width, boxes[i].height));
  picture.toBlob((blob) => save(name, blob), "image/png");
}

// A text in lines that are no wider.
function wrapped(context, font, text, width) {
  context.font = font;
  const lines = [];
  for (const word of text.split(" ")) {
    const longer = lines.length > 0 ? `${lines.at(-1)} ${word}` : word;
    if (lines.length > 0 && context.measureText(longer).width <= width) lines[lines.length - 1] = longer;
    else lines.push(word);
  }
  return lines;
}
