// One daemon down, slow or answering nonsense costs its own cells: they say why, and
// the rest of the page works and is there within the deadline.
import assert from "node:assert/strict";
import { readdirSync, readlinkSync } from "node:fs";
import test from "node:test";
import { cells, tell, text_of, until, visit, with_page } from "./browser.mjs";

const daemon = (page, service) => page.locator(`#daemons tr[data-service="${service}"]`);
const answering = (page) => page.locator("#daemons .state", { hasText: "answers" }).count();

test.beforeEach(() => tell("clear"));
test.after(() => tell("clear"));

with_page(
  "a daemon that is stopped is told with the reason, and a click finds it again",
  "#/device",
  { every: 600 },
  async (page) => {
    await until(() => answering(page), 15);
    tell("stop", "auth");
    await page.reload();
    await until(() => text_of(page, ".verdict"), "Not well: authentication");
    assert.match(await daemon(page, "auth").innerText(), /absent/);
  assert.doesNotMatch(await daemon(page, "auth").innerText(), /null|50010/);
    assert.match(await daemon(page, "auth").innerText(), /register/);
    assert.equal(await answering(page), 14);
    assert.equal(await text_of(page, ".facts li"), "14 of 15 daemons answer");
    await until(() => page.locator(".panel a").count(), 8);
    await page.locator("#identity .pairs > div").first().waitFor();
    tell("start", "auth");
    await daemon(page, "auth").getByRole("button", { name: "Try again" }).click();
    await until(() => text_of(page, ".verdict"), "The device is well");
    assert.equal(await answering(page), 15);
  },
);

with_page(
  "its tables say why they cannot be read, and a click reads them again",
  "#/tables/radsrv",
  {
    before: () => tell("stop", "auth"),
  },
  async (page, { go }) => {
    await until(() => page.locator(".failure:visible").getAttribute("data-code"), "no_daemon");
    await go("#/row/radglobal");
    await until(() => page.locator(".failure:visible").getAttribute("data-code"), "no_daemon");
    assert.equal(await page.locator("main form:visible").count(), 0);
    await go("#/tables/vlaninfo");
    await until(() => page.locator("table.rows tbody tr").count(), 3);
    tell("start", "auth");
    await go("#/row/radglobal");
    await until(() => page.getByLabel("identifier").inputValue(), "olt-lab-1");
    await go("#/tables/radsrv");
    await until(() => page.locator("table.rows tbody tr").count(), 2);
  },
);

// The program of the device beside this test: that of our own network.
function device_pid() {
  const network = readlinkSync("/proc/self/ns/net");
  return readdirSync("/proc")
    .filter((name) => /^\d+$/.test(name))
    .find((pid) => {
      try {
        return (
          readlinkSync(`/proc/${pid}/exe`) === process.env.SIM_DEVICE && readlinkSync(`/proc/${pid}/ns/net`) === network
        );
      } catch {
        return false; // it has ended
      }
    });
}

test("daemons that are silent are told, and the page is there", async () => {
  const visitor = await visit("#/device");
  const { page } = visitor;
  await until(() => answering(page), 15);
  const pid = Number(device_pid());
  process.kill(pid, "SIGSTOP");
  try {
    await page.reload();
    await until(() => text_of(page, ".verdict"), "No daemon answers");
    assert.match(await daemon(page, "auth").innerText(), /stuck/);
    for (const part of ["#identity", "#panel"]) await page.locator(`${part} .failure:visible`).first().waitFor();
    await page.getByRole("link", { name: "Tables" }).click();
    await until(
      () =>
        page
          .locator(".group li a")
          .count()
          .then((found) => found > 100),
      true,
    );
  } finally {
    process.kill(pid, "SIGCONT");
  }
  await visitor.go("#/device");
  await until(() => text_of(page, ".verdict"), "The device is well");
  await visitor.leave();
});

test("one service silent: its parts say why, the others are there", async () => {
  tell("fault", "devinfo", "drop");
  const visitor = await visit("#/device");
  const { page } = visitor;
  await until(() => page.locator(".panel a").count(), 8);
  await until(() => page.locator("#identity .failure:visible").getAttribute("data-code"), "timed_out");
  assert.equal(await page.locator("#panel .failure:visible, #changes .failure:visible").count(), 0);
  await visitor.leave();
});

