// SPDX-License-Identifier: MIT
import js from "@eslint/js";

const among = (files, ...names) => ({
  files: [files],
  languageOptions: {globals: Object.fromEntries(names.map((name) => [name, "readonly"]))},
});
const page = ["document", "requestAnimationFrame"];

export default [
  js.configs.recommended,
  {
    linterOptions: {reportUnusedDisableDirectives: "error"},
    rules: {"eqeqeq": "error", "no-shadow": ["error", {builtinGlobals: true}], "no-var": "error",
      "prefer-const": ["error", {destructuring: "all"}]},
  },
  among("inspect/page/**", ...page, "Blob", "ResizeObserver", "URL", "URLSearchParams", "atob",
    "clearInterval", "clearTimeout", "setInterval", "setTimeout",
    "getComputedStyle", "matchMedia", "window"),
  among("bench/**", ...page, "Buffer", "PointerEvent", "console", "performance", "process",
    "setTimeout", "window"),
  among("tests/page/**", ...page, "Buffer", "Event", "HTMLAnchorElement", "KeyboardEvent", "PointerEvent",
    "URL", "WheelEvent", "process", "setTimeout",
    "window"),
];
