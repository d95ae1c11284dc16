// What each view shows of the simulated device.
import assert from "node:assert/strict";
import test from "node:test";
import { address, assert_fits, call, cells, lua, tell, text_of, until, users, visit, with_page } from "./browser.mjs";

const own_apis = "local s = require 'librpc.schema' for _, a in ipairs(s.apis) do print(a.table, a.operation) end";
const own_tables = () => {
  const found = new Map();
  for (const line of lua(own_apis).trim().split("\n")) {
    const [table, operation] = line.split("\t");
    found.set(table, [...(found.get(table) ?? []), operation]);
  }
  return found;
};

test("nobody sees a page without signing in", async () => {
  for (const path of ["", "js/app.js", "console.css", "api/session", "api/schema"]) {
    const answer = await fetch(address + path);
    assert.equal(answer.status, 401, path);
    const wrong = await fetch(address + path, { headers: { Authorization: `Basic ${btoa("ann:wrong")}` } });
    assert.equal(wrong.status, 401, path);
  }
  const answer = await fetch(address, { headers: { Authorization: `Basic ${btoa(`ann:${users.ann}`)}` } });
  assert.equal(answer.status, 200);
  assert.match(answer.headers.get("content-security-policy"), /default-src 'self'/);
  assert.doesNotMatch(answer.headers.get("content-security-policy"), /unsafe/);
});

with_page("the device view tells what the device is and that it is well", "#/device", {}, async (page) => {
  await until(() => text_of(page, ".verdict"), "The device is well");
  await page.locator("#identity .pairs > div").first().waitFor();
  const pairs = await page
    .locator("#identity .pairs > div")
    .evaluateAll((lines) =>
      Object.fromEntries(lines.map((line) => [line.children[0].innerText, line.children[1].innerText])),
    );
  const row = call("oltmib_devinfo_get_1", "");
  assert.equal(pairs.model, row[0]);
  assert.equal(pairs.serial, row[1]);
  assert.equal(pairs["MAC address"], row[2]);
  assert.equal(pairs["host name"], row[8]);
  assert.match(pairs.uptime, /^1 day \(86,400 s\)$/);
  assert.equal(await text_of(page, "#who"), "Signed in as ann");
});

with_page("each daemon has its line with state and answer time", "#/device", {}, async (page) => {
  const services = lua("for _, s in ipairs(require('librpc.schema').services) do print(s.name) end").trim().split("\n");
  await until(
    () => page.locator("#daemons tbody tr").evaluateAll((lines) => lines.map((line) => line.dataset.service).sort()),
    [...services].sort(),
  );
  for (const [, state, taken] of await cells(page, "#daemons tbody")) {
    assert.equal(state, "answers");
    assert.match(taken, /^\d+\.\d$/);
  }
  await until(() => text_of(page, ".facts li"), `${services.length} of ${services.length} daemons answer`);
});

with_page("the front panel draws each port by link and speed, in words and shapes", "#/device", {}, async (page) => {
  const ports = page.locator(".panel a");
  await until(() => ports.count(), 8);
  for (let number = 1; number <= 8; number++) {
    const row = call("oltmib_portinfo_get_1", String(number));
    const [name, link, speed] = [row[1], row[4] === "1" ? "up" : "down", row[4] === "1" ? "1 Gbit/s" : ""];
    const shown = (await ports.nth(number - 1).innerText())
      .split(/\s*\n\s*|\s{2,}/)
      .join(" ")
      .trim();
    assert.equal(shown, `${name} ${link} ${speed}`.trim());
  }
  const shapes = await ports.evaluateAll((links) =>
    links.map((link) => [link.dataset.state, link.querySelector("svg").innerHTML]),
  );
  const by_state = new Map(shapes);
  assert.equal(by_state.size, 2);
  assert.notEqual(by_state.get("up"), by_state.get("down"));
  assert.equal(new Set(shapes.map(String)).size, 2, "one shape a state");
});