test("the ports' own service slow: the panel says why, and keeps what it had", async () => {
  const visitor = await visit("#/device", { every: 0.5 });
  const { page } = visitor;
  await until(() => page.locator(".panel a").count(), 8);
  tell("fault", "nsminfo", "delay", "3000");
  await until(
    () =>
      page
        .locator("#panel .failure:visible")
        .count()
        .then((found) => found > 0),
    true,
  );
  assert.equal(await page.locator(".panel a").count(), 8);
  assert.match(await text_of(page, "#panel .failure:visible"), /Try again/);
  await page.locator("#identity .pairs > div").first().waitFor();
  assert.equal(await page.locator("#identity .failure:visible").count(), 0);
  tell("clear");
  await until(() => page.locator("#panel .failure:visible").count(), 0);
  await visitor.leave();
});

test("garbage from a daemon is told as such, where it stands", async () => {
  const visitor = await visit("#/device");
  const { page } = visitor;
  await until(() => answering(page), 15);
  tell("fault", "devinfo", "truncate", "3");
  await page.reload();
  await until(() => page.locator("#identity .failure:visible").getAttribute("data-code"), "bad_reply");
  assert.equal(await text_of(page, "#panel h2"), "Front panel");
  await until(() => page.locator(".panel a").count(), 8);
  tell("clear");
  await page.locator("#identity").getByRole("button", { name: "Try again" }).click();
  await until(() => page.locator("#identity .failure:visible").count(), 0);
  await page.locator("#identity .pairs > div").first().waitFor();
  await visitor.leave();
});

with_page("a reply of random bytes breaks no view", "#/tables/portinfo", {}, async (page, { go }) => {
  await until(() => page.locator("table.rows tbody tr").count(), 8);
  tell("fault", "nsminfo", "random", "0");
  for (const hash of ["#/tables/vlaninfo", "#/row/portinfo?port=3", "#/ports", "#/device", "#/tables/fdb"]) {
    await go(hash);
    await until(() => page.locator("main h1").count(), 1);
    await until(
      () =>
        page
          .locator("main")
          .innerText()
          .then((text) => !/Reading …|Asking/.test(text)),
      true,
    );
  }
});

test("one port's counters fail: its line says so, the others go on", async () => {
  const visitor = await visit("#/ports", { every: 0.2 });
  const { page } = visitor;
  await until(
    () =>
      cells(page, "main .card tbody").then((lines) => lines.length > 0 && lines.every((line) => /\d/.test(line[1]))),
    true,
  );
  // of the four ports that are read each time, one call in each four is dropped
  await page.getByRole("checkbox", { name: "ge2" }).uncheck();
  await page.getByRole("checkbox", { name: "ge3" }).uncheck();
  await page.getByRole("checkbox", { name: "ge4" }).uncheck();
  tell("fault", "oltmib_portstat_get_1", "error", "system_err");
  await until(() => page.locator("main .card tbody .failure:visible").first().getAttribute("data-code"), "rejected");
  assert.match(await text_of(page, "main .card tbody .failure:visible"), /Try again/);
  tell("clear");
  await until(() => page.locator("main .card tbody .failure:visible").count(), 0);
  await visitor.leave();
});

with_page(
  "a change that the daemon does not take is told, and stays typed",
  "#/row/portinfo?port=2",
  {},
  async (page) => {
    await page.getByLabel("description").fill("not taken");
    await page.getByRole("button", { name: "Show what will change" }).click();
    tell("fault", "oltmib_portinfo_set_1", "error", "system_err");
    await page.getByRole("button", { name: "Send this change" }).click();
    await until(() => page.locator("main .failure:visible").getAttribute("data-code"), "rejected");
    tell("clear");
    await page.getByRole("button", { name: "Send this change" }).click();
    await page.getByRole("heading", { name: "Changed" }).waitFor();
  },
);

with_page(
  "a server out of reach is told once, and found again",
  "#/device",
  { every: 0.3 },
  async (page, { context }) => {
    await until(() => answering(page), 15);
    await context.setOffline(true);
    await until(() => page.locator("#link").isVisible(), true);
    assert.match(await text_of(page, "#link"), /does not answer.*What is shown is of/);
    assert.equal(await answering(page), 15, "what was read last stays");
    await context.setOffline(false);
    await until(() => page.locator("#link").isVisible(), false);
    await until(() => text_of(page, ".verdict"), "The device is well");
  },
);

test("a gateway that answers no JSON, or nothing at first, is told and tried again", async () => {
  const visitor = await visit("#/device", {
    before: (context) => context.route("**/api/schema", (route) => route.fulfill({ status: 500, body: "<html>oops" })),
  });
  const { page, context } = visitor;
  await until(() => text_of(page, "h1"), "The console cannot start");
  assert.match(await text_of(page, ".failure"), /status 500.*not JSON/);
  await context.unroute("**/api/schema");
  await page.getByRole("button", { name: "Try again" }).click();
  await until(() => text_of(page, ".verdict"), "The device is well");
  await visitor.leave();
});
