// Everybody can use it: axe-core finds nothing against WCAG 2.2 AA in any view or state,
// it fits from 360 to 2,560 pixels, targets are large enough, nothing moves by itself.
import assert from "node:assert/strict";
import test from "node:test";
import { assert_accessible, assert_fits, lua, tell, until, visit, when, with_page } from "./browser.mjs";

const settled = (page) =>
  when(
    page,
    () =>
      document.querySelector("main h1") !== null &&
      !/Reading …|Reading what|Asking the daemons/.test(document.querySelector("main").innerText),
  );

const states = {
  device: ["#/device", async (page) => until(() => page.locator(".panel a").count(), 8)],
  ports: ["#/ports", async (page) => until(() => page.locator(".plot canvas").count(), 2)],
  tables: ["#/tables", async () => {}],
  "tables, searched": ["#/tables", async (page) => page.getByRole("searchbox").fill("port")],
  rows: ["#/tables/portinfo", async (page) => until(() => page.locator("table.rows tbody tr").count(), 8)],
  "rows, sorted and choosing columns": [
    "#/tables/portinfo",
    async (page) => {
      await until(() => page.locator("table.rows tbody tr").count(), 8);
      await page
        .getByRole("columnheader", { name: /^speed/ })
        .getByRole("button")
        .click();
      await page.getByText("Columns", { exact: true }).first().click();
    },
  ],
  row: ["#/row/portinfo?port=3", async (page) => page.getByText("More fields").click()],
  "row with a mistake": [
    "#/row/portinfo?port=3",
    async (page) => {
      await page.getByLabel("speed").fill("fast");
      await page.locator(".wrong:visible").waitFor();
    },
  ],
  "row, what will change": [
    "#/row/portinfo?port=3",
    async (page) => {
      await page.getByLabel("description").fill("other");
      await page.getByRole("button", { name: "Show what will change" }).click();
      await page.getByRole("heading", { name: "What will change" }).waitFor();
    },
  ],
  "row of a table of one": ["#/tables/sysloginfo", async (page) => page.getByLabel("enabled").waitFor()],
  "new row": ["#/add/vlaninfo", async (page) => page.getByLabel("vlan").waitFor()],
  "row that is not there": ["#/row/vlaninfo?vlan=999", async (page) => page.locator(".failure:visible").waitFor()],
  "key asked for": ["#/tables/devcapint", async (page) => page.getByLabel("item").waitFor()],
  "API without a row": [
    "#/tables/accesslog",
    async (page) =>
      page
        .getByRole("button", { name: /Show|Go/ })
        .first()
        .waitFor(),
  ],
  "no such page": ["#/nothing", async () => {}],
};

for (const [name, [hash, reach]] of Object.entries(states)) {
  test(`${name}: no violation in light and dark, narrow and wide`, async () => {
    for (const [width, height, colorScheme] of [
      [1440, 900, "light"],
      [1440, 900, "dark"],
      [360, 740, "light"],
    ]) {
      const visitor = await visit(hash, { width, height, colorScheme, every: 30 });
      await settled(visitor.page);
      await reach(visitor.page);
      await assert_accessible(visitor.page, `${name}, ${width} pixels, ${colorScheme}`);
      await assert_fits(visitor.page, `${name}, ${width} pixels`);
      await visitor.leave();
    }
  });
}

test("a device that is not well: no violation either", async () => {
  tell("stop", "auth");
  tell("fault", "devinfo", "truncate", "3");
  lua(`assert(require "librpc.record".change("portinfo", { port = 4 }, { enabled = "off" }))`);
  for (const colorScheme of ["light", "dark"]) {
    const visitor = await visit("#/device", { colorScheme, every: 30 });
    await until(() => visitor.page.locator(".panel a").count(), 8);
    await visitor.page.locator("#identity .failure:visible").waitFor();
    await settled(visitor.page);
    await assert_accessible(visitor.page, colorScheme);
    await visitor.leave();
  }
  tell("start", "auth");
  tell("clear");
});

