// The rows of a table: filter, order, columns, what is saved, walks that are cut short.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { cells, lua, tell, text_of, until, visit, with_page } from "./browser.mjs";
import test from "node:test";

const column = async (page, number) => (await cells(page, "table.rows tbody")).map((line) => line[number]);
const heads = (page) =>
  page
    .locator("table.rows thead button")
    .evaluateAll((buttons) => buttons.map((button) => button.firstChild.textContent));
const loaded = (page, rows) => until(() => page.locator("table.rows tbody tr").count(), rows);

async function saved(page, name) {
  const [download] = await Promise.all([page.waitForEvent("download"), page.getByRole("button", { name }).click()]);
  return { name: download.suggestedFilename(), text: readFileSync(await download.path(), "utf8") };
}

with_page("keys come first, numbers have units, values their words", "#/tables/portinfo", {}, async (page) => {
  await loaded(page, 8);
  assert.deepEqual((await heads(page)).slice(0, 6), ["port", "port name", "description", "enabled", "link", "speed"]);
  assert.match(await page.getByRole("columnheader", { name: /speed/ }).innerText(), /Mbit\/s/);
  assert.deepEqual((await cells(page, "table.rows tbody"))[4].slice(0, 6), ["5", "ge5", "", "on", "down", "0"]);
  assert.deepEqual((await cells(page, "table.rows tbody"))[0].slice(0, 6), [
    "1",
    "ge1",
    "uplink to the core",
    "on",
    "up",
    "1,000",
  ]);
  assert.equal(await page.locator("table.rows tbody th").first().getAttribute("scope"), "row");
});

with_page("a filter leaves the rows that hold all its words", "#/tables/portinfo", {}, async (page) => {
  await loaded(page, 8);
  await page.getByLabel("Filter").fill("optical LINE");
  assert.deepEqual(await column(page, 1), ["ge7", "ge8"]);
  assert.match(await text_of(page, "#rows-status"), /^2 of 8 rows/);
  await page.getByLabel("Filter").fill("");
  assert.equal((await column(page, 1)).length, 8);
});

with_page(
  "columns sort by size or by text, both ways, and back to the device's order",
  "#/tables/portinfo",
  {},
  async (page) => {
    await loaded(page, 8);
    const sort = page.getByRole("columnheader", { name: /^speed/ });
    await sort.getByRole("button").click();
    assert.equal(await sort.getAttribute("aria-sort"), "ascending");
    assert.deepEqual(await column(page, 0), ["5", "6", "1", "2", "3", "4", "7", "8"]);
    await sort.getByRole("button").click();
    assert.equal(await sort.getAttribute("aria-sort"), "descending");
    assert.deepEqual(await column(page, 0), ["1", "2", "3", "4", "7", "8", "5", "6"]);
    await sort.getByRole("button").click();
    assert.equal(await sort.getAttribute("aria-sort"), null);
    assert.deepEqual(await column(page, 0), ["1", "2", "3", "4", "5", "6", "7", "8"]);
    await page
      .getByRole("columnheader", { name: /^description/ })
      .getByRole("button")
      .click();
    assert.deepEqual((await column(page, 2)).slice(-3), ["optical line 7", "optical line 8", "uplink to the core"]);
  },
);

with_page("counters sort as numbers however long they are", "#/tables/portstat", {}, async (page) => {
  await loaded(page, 8);
  const place = (await heads(page)).indexOf("bytes in");
  await page
    .getByRole("columnheader", { name: /^bytes in/ })
    .getByRole("button")
    .click();
  const values = (await column(page, place)).map((text) => BigInt(text.replaceAll(",", "")));
  assert.deepEqual(
    values,
    [...values].sort((a, b) => (a < b ? -1 : 1)),
  );
});

with_page("chosen columns are remembered, and the usual ones come back", "#/tables/vlaninfo", {}, async (page) => {
  await loaded(page, 3);
  const usual = await heads(page);
  await page.getByText("Columns", { exact: true }).first().click();
  await page.getByRole("checkbox", { name: "tagged ports", exact: true }).uncheck();
  await page.getByRole("checkbox", { name: "oper" }).check();
  const chosen = [...usual.filter((title) => title !== "tagged ports"), "oper"];
  assert.deepEqual(await heads(page), chosen);
  await page.reload();
  await loaded(page, 3);
  assert.deepEqual(await heads(page), chosen);
  await page.getByText("Columns", { exact: true }).first().click();
  await page.getByRole("button", { name: "Usual columns" }).click();
  assert.deepEqual(await heads(page), usual);
  for (const title of usual.slice(1)) await page.getByRole("checkbox", { name: title, exact: true }).uncheck();
  await page.getByRole("checkbox", { name: usual[0], exact: true }).click();
  assert.deepEqual(await heads(page), usual.slice(0, 1), "one column stays");
});

