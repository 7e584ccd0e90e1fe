// SPDX-License-Identifier: MIT
// The page's elements. Texts reach them as text nodes only, never as HTML.
import {spoken} from "./text.mjs";

export const byId = (id) => document.getElementById(id);

export function element(tag, className, ...children) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  node.append(...children);
  return node;
}

// Shows [name, text] pairs in a <dl>.
export function showPairs(list, pairs) {
  list.replaceChildren(...pairs.map(([name, text]) =>
    element("div", "", element("dt", "", name), element("dd", "", text))));
}

export function speak(pairs) {
  byId("spoken").textContent = spoken(pairs);
}
