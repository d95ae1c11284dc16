// The plots, and what refreshes: one request for all that is shown, nothing flickers,
// and the page does not grow.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";
import { cells, tell, text_of, until, visit, when, with_page } from "./browser.mjs";

const boards = (page) => page.locator("main .card").evaluateAll((list) => list.map((board) => board.dataset.field));
const values = (page, field) => cells(page, `[data-field="${field}"] tbody`);
const number = (text) => Number(text.replaceAll(",", ""));
const moving = (page) =>
  until(
    () => values(page, "octets_in").then((lines) => lines.length > 0 && lines.every((line) => number(line[1]) > 0)),
    true,
  );

// How many requests begin in a second: one that was about to begin comes within it.
async function asked_in_a_second(page, requests) {
  const before = requests.length;
  await page.waitForTimeout(1000);
  return requests.length - before;
}

async function saved(page) {
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("button", { name: "Save as CSV" }).click(),
  ]);
  return readFileSync(await download.path(), "utf8")
    .trimEnd()
    .split("\r\n")
    .map((line) => line.split(","));
}

with_page(
  "one request a refresh reads all ports that are shown",
  "#/ports",
  { every: 0.3 },
  async (page, { requests }) => {
    await moving(page);
    assert.deepEqual(await boards(page), ["octets_in", "octets_out"]);
    assert.deepEqual(
      (await values(page, "octets_in")).map(([port]) => port),
      ["ge1", "ge2", "ge3", "ge4"],
    );
    await page.getByRole("checkbox", { name: "ge8" }).check();
    await page.getByRole("checkbox", { name: "ge1" }).uncheck();
    await until(
      () => values(page, "octets_out").then((lines) => lines.map(([port]) => port)),
      ["ge2", "ge3", "ge4", "ge8"],
    );
    await moving(page);
    const before = requests.length;
    await until(() => Promise.resolve(requests.length >= before + 4), true);
    const later = requests.slice(before);
    assert.deepEqual([...new Set(later.map((request) => new URL(request.url()).pathname))], ["/api/all"]);
    const { calls, seconds } = later.at(-1).postDataJSON();
    assert.equal(seconds, 1);
    assert.deepEqual(
      calls.map((call) => [call.table, call.key.port]),
      [
        ["portstat", 2],
        ["portstat", 3],
        ["portstat", 4],
        ["portstat", 8],
      ],
    );
  },
);

with_page("refreshes come once a second where nobody says otherwise", "#/ports", {}, async (page, { requests }) => {
  await moving(page);
  const times = () =>
    requests
      .filter((request) => request.url().endsWith("/api/all"))
      .map((request) => request.timing().startTime)
      .filter((at) => at > 0);
  await until(() => Promise.resolve(times().length >= 6), true);
  const steps = times()
    .slice(-4)
    .map((at, i, all) => at - all[i - 1])
    .slice(1);
  // twice as often would be seen, however late a busy machine is with one of them
  const [median] = steps.sort((a, b) => a - b).slice(1);
  assert.ok(median > 700, `${steps}`);
});

with_page(
  "a rate is the growth of the counter over the time between two readings",
  "#/ports",
  {
    every: 0.4,
    before: (context) => {
      let read = 0;
      return context.route("**/api/all", (route) => {
        const { calls } = route.request().postDataJSON();
        read += 1;
        // 2^64 - 1500 and on: the counter passes its end between the second reading and the third
        const total = BigInt.asUintN(64, (1n << 64n) - 2500n + BigInt(read) * 1000n);
        const results = calls.map(({ key }) =>
          key.port === 2 && read > 2
            ? { failure: { code: "timed_out", message: "the daemon is late" } }
            : { row: { port: key.port, octets_in: String(total), octets_out: "7" } },
        );
        return route.fulfill({ json: { results } });
      });
    },
  },
  async (page) => {
    await until(
      () => values(page, "octets_in").then((lines) => lines.length === 4 && number(lines[0][1]) > 1000),
      true,
    );
    await until(() => page.locator(".slider").evaluate((slider) => Number(slider.max) > 4), true);
    const [, ...table] = await saved(page);
    for (const [i, line] of table.entries()) {
      const grown = (Number(line[1]) * (Date.parse(line[0]) - Date.parse(table[Math.max(i - 1, 0)][0]))) / 1000;
      assert.ok(i === 0 ? line[1] === "" : Math.abs(grown - 1000) < 20, `${grown} in ${table.join(" ")}`);
    }
    assert.deepEqual((await values(page, "octets_out"))[0].slice(1), ["0", "0", "0"]);
    await until(() => values(page, "octets_in").then((lines) => /the daemon is late/.test(lines[1][0])), true);
    assert.equal((await values(page, "octets_in"))[1][1], "–");
    await page.getByLabel("Show").selectOption("total");
    await until(() => values(page, "octets_out").then((lines) => lines[0]?.[1]), "7");
  },
);

