// Screenshots of each view, for the documents and for who changes the looks. They are
// written to the build's web/pictures; where CONSOLE_PICTURES is set, those that a document
// shows to docs/console:
//
//     CONSOLE_PICTURES=1 ./dev test web -R web.console.pictures
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, statSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { lua, modules, source, tell, text_of, until, visit } from "./browser.mjs";

const built = join(modules, "..", "..", "pictures");
mkdirSync(built, { recursive: true });
const documents = ["README.md", "docs/console.md"].map((name) => readFileSync(join(source, name), "utf8")).join();

function place_of(picture) {
  const shown = process.env.CONSOLE_PICTURES && documents.includes(`console/${picture})`);
  return join(shown ? join(source, "docs", "console") : built, picture);
}

const sizes = { wide: { width: 1440, height: 900 }, narrow: { width: 360, height: 740 } };

const pictures = {
  device: [
    "#/device",
    {},
    async (page) => {
      await until(() => text_of(page, ".verdict"), "The device is well");
      await until(() => page.locator(".facts li:visible").count(), 3);
    },
  ],
  ports: [
    "#/ports",
    { every: 0.25 },
    async (page) => {
      await until(() => page.locator(".slider").evaluate((slider) => Number(slider.max) > 20), true, 120);
      await page.getByRole("button", { name: "Pause" }).click();
    },
  ],
  tables: ["#/tables", {}, async (page) => page.getByRole("searchbox").fill("port")],
  rows: [
    "#/tables/portinfo",
    {},
    async (page) => {
      await until(() => page.locator("table.rows tbody tr").count(), 8);
      await page
        .getByRole("columnheader", { name: /^speed/ })
        .getByRole("button")
        .click();
      await page.mouse.move(0, 0);
    },
  ],
  row: [
    "#/row/portinfo?port=3",
    {},
    async (page) => {
      await page.getByLabel("description").fill("customer 33");
      await page.getByLabel("speed").fill("fast");
      await page.locator(".wrong:visible").waitFor();
    },
  ],
  change: [
    "#/row/portinfo?port=3",
    {},
    async (page) => {
      await page.getByLabel("description").fill("customer 33");
      await page.getByLabel("enabled").selectOption("off");
      await page.getByRole("button", { name: "Show what will change" }).click();
      await page.getByRole("heading", { name: "What will change" }).waitFor();
    },
  ],
  faults: [
    "#/device",
    { every: 1 },
    async (page) => {
      await until(() => page.locator(".panel a").count(), 8);
      await page.locator(".panel .errors:visible").first().waitFor();
    },
  ],
};

// What the device went through before the picture of its faults.
function spoil() {
  tell("stop", "auth");
  tell("fault", "devinfo", "truncate", "3");
  lua(`local record = require "librpc.record"
    assert(record.change("portinfo", { port = 4 }, { enabled = "off" }))`);
}

// Errors that go on, so that each refresh finds new ones.
function errors_at(port) {
  const timer = setInterval(() => {
    lua(`local record = require "librpc.record"
      local row = assert(record.get("portstat", { port = ${port} }))
      assert(record.change("portstat", { port = ${port} }, { errors_in = row.errors_in + 12 }))`);
  }, 300);
  return () => clearInterval(timer);
}

test("pictures of each view, narrow and wide, in light and dark", async () => {
  // something for the last changes to tell
  const editor = await visit("#/row/vlaninfo?vlan=20");
  await editor.page.getByLabel("name", { exact: true }).fill("video");
  await editor.page.getByLabel("tagged ports", { exact: true }).fill("ge2");
  await editor.page.getByRole("button", { name: "Show what will change" }).click();
  await editor.page.getByRole("button", { name: "Send this change" }).click();
  await editor.page.getByRole("heading", { name: "Changed" }).waitFor();
  await editor.leave();
  for (const [name, [hash, settings, reach]] of Object.entries(pictures)) {
    const stop = name === "faults" ? (spoil(), errors_at(2)) : () => {};
    for (const [size, viewport] of Object.entries(sizes)) {
      for (const colorScheme of ["light", "dark"]) {
        const both = ["device", "ports", "rows"].includes(name);
        if (!both && (size === "wide") !== (colorScheme === "light")) continue; // one of each is enough
        const visitor = await visit(hash, { every: 2, ...settings, ...viewport, colorScheme });
        await reach(visitor.page);
        const path = place_of(`${name}-${size}-${colorScheme}.png`);
        await visitor.page.screenshot({ path, fullPage: size === "wide", animations: "disabled" });
        const head = readFileSync(path);
        assert.equal(head.subarray(1, 4).toString(), "PNG");
        assert.equal(head.readUInt32BE(16), viewport.width);
        assert.ok(statSync(path).size > 8000, `${path}: a picture with something on it`);
        await visitor.leave();
      }
    }
    stop();
  }
  tell("start", "auth");
  tell("clear");
});
