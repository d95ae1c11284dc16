// What the tests of the console share: the browser, people at it, the device beside it.
// A page notes every error and every refusal of the content security policy; `leave`
// ends it and demands that there was none.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { createRequire } from "node:module";
import test from "node:test";

const require = createRequire(`${process.env.CONSOLE_NODE}/package.json`);
const { chromium } = require("playwright-core");
const axe_source = require("axe-core").source;

export const address = process.env.CONSOLE_URL;
export const users = JSON.parse(process.env.CONSOLE_USERS);
export const source = process.env.CONSOLE_SOURCE;
export const modules = `${process.env.CONSOLE_NODE}/node_modules`;

let browser = null;
test.before(async () => {
  browser = await chromium.launch({
    executablePath: process.env.CONSOLE_BROWSER,
    args: ["--no-sandbox", "--disable-dev-shm-usage"], // root in a container has neither
  });
});
test.after(() => browser?.close());

// Tells the simulated device a command; what it answers.
export function tell(...command) {
  return execFileSync(process.env.SIM_DEVICE, ["--tell", process.env.SIM_CONTROL, ...command], {
    encoding: "utf8",
  }).trim();
}

// What the device itself answers to one call, as plain fields.
export function call(api, argument) {
  const script = "require 'librpc' io.write(librpc.callapi(arg[1], arg[2]) or '')";
  return execFileSync("lua5.1", ["-", api, argument], { input: script, encoding: "utf8" }).split("&");
}

// Runs a script of Lua beside the device.
export function lua(script, ...values) {
  return execFileSync("lua5.1", ["-", ...values], { input: script, encoding: "utf8" });
}

// A page of somebody who is signed in.
export async function visit(
  where,
  { user = "ann", width = 1440, height = 900, every, before, noted = true, ...more } = {},
) {
  const context = await browser.newContext({
    viewport: { width, height },
    locale: "en-GB",
    timezoneId: "UTC",
    acceptDownloads: true,
    // a header, as `httpCredentials` would have every request wait for the debugger
    extraHTTPHeaders: user ? { authorization: `Basic ${btoa(`${user}:${users[user]}`)}` } : undefined,
    ...more,
  });
  context.setDefaultTimeout(60000); // which only a broken page takes
  const page = await context.newPage();
  const problems = [];
  const requests = [];
  const pending = new Set();
  page.on("request", (request) => pending.add(request));
  for (const end of ["requestfinished", "requestfailed"]) page.on(end, (request) => pending.delete(request));
  page.on("pageerror", (problem) => problems.push(`error: ${problem.stack}`));
  page.on("dialog", (dialog) => {
    problems.push(`dialog: ${dialog.message()}`);
    dialog.dismiss();
  });
  page.on("console", (message) => {
    // a request that fails is told by the console's page itself
    if (message.type() === "error" && !/Failed to load resource/.test(message.text())) problems.push(message.text());
  });
  page.on("request", (request) => {
    requests.push(request);
    if (!request.url().startsWith(address) && !/^(blob|data):/.test(request.url())) {
      problems.push(`request to ${request.url()}`);
    }
  });
  await context.addInitScript(() => {
    window.violations = [];
    addEventListener("securitypolicyviolation", (event) =>
      window.violations.push(`${event.violatedDirective} ${event.blockedURI}`),
    );
  });
  await before?.(context, page);
  await page.goto(`${address}${every ? `?every=${every}` : ""}${where}`);
  return {
    page,
    context,
    problems,
    requests,
    // Goes to another view, which is there when this ends.
    async go(hash) {
      await page.evaluate(
        (to) =>
          new Promise((resolve) => {
            if (location.hash === to) resolve();
            addEventListener("hashchange", resolve, { once: true });
            location.hash = to;
          }),
        hash,
      );
    },
    // Waits until nothing is asked any more, where refreshes are rare.
    async settle() {
      await until(() => Promise.resolve(pending.size), 0);
      await when(page, () => !/Reading …|Asking the daemons/.test(document.querySelector("main").innerText));
    },
    async leave() {
      const violations = await page.evaluate(() => window.violations);
      await context.unrouteAll({ behavior: "ignoreErrors" });
      await context.close();
      if (noted) assert.deepEqual([...problems, ...violations], []);
    },
  };
}

// Runs a test with a page, which is left at its end.
export function with_page(title, where, options, work) {
  test(title, async () => {
    const visitor = await visit(where, options);
    try {
      await work(visitor.page, visitor);
    } catch (problem) {
      if (process.env.CONSOLE_DEBUG) {
        await visitor.page.screenshot({ path: `${process.env.CONSOLE_DEBUG}/failed.png`, fullPage: true });
      }
      await visitor.context.close();
      throw problem;
    }
    await visitor.leave();
  });
}

// Waits until `read` gives what is expected.
export async function until(read, expected, seconds = 60) {
  const end = Date.now() + seconds * 1000;
  for (;;) {
    const found = await read();
    try {
      assert.deepEqual(found, expected);
      return;
    } catch (problem) {
      if (Date.now() > end) throw problem;
    }
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}

// Waits until a function of the page gives true. (Playwright's own waiting evaluates a
// text in the page, which its policy forbids.)
export const when = (page, work, value) => until(() => page.evaluate(work, value), true);

export const text_of = (page, selector) => page.locator(selector).first().innerText();

// A table's cells as shown, line by line.
export const cells = (page, selector) =>
  page
    .locator(`${selector} tr`)
    .evaluateAll((lines) => lines.map((line) => Array.from(line.cells, (cell) => cell.innerText.trim())));

// The page is no wider than its window.
export async function assert_fits(page, what) {
  const over = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
  assert.ok(over <= 0, `${what}: ${over} pixels wider than the window`);
}

const criteria = ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22a", "wcag22aa", "best-practice"];

// axe-core finds nothing against WCAG 2.2 AA.
export async function assert_accessible(page, what) {
  await page.evaluate(axe_source); // by the debugger: the page's policy does not concern it
  const { violations, passes } = await page.evaluate(
    (tags) => window.axe.run(document, { runOnly: { type: "tag", values: tags } }),
    criteria,
  );
  assert.ok(passes.length > 10, `${what}: axe-core looked at little`);
  assert.deepEqual(
    violations.map(
      ({ id, nodes }) => `${id}: ${nodes.map((node) => `${node.target} ${node.failureSummary}`).join("; ")}`,
    ),
    [],
    what,
  );
}