with_page(
  "a browser that keeps nothing shows the rows all the same",
  "#/tables/vlaninfo",
  {
    before: (context) =>
      context.addInitScript(() => {
        Object.defineProperty(window, "localStorage", {
          get() {
            throw new DOMException("no", "SecurityError");
          },
        });
      }),
  },
  async (page) => {
    await loaded(page, 3);
    await page.getByText("Columns", { exact: true }).first().click();
    await page.getByRole("checkbox", { name: "active" }).uncheck();
    assert.ok(!(await heads(page)).includes("active"));
  },
);

test("what another visit left in the browser's storage cannot break a table", async () => {
  for (const left of ["{", "7", '{"a":1}', '["no such field"]', "null"]) {
    const visitor = await visit("#/tables/vlaninfo", {
      before: (context) =>
        context.addInitScript((text) => localStorage.setItem("librpc.console.columns.vlaninfo", text), left),
    });
    await loaded(visitor.page, 3);
    assert.ok((await heads(visitor.page)).length > 2, left);
    await visitor.leave();
  }
});

with_page(
  "CSV and JSON hold what is shown, and a spreadsheet runs none of it",
  "#/tables/vlaninfo",
  {},
  async (page) => {
    lua(`local record = require "librpc.record"
    assert(record.change("vlaninfo", { vlan = 1 }, { name = '=1+2|"x"' }))
    assert(record.change("vlaninfo", { vlan = 10 }, { name = "@a, b" }))`);
    await page.getByRole("button", { name: "Read again" }).click();
    await until(async () => (await column(page, 2))[1], "@a, b");
    await page.getByText("Columns", { exact: true }).first().click();
    for (const title of ["active", "untagged ports"]) {
      await page.getByRole("checkbox", { name: title, exact: true }).uncheck();
    }
    const csv = await saved(page, "Save as CSV");
    assert.match(csv.name, /^vlaninfo-[\d-]+T.*\.csv$/);
    assert.equal(csv.text, 'vlan,name,tagged\r\n1,"\'=1+2|""x""",\r\n10,"\'@a, b","ge3,ge4"\r\n20,video,\r\n');
    await page.getByLabel("Filter").fill("video");
    const json = await saved(page, "Save as JSON");
    const { table, complete, rows } = JSON.parse(json.text);
    assert.deepEqual(
      { table, complete, rows },
      { table: "vlaninfo", complete: true, rows: [{ vlan: 20, name: "video", tagged: "" }] },
    );
    lua(`local record = require "librpc.record"
    assert(record.change("vlaninfo", { vlan = 1 }, { name = "default" }))
    assert(record.change("vlaninfo", { vlan = 10 }, { name = "voice" }))`);
  },
);

with_page("secrets are shown by nobody, nor saved", "#/tables/account", {}, async (page) => {
  await loaded(page, 2);
  const place = (await heads(page)).indexOf("password");
  assert.deepEqual(await column(page, place), ["secret", "secret"]);
  const csv = await saved(page, "Save as CSV");
  assert.equal(csv.text, "user,number,level,password,enabled\r\nadmin,1,15,,on\r\nguest,2,1,,on\r\n");
  assert.doesNotMatch(await page.content(), /value="secret"/);
});

// The gateway is asked for `limit` rows at a time.
const ask_for = (limit) => (context) =>
  context.route("**/api/rows", (route) => {
    const body = route.request().postDataJSON();
    for (const walk of body.walks) walk.limit = limit;
    return route.continue({ postData: JSON.stringify(body) });
  });

with_page(
  "a walk that is cut short says so, and is read on",
  "#/tables/portinfo",
  { before: ask_for(3) },
  async (page) => {
    await loaded(page, 3);
    assert.match(await text_of(page, ".failure:visible"), /Cut short after 3 rows/);
    assert.match(await text_of(page, "#rows-status"), /not all/);
    const json = await saved(page, "Save as JSON");
    assert.equal(JSON.parse(json.text).complete, false);
    await page.getByRole("button", { name: "Read on" }).click();
    await loaded(page, 6);
    await page.getByRole("button", { name: "Read on" }).click();
    await loaded(page, 8);
    assert.deepEqual(await column(page, 0), ["1", "2", "3", "4", "5", "6", "7", "8"]);
    await until(() => page.locator(".failure:visible").count(), 0);
    assert.doesNotMatch(await text_of(page, "#rows-status"), /not all/);
  },
);

with_page("many rows are drawn in parts, of which each can be turned to", "#/tables/svi", {}, async (page) => {
  await loaded(page, 2);
  lua(`local record = require "librpc.record"
    for vlan = 100, 339 do assert(record.call("oltmib_svi_set_1", { vlan = vlan, name = "vlan" .. vlan })) end`);
  await page.getByRole("button", { name: "Read again" }).click();
  await until(() => text_of(page, "#rows-status").then((text) => /^242 rows, 1 to 200 shown/.test(text)), true);
  assert.equal(await page.locator("table.rows tbody tr").count(), 200);
  await page.getByRole("button", { name: "Next rows" }).click();
  assert.equal(await page.locator("table.rows tbody tr").count(), 42);
  assert.match(await text_of(page, "#rows-status"), /201 to 242 shown/);
  await page.getByLabel("Filter").fill("vlan101");
  assert.deepEqual(await column(page, 1), ["vlan101"]);
});

test.after(() => tell("clear"));
