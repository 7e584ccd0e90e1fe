// SPDX-License-Identifier: MIT
// The figures of a scan on the page.
import {element} from "./elements.mjs";
import {FIGURES_HINT, figureRows} from "./figures.mjs";
import {viewOf} from "./views.mjs";

export function showFigures(parent, scan) {
  if (!scan?.view) {
    parent.replaceChildren(element("p", "", "No point is valid."));
    return;
  }
  const views = ["none", "plane"].map((level) => viewOf(scan, level));
  const heading = (scope, text) => {
    const cell = element("th", "", text);
    cell.scope = scope;
    return cell;
  };
  const body = figureRows(views, scan.fileUnits[2], scan.isLine).map(([name, ...texts]) =>
    element("tr", "", heading("row", name), ...texts.map((text) => element("td", "number", text))));
  const flat = scan.isLine ? "levelled by a line" : "levelled by a plane";
  const head = element("tr", "", ...["", "as measured", flat].map((text) => heading("col", text)));
  const table = element("div", "table", element("table", "", element("thead", "", head),
    element("tbody", "", ...body)));
  table.tabIndex = 0;  // scrolls sideways
  table.setAttribute("role", "region");
  table.setAttribute("aria-label", "Figures");
  parent.replaceChildren(table, element("p", "hint", FIGURES_HINT));
}
