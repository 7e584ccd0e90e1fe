// SPDX-License-Identifier: MIT
// Texts and elements. Texts reach the page as text nodes only, never as HTML.

const byId = (id) => document.getElementById(id);

// Control characters, and those that turn the direction of writing, would hide what a text says.
function clean(text) {
  return String(text).replace(
    /[\u0000-\u001f\u007f-\u009f\u200e\u200f\u2028-\u202e\u2066-\u2069]/g, "\ufffd");
}

function element(tag, className, ...children) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  node.append(...children);
  return node;
}

// Decimals that tell values apart which are `step` mm from each other, beginning at `offset`.
function decimalsFor(step, offset = 0) {
  const decimals = Math.max(Math.ceil(-Math.log10(Math.abs(step)) - 1e-9), 3);
  if (!(decimals < 9)) return 3;
  const lost = (places) => Math.abs(offset - offset.toFixed(places));
  return decimals + (lost(decimals) > Math.abs(step) / 100 && lost(decimals) > 1e-9 ? 1 : 0);
}

function number(value, decimals = 3) {
  if (!Number.isFinite(value)) return "–";
  const text = Math.abs(value) < 1e9 ? value.toFixed(decimals) : value.toPrecision(9);
  return Number(text) === 0 ? text.replace("-", "") : text;
}

const mm = (value, decimals) =>
  Number.isFinite(value) ? `${number(value, decimals)} mm` : "not measured";

// Shows [name, text] pairs in a <dl>.
function showPairs(list, pairs) {
  list.replaceChildren(...pairs.map(([name, text]) =>
    element("div", "", element("dt", "", name), element("dd", "", text))));
}

function speak(pairs) {
  byId("spoken").textContent = pairs.map((pair) => pair.join(" ")).join(", ");
}
