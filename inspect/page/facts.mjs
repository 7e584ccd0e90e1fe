// SPDX-License-Identifier: MIT
// The file's facts, whatever they are: objects as sections, arrays of objects as tables.
import {element} from "./elements.mjs";
import {clean} from "./text.mjs";

const MOST_ROWS = 100;  // of a table, until more are asked for

// "boundingBox" reads as "bounding box".
export const factName = (key) =>
  clean(key).replace(/_/g, " ").replace(/([a-z0-9])([A-Z])/g, (_, a, b) => `${a} ${b.toLowerCase()}`);

const isObject = (value) => value !== null && typeof value === "object" && !Array.isArray(value);
const isTable = (value) => Array.isArray(value) && value.length > 0 && value.every(isObject);

// Such as x, y and z: no section for these.
const isShort = (value) => Object.values(value).length <= 3 &&
  Object.values(value).every((part) => typeof part === "number");

// Parts that have parts themselves stand on lines of their own.
const joined = (texts, values) => texts.join(values.some(isObject) ? "\n" : ", ");

export function factText(value) {
  if (value === null) return "–";
  if (typeof value === "boolean") return value ? "yes" : "no";
  // What a float can tell; all digits are in the output of --json.
  if (typeof value === "number" && !Number.isInteger(value)) return `${Number(value.toPrecision(7))}`;
  if (Array.isArray(value)) return value.length === 0 ? "none" : joined(value.map(factText), value);
  if (isObject(value)) {
    return joined(Object.entries(value).map(([key, part]) => `${factName(key)} ${factText(part)}`),
      Object.values(value));
  }
  return clean(value);
}

function factTable(rows) {
  const keys = [...new Set(rows.flatMap((row) => Object.keys(row)))];
  const body = element("tbody");
  const show = (from, to) => {
    for (const row of rows.slice(from, to)) {
      body.append(element("tr", "", ...keys.map((key) => element(
        "td", {number: "number", object: "lines"}[typeof row[key]],
        row[key] === undefined ? "" : factText(row[key])))));
    }
  };
  show(0, MOST_ROWS);
  const isNumber = (key) => rows.every((row) => typeof (row[key] ?? 0) === "number");
  const head = element("tr", "", ...keys.map((key) => {
    const cell = element("th", isNumber(key) ? "number" : "", factName(key));
    cell.scope = "col";
    return cell;
  }));
  const box = element("div", "table", element("table", "", element("thead", "", head), body));
  box.tabIndex = 0;  // scrolls sideways
  if (rows.length > MOST_ROWS) {
    const more = element("button", "", `Show all ${rows.length} rows`);
    more.type = "button";
    more.addEventListener("click", () => {
      show(MOST_ROWS);
      more.remove();
    });
    box.append(more);
  }
  return box;
}

// Appends plain facts first, then a section for each that has parts.
export function appendFacts(parent, facts, depth = 0) {
  const hasParts = (value) => isTable(value) || (isObject(value) && !isShort(value));
  const plain = Object.entries(facts).filter(([, value]) => !hasParts(value));
  if (plain.length > 0) {
    parent.append(element("dl", "", ...plain.flatMap(([key, value]) =>
      [element("dt", "", factName(key)), element("dd", "", factText(value))])));
  }
  for (const [key, value] of Object.entries(facts)) {
    if (!hasParts(value)) continue;
    const heading = element(`h${Math.min(depth + 3, 6)}`, "", factName(key));
    parent.append(heading);
    if (isTable(value)) {
      const table = factTable(value);
      table.setAttribute("role", "region");
      table.setAttribute("aria-label", heading.textContent);
      parent.append(table);
    } else {
      const part = element("div", "part");
      appendFacts(part, value, depth + 1);
      parent.append(part);
    }
  }
}
