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
  among("inspect/page/**", ...page, "AbortController", "ImageData", "ResizeObserver", "atob",
    "getComputedStyle", "matchMedia", "window"),
  among("tests/page/**", ...page, "Buffer", "Element", "Event", "KeyboardEvent", "PointerEvent",
    "URL", "WheelEvent", "process"),
];