with_page(
  "pause stops the requests, and going on starts them",
  "#/ports",
  { every: 0.2 },
  async (page, { requests }) => {
    await moving(page);
    await page.getByRole("button", { name: "Pause" }).click();
    assert.equal(await page.getByRole("button", { name: "Pause" }).getAttribute("aria-pressed"), "true");
    await until(() => asked_in_a_second(page, requests), 0);
    const before = requests.length;
    await page.getByRole("button", { name: "Pause" }).click();
    await until(() => Promise.resolve(requests.length > before + 2), true);
  },
);

with_page(
  "the pointer and the keyboard tell the values of a moment, in all plots",
  "#/ports",
  { every: 0.2 },
  async (page, { requests }) => {
    await moving(page);
    await until(() => page.locator(".slider").evaluate((slider) => Number(slider.max) > 12), true);
    await page.getByRole("button", { name: "Pause" }).click();
    await until(() => asked_in_a_second(page, requests), 0);
    assert.match(await text_of(page, ".at"), /the latest/);
    const latest = await values(page, "octets_in");
    await page.getByLabel("Values at").focus();
    for (let presses = 0; presses < 3; presses++) await page.keyboard.press("ArrowLeft");
    assert.doesNotMatch(await text_of(page, ".at"), /the latest/);
    assert.notDeepEqual(
      (await values(page, "octets_in")).map((line) => line[1]),
      latest.map((line) => line[1]),
    );
    assert.match(await page.getByLabel("Values at").getAttribute("aria-valuetext"), /^\d\d:\d\d:\d\d$/);
    await page.keyboard.press("End");
    assert.match(await text_of(page, ".at"), /the latest/);
    const area = await page.locator('[data-field="octets_in"] .u-over').boundingBox();
    await page.mouse.move(area.x + area.width - 4, area.y + 20);
    await page.mouse.move(area.x + area.width - 8, area.y + 30);
    await until(() => text_of(page, ".at").then((text) => /the latest/.test(text)), false);
    await page.mouse.move(5, 5);
    await until(() => text_of(page, ".at").then((text) => /the latest/.test(text)), true);
  },
);

with_page("CSV holds the values of the range, a column for each line", "#/ports", { every: 0.2 }, async (page) => {
  await moving(page);
  await page.getByRole("checkbox", { name: "ge3" }).uncheck();
  await page.getByRole("checkbox", { name: "ge4" }).uncheck();
  const [head, ...lines] = await saved(page);
  assert.deepEqual(head, [
    "time",
    "ge1 octets_in per second",
    "ge2 octets_in per second",
    "ge1 octets_out per second",
    "ge2 octets_out per second",
  ]);
  assert.ok(lines.length > 1);
  for (const line of lines) {
    assert.equal(line.length, head.length);
    assert.ok(!Number.isNaN(Date.parse(line[0])), line[0]);
  }
  assert.ok(
    lines
      .at(-1)
      .slice(1)
      .every((value) => Number(value) > 0),
    lines.at(-1).join(),
  );
});

with_page("any table with counters of ports can be plotted", "#/ports", { every: 0.2 }, async (page) => {
  await moving(page);
  const options = await page.getByLabel("Table").locator("option").allInnerTexts();
  assert.ok(options.includes("Port rates"), options.join());
  await page.getByLabel("Table").selectOption({ label: "Port rates" });
  await page.getByLabel("Show").selectOption("total");
  await until(
    () => values(page, "rate0").then((lines) => lines.length === 4 && lines.every((line) => /\d/.test(line[1]))),
    true,
  );
});

with_page(
  "without the plot library the values stand in the tables",
  "#/ports",
  {
    every: 0.3,
    before: (context) => context.route("**/vendor/*.js", (route) => route.abort()),
  },
  async (page) => {
    await moving(page);
    assert.match(await text_of(page, ".failure:visible"), /plot library cannot be loaded/);
    assert.equal(await page.locator(".plot:visible").count(), 0);
  },
);