test("it fits every width from 360 to 2,560 pixels", async () => {
  const visitor = await visit("#/device", { every: 30 });
  const { page } = visitor;
  for (const hash of ["#/device", "#/ports", "#/tables", "#/tables/portinfo", "#/row/portinfo?port=3"]) {
    await visitor.go(hash);
    await settled(page);
    for (const width of [360, 480, 640, 768, 1024, 1280, 1920, 2560]) {
      await page.setViewportSize({ width, height: 800 });
      await until(() => page.evaluate(() => document.documentElement.scrollWidth - innerWidth <= 0), true);
      await assert_fits(page, `${hash}, ${width} pixels`);
    }
  }
  await visitor.leave();
});

with_page("text of twice the size still fits", "#/device", { width: 1280, every: 30 }, async (page, { go }) => {
  for (const hash of ["#/device", "#/tables/portinfo", "#/row/portinfo?port=3", "#/ports"]) {
    await go(hash);
    await settled(page);
    await page.evaluate(() => {
      document.documentElement.style.fontSize = "200%";
    });
    await assert_fits(page, hash);
  }
});

with_page(
  "what can be clicked is at least 24 pixels each way, or stands in text with room",
  "#/tables/portinfo",
  { every: 30 },
  async (page, { go }) => {
    for (const hash of ["#/tables/portinfo", "#/device", "#/ports", "#/row/portinfo?port=3", "#/tables"]) {
      await go(hash);
      await settled(page);
      const small = await page.evaluate(() =>
        Array.from(
          document.querySelectorAll(
            "main button, main select, main input:not([type=checkbox]), main summary, .tick, .panel a, nav a",
          ),
        )
          .filter((node) => node.checkVisibility())
          .map((node) => [node.outerHTML.slice(0, 60), node.getBoundingClientRect()])
          .filter(([, box]) => box.width < 24 || box.height < 24)
          .map(([text, box]) => `${text} ${box.width}x${box.height}`),
      );
      assert.deepEqual(small, [], hash);
    }
  },
);

with_page(
  "the page's parts are landmarks, and a view has one first heading",
  "#/device",
  { every: 30 },
  async (page) => {
    await settled(page);
    for (const role of ["banner", "main", "navigation"]) assert.equal(await page.getByRole(role).count(), 1, role);
    assert.equal(await page.locator("h1").count(), 1);
    assert.equal(await page.locator("html").getAttribute("lang"), "en");
    assert.equal(await page.getByRole("link", { name: "Device", exact: true }).getAttribute("aria-current"), "page");
  },
);

with_page(
  "refreshes are not read out; what was clicked is",
  "#/device",
  { every: 0.2 },
  async (page, { go, requests }) => {
    await until(() => page.locator(".panel a").count(), 8);
    await page.evaluate(() => {
      window.news = [];
      const live = document.querySelectorAll("[aria-live], [role=status], [role=alert], [role=log], output");
      for (const node of live) {
        new MutationObserver(() => window.news.push(node.textContent)).observe(node, {
          childList: true,
          characterData: true,
          subtree: true,
        });
      }
    });
    const before = requests.length;
    await until(() => Promise.resolve(requests.length > before + 40), true);
    assert.deepEqual(await page.evaluate(() => window.news), []);
    await go("#/tables/portinfo");
    await until(() => page.locator("table.rows tbody tr").count(), 8);
    await page
      .getByRole("columnheader", { name: /^speed/ })
      .getByRole("button")
      .click();
    await until(() => page.evaluate(() => document.getElementById("news").textContent), "Sorted by speed, rising.");
  },
);

with_page(
  "nothing is animated, for those who ask for less motion nor for others",
  "#/device",
  { every: 30, reducedMotion: "reduce" },
  async (page) => {
    await settled(page);
    const moving = await page.evaluate(() => document.getAnimations().length);
    assert.equal(moving, 0);
  },
);

with_page(
  "states differ in shape, not in colour alone",
  "#/device",
  { every: 30, forcedColors: "active" },
  async (page) => {
    await until(() => page.locator(".panel a").count(), 8);
    const shapes = await page.evaluate(async () => {
      const { shape } = await import("./js/dom.js");
      return ["good", "warn", "bad", "none"].map((state) => shape(state).innerHTML.replace(/class="[^"]*"/g, ""));
    });
    assert.equal(new Set(shapes).size, 4);
  },
);

test.after(() => tell("clear"));
