// Rules for the JavaScript of the web console and of its tests; `./dev lint` runs them with the
// packages that package-lock.json pins, from the build's folder.
import { createRequire } from "node:module";

const require = createRequire(new URL("../../build/web/node/package.json", import.meta.url));
const js = require("@eslint/js");
const globals = require("globals");

// What would take a device's text for markup or for a program.
const markup = ["innerHTML", "outerHTML", "insertAdjacentHTML", "srcdoc", "write", "writeln"].map((property) => ({
  property,
  message: "Texts only ever become text nodes: see js/dom.js.",
}));

const rules = {
  "array-callback-return": "error",
  curly: ["error", "multi-line"],
  eqeqeq: "error",
  "max-len": ["error", { code: 120, tabWidth: 2, ignoreStrings: true, ignoreTemplateLiterals: true, ignoreRegExpLiterals: true }],
  "no-eval": "error",
  "no-implied-eval": "error",
  "no-new-func": "error",
  "no-shadow": "error",
  "no-unused-vars": ["error", { args: "after-used" }],
  "no-use-before-define": ["error", { functions: false, classes: true, variables: false }],
  "no-var": "error",
  "object-shorthand": "error",
  "prefer-const": "error",
  "require-await": "error",
};

export default [
  { ignores: ["web/console/vendor/**"] },
  js.configs.recommended,
  {
    files: ["web/console/**/*.js"],
    languageOptions: { ecmaVersion: 2022, sourceType: "module", globals: globals.browser },
    rules: { ...rules, "no-restricted-properties": ["error", ...markup], "max-lines-per-function": ["error", 70] },
  },
  {
    files: ["tests/web/**/*.mjs"],
    languageOptions: { ecmaVersion: 2022, sourceType: "module", globals: { ...globals.node, ...globals.browser } },
    rules: { ...rules, "require-await": "off" },
  },
];