with_page(
  "a port that is switched off, and new errors, have a shape and a word of their own",
  "#/device",
  { every: 0.3 },
  async (page) => {
    await until(() => page.locator(".panel a").count(), 8);
    lua(`local record = require "librpc.record"
    assert(record.change("portinfo", { port = 4 }, { enabled = "off" }))
    assert(record.change("portstat", { port = 2 }, { errors_in = 0 }))`);
    await until(() => page.locator(".panel a").nth(3).getAttribute("data-state"), "off");
    assert.match(await page.locator(".panel a").nth(3).innerText(), /\boff\b/);
    const errors = page.locator(".panel a").nth(1).locator(".errors");
    const moved = async () => {
      lua(`local record = require "librpc.record"
      local row = assert(record.get("portstat", { port = 2 }))
      assert(record.change("portstat", { port = 2 }, { errors_in = row.errors_in + 7 }))`);
      for (let tries = 0; tries < 20; tries++) {
        if (await errors.isVisible()) return true;
        await new Promise((resolve) => setTimeout(resolve, 20));
      }
      return false;
    };
    await until(moved, true);
    assert.match(await page.locator(".panel a").nth(1).locator(".errors").textContent(), /\+\d+ errors/);
    lua(`assert(require "librpc.record".change("portinfo", { port = 4 }, { enabled = "on" }))`);
  },
);

with_page("a change stands among the last changes, by whom", "#/row/vlaninfo?vlan=20", {}, async (page, { go }) => {
  await page.getByLabel("name", { exact: true }).fill("films");
  await page.getByRole("button", { name: "Show what will change" }).click();
  await page.getByRole("button", { name: "Send this change" }).click();
  await page.getByRole("heading", { name: "Changed" }).waitFor();
  await go("#/device");
  await until(
    async () => (await cells(page, "#changes tbody"))[0]?.slice(1),
    ["ann", "VLANs", "vlan 20", "name films", "done"],
  );
  assert.equal(call("oltmib_vlaninfo_get_1", "20")[2], "films");
});

test("every table of the device opens, and shows the rows that it has", async () => {
  const visitor = await visit("#/tables", { height: 700 });
  const { page } = visitor;
  const tables = own_tables();
  const told_apart_by_secrets = [];
  assert.ok(tables.size > 100);
  await until(() => page.locator(".group li a").count(), tables.size);
  for (const [table, operations] of tables) {
    await visitor.go(`#/tables/${table}`);
    await visitor.settle();
    assert.equal(
      await page.locator("main .failure:visible").count(),
      0,
      `${table}: ${await page.locator("main").innerText()}`,
    );
    if (operations.includes("getn") && (await page.locator("table.rows").count())) {
      assert.ok((await page.locator("table.rows tbody tr").count()) > 0, `${table} has rows`);
      if ((await page.locator("table.rows tbody a").count()) === 0) {
        told_apart_by_secrets.push(table);
        continue;
      }
      await page.locator("table.rows tbody a").first().click();
      await until(() => page.locator("main .form form").count(), 1);
      await visitor.settle();
      assert.equal(await page.locator("main .failure:visible").count(), 0, `${table}: its first row`);
    }
    await assert_fits(page, table);
  }
  assert.deepEqual(told_apart_by_secrets, ["snmp_community"], "tables whose rows nobody can name");
  await visitor.leave();
});

with_page("the search finds tables by name, title and field", "#/tables", {}, async (page) => {
  const box = page.getByRole("searchbox");
  const found = () => page.locator(".group li:visible a").allInnerTexts();
  await box.fill("vlaninfo");
  assert.deepEqual((await found()).sort(), ["VLANs"]);
  await box.fill("wavelength");
  assert.deepEqual(await found(), ["Optical modules in detail"]);
  assert.match(await page.locator(".group li:visible").innerText(), /wavelength/);
  await box.fill("forwarding DATABASE all");
  assert.deepEqual(await found(), ["Forwarding database, all addresses"]);
  await box.fill("no such thing");
  assert.deepEqual(await found(), []);
  assert.match(await text_of(page, "#found"), /^0 of /);
});

with_page("an address that names nothing says so", "#/nothing", {}, async (page, { go }) => {
  assert.equal(await text_of(page, "h1"), "No such page");
  await go("#/tables/nothing");
  await until(() => text_of(page, "h1"), "No such table");
  await go("#/row/nothing?a=1");
  await until(() => text_of(page, "h1"), "No such table");
  await go("#/row/vlaninfo?vlan=999");
  await until(() => page.locator(".failure:visible").getAttribute("data-code"), "no_row");
});

test.after(() => tell("clear"));
