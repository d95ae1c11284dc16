// Texts of the device that mean harm: markup, scripts, marks that turn the direction,
// a thousand characters. Nothing of them runs and nothing breaks the layout.
import assert from "node:assert/strict";
import test from "node:test";
import { assert_fits, lua, tell, until, visit } from "./browser.mjs";

const run = "window.ran=true";
const hostile = [
  `<script>${run}</script>`,
  `<img src=x onerror="${run}">`,
  `"><svg onload=${run}>`,
  `javascript:${run}`,
  "\u202eesrever\u202d \u2066isolated",
  "‏עברית‏ العربية",
  "</td></tr></table></main><h1>gone</h1>",
  "{{7*7}}${7*7}#{7*7}",
  `'-${run}-'`,
  "\u0000\u0007\u001b[31m\r\n",
  "Z͑ͫ̓ͪ̂ͫ̽͏̴̙̤̞͉͚̯̞̠͍A̴̵̜̰͔ͫ͗͢",
  "m".repeat(1000),
  "wide ".repeat(200),
];

const views = [
  "#/device",
  "#/ports",
  "#/tables",
  "#/tables/portinfo",
  "#/tables/vlaninfo",
  "#/tables/acl",
  "#/tables/fdb",
  "#/tables/portstat",
  "#/row/portinfo?port=3",
  "#/row/devinfo",
  "#/row/ntp",
];

async function assert_harmless(page, what) {
  const found = await page.evaluate(() => ({
    ran: window.ran === true,
    elements: document.querySelectorAll(
      "main script, main img, main iframe, main object, main svg[onload], main [onerror], main h1 ~ h1",
    ).length,
    headings: document.querySelectorAll("h1").length,
    links: Array.from(document.querySelectorAll("a"), (link) => link.getAttribute("href")).filter(
      (address) => !address.startsWith("#"),
    ),
  }));
  assert.deepEqual(found, { ran: false, elements: 0, headings: 1, links: [] }, what);
}

// Every text of every answer becomes the hostile one; keys, codes and names that the
// page goes by stay.
function poison(value, text, name) {
  if (Array.isArray(value)) return value.map((one) => poison(one, text, name));
  if (value && typeof value === "object") {
    return Object.fromEntries(Object.entries(value).map(([key, one]) => [key, poison(one, text, key)]));
  }
  const fixed = [
    "code",
    "state",
    "table",
    "service",
    "operation",
    "kind",
    "ended",
    "api",
    "time",
    "token",
    "field",
  ].includes(name);
  return typeof value === "string" && !fixed ? text : value;
}

for (const [width, height] of [
  [1440, 900],
  [360, 740],
]) {
  test(`in every answer of the gateway, on ${width} pixels`, async () => {
    let text = "";
    const visitor = await visit("#/device", {
      width,
      height,
      every: 60,
      before: (context) =>
        context.route(/\/api\/(all|rows|health|log|check)/, async (route) => {
          const answer = await route.fetch();
          await route.fulfill({ response: answer, json: poison(await answer.json(), text) });
        }),
    });
    const { page } = visitor;
    for (text of hostile) {
      for (const hash of views) {
        await visitor.go(hash);
        await visitor.settle();
        const what = `${hash} with ${JSON.stringify(text.slice(0, 30))}`;
        await assert_harmless(page, what);
        await assert_fits(page, what);
      }
    }
    await visitor.leave();
  });
}

test("in every text that the device itself holds", async () => {
  // the longest that each field takes, in every row of every table that can be set
  const changed = Number(
    lua(
      `
    local record, schema, names = require "librpc.record", require "librpc.schema", require "librpc.names"
    local texts, changed = { ... }, 0
    for _, api in ipairs(schema.apis) do
      local apis = schema.table(api.table)
      if api.operation == "set" and apis.getn then
        for _, row in ipairs(record.rows(api.table) or {}) do
          local key, given = {}, {}
          for _, field in ipairs(names.fields(api.table)) do
            if field.key then
              key[field.name] = row[field.name]
            elseif field.kind == "text" and field.argument then
              changed = changed + 1
              given[field.name] = texts[changed % #texts + 1]:sub(1, math.min(field.size - 1, 60))
            end
          end
          if next(given) then record.change(api.table, key, given) end
        end
      end
    end
    io.write(changed)`,
      ...hostile.filter((text) => !["&", "$", "\u0000"].some((one) => text.includes(one))),
    ),
  );
  assert.ok(changed > 100, `${changed} texts`);
  const visitor = await visit("#/tables", { width: 800, every: 60 });
  const { page } = visitor;
  let seen = 0;
  await page.locator(".group").first().waitFor();
  const tables = await page
    .locator(".group li a")
    .evaluateAll((links) => links.map((link) => link.getAttribute("href")));
  for (const hash of [...tables, "#/device", "#/ports"]) {
    await visitor.go(hash);
    await visitor.settle();
    await assert_harmless(page, hash);
    await assert_fits(page, hash);
    seen += (await page.locator("main").innerText()).includes("onerror=");
  }
  assert.ok(seen > 20, `the texts were seen in ${seen} tables`);
  await visitor.leave();
});

test("texts of the address are texts, too", async () => {
  for (const text of hostile.slice(0, 5)) {
    const visitor = await visit(`#/row/portinfo?port=${encodeURIComponent(text)}`);
    await until(() => visitor.page.locator("main .failure:visible").count(), 1);
    await assert_harmless(visitor.page, text);
    await visitor.go(`#/tables/${encodeURIComponent(text)}`);
    await until(() => visitor.page.locator("h1").innerText(), "No such table");
    await assert_harmless(visitor.page, text);
    await visitor.leave();
  }
});

test.after(() => tell("clear"));