test("a refresh leaves what is selected, what has the focus and every element in place", async () => {
  for (const [hash, selected, ready] of [
    ["#/device", "#identity dd bdi", ".panel a"],
    ["#/ports", "main .card tbody bdi", "main .card tbody td"],
  ]) {
    const visitor = await visit(hash, { every: 0.2 });
    const { page, requests } = visitor;
    await page.locator(ready).nth(3).waitFor();
    await page.locator(selected).first().waitFor();
    // a refresh begins when the one before is shown, plots when there are two readings
    const asked = () => Promise.resolve(requests.filter((request) => request.url().includes("/api/")).length > 15);
    await until(asked, true);
    if (hash === "#/ports") await until(() => page.locator("main .uplot").count(), 2);
    await page.evaluate((what) => {
      window.gone = [];
      new MutationObserver((changes) => {
        for (const change of changes) {
          for (const node of change.removedNodes) {
            if (node.nodeType === 1) window.gone.push(node.outerHTML.slice(0, 80));
          }
          for (const node of change.addedNodes) {
            if (node.nodeType === 1) window.gone.push(`new ${node.outerHTML.slice(0, 80)}`);
          }
        }
      }).observe(document.querySelector("main"), { childList: true, subtree: true });
      getSelection().selectAllChildren(document.querySelector(what));
    }, selected);
    const link = page.locator(hash === "#/device" ? ".panel a" : "main input[type=checkbox]").nth(2);
    await link.focus();
    const before = [await page.evaluate(() => String(getSelection())), requests.length];
    assert.notEqual(before[0], "");
    await until(() => Promise.resolve(requests.length > before[1] + 15), true);
    assert.equal(await page.evaluate(() => String(getSelection())), before[0]);
    assert.equal(await link.evaluate((node) => node === document.activeElement), true);
    assert.deepEqual(await page.evaluate(() => window.gone), []);
    await visitor.leave();
  }
});

test("a page that nobody sees asks nothing", async () => {
  const visitor = await visit("#/device", { every: 0.1 });
  const { page, requests } = visitor;
  await until(() => page.locator(".panel a").count(), 8);
  await page.evaluate(() => {
    Object.defineProperty(document, "hidden", { get: () => window.unseen, configurable: true });
    window.unseen = true;
    document.dispatchEvent(new Event("visibilitychange"));
  });
  await until(() => asked_in_a_second(page, requests), 0);
  const before = requests.length;
  await page.evaluate(() => {
    window.unseen = false;
    document.dispatchEvent(new Event("visibilitychange"));
  });
  await until(() => Promise.resolve(requests.length > before), true);
  await visitor.leave();
});

// What the page holds once it was cleaned up: megabytes of the script's heap, elements.
async function held(page) {
  const session = await page.context().newCDPSession(page);
  await session.send("HeapProfiler.enable");
  await session.send("HeapProfiler.collectGarbage");
  const { usedSize } = await session.send("Runtime.getHeapUsage");
  const { nodes, jsEventListeners } = await session.send("Memory.getDOMCounters");
  await session.detach();
  return { megabytes: usedSize / 1e6, nodes, listeners: jsEventListeners };
}

for (const [hash, path] of [
  ["#/device", "/api/health"],
  ["#/ports", "/api/all"],
]) {
  test(`600 refreshes of ${hash} leave the page as large as it was`, async () => {
    const visitor = await visit(hash, { every: 0.02 });
    const { page } = visitor;
    let refreshes = 0;
    page.on("requestfinished", (request) => {
      refreshes += new URL(request.url()).pathname === path;
    });
    visitor.requests.length = 0;
    await until(() => Promise.resolve(refreshes > 60), true, 300);
    const before = await held(page);
    const begun = refreshes;
    await until(
      () => {
        visitor.requests.length = 0;
        return Promise.resolve(refreshes >= begun + 600);
      },
      true,
      600,
    );
    const after = await held(page);
    // the samples of 600 refreshes are 4 ports x 10 counters x 2 numbers x 8 bytes x 600 = 0.4 MB
    assert.ok(after.megabytes < before.megabytes + 2, `${after.megabytes} MB after ${before.megabytes}`);
    assert.ok(after.nodes < before.nodes + 200, `${after.nodes} nodes after ${before.nodes}`);
    assert.ok(after.listeners < before.listeners + 50, `${after.listeners} listeners after ${before.listeners}`);
    await visitor.leave();
  });
}

test("views that were left leave nothing behind", async () => {
  const visitor = await visit("#/device", { every: 0.2 });
  const { page } = visitor;
  const round = async () => {
    for (const hash of ["#/ports", "#/tables", "#/tables/portinfo", "#/row/portinfo?port=3", "#/device"]) {
      await visitor.go(hash);
      await when(page, () => !/Reading …|Asking/.test(document.querySelector("main").innerText));
    }
  };
  for (let rounds = 0; rounds < 3; rounds++) await round();
  const before = await held(page);
  for (let rounds = 0; rounds < 15; rounds++) await round();
  const after = await held(page);
  assert.ok(after.megabytes < before.megabytes + 2, `${after.megabytes} MB after ${before.megabytes}`);
  assert.ok(after.nodes < before.nodes + 1500, `${after.nodes} nodes after ${before.nodes}`);
  await visitor.leave();
});

test.after(() => tell("clear"));
