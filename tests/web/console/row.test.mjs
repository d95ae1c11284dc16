// One row as a form: typed, checked, shown before and after, and two people at it.
import assert from "node:assert/strict";
import test from "node:test";
import { call, tell, text_of, until, visit, with_page } from "./browser.mjs";

const port = (number) => call("oltmib_portinfo_get_1", String(number));
const review = (page) => page.getByRole("button", { name: "Show what will change" }).click();
const heading = (page, name) => page.getByRole("heading", { name }).waitFor();
const differences = (page) =>
  page
    .locator("table.difference tbody tr")
    .evaluateAll((lines) => lines.map((line) => Array.from(line.cells, (cell) => cell.innerText)));
const wrong = (page, field) => page.locator(`[data-field="${field}"] .wrong`);

with_page(
  "a port is changed: shown before it is sent, before and after afterwards",
  "#/row/portinfo?port=3",
  {},
  async (page) => {
    await page.getByLabel("description").fill("customer 33");
    await page.getByLabel("enabled").selectOption("off");
    await page.getByLabel("MTU").fill("1600");
    await review(page);
    await heading(page, "What will change");
    const planned = [
      ["description", "customer 3", "customer 33"],
      ["enabled", "on", "off"],
      ["MTU", "1500", "1600"],
    ];
    const shown = (await differences(page)).map((line) => line.map((text) => text.replace(/^1,(\d{3})$/, "1$1")));
    assert.deepEqual(shown, planned);
    assert.equal(port(3)[2], "customer 3", "nothing is sent yet");
    await page.getByRole("button", { name: "Send these 3 changes" }).click();
    await heading(page, "Changed");
    assert.deepEqual((await differences(page)).map(([field]) => field).sort(), ["MTU", "description", "enabled"]);
    const row = port(3);
    assert.deepEqual([row[2], row[3], row[11]], ["customer 33", "0", "1600"]);
    await until(() => page.getByLabel("description").inputValue(), "customer 33");
    assert.equal(await page.locator(".changed:visible").count(), 0);
    // what nobody changed is as it was
    assert.deepEqual([row[1], row[4], row[8]], ["ge3", "1", "auto"]);
  },
);

with_page("going back from what will change loses nothing", "#/row/portinfo?port=4", {}, async (page) => {
  await page.getByLabel("description").fill("somebody else");
  await review(page);
  await page.getByRole("button", { name: "Back to the form" }).click();
  assert.equal(await page.getByLabel("description").inputValue(), "somebody else");
  await page.getByRole("button", { name: "Drop the changes" }).click();
  assert.equal(await page.getByLabel("description").inputValue(), "customer 4");
  await review(page);
  await until(() => page.getByText("Nothing was changed yet.").first().isVisible(), true);
  assert.equal(port(4)[2], "customer 4");
});

with_page("each mistake stands beside its field as it is typed", "#/row/vlaninfo?vlan=10", {}, async (page) => {
  const name = page.getByLabel("name", { exact: true });
  await name.fill("x".repeat(40));
  await until(() => wrong(page, "name").innerText(), "✕ Expected at most 32 bytes.".slice(2));
  assert.equal(await name.getAttribute("aria-invalid"), "true");
  const described = (await name.getAttribute("aria-describedby")).split(" ");
  const told = await Promise.all(described.map((id) => page.locator(`#${id}`).textContent()));
  assert.ok(told.includes("Expected at most 32 bytes."), told.join());
  await name.fill("a&b");
  await until(async () => /without .*&/.test(await wrong(page, "name").innerText()), true);
  await name.fill("phones");
  await until(() => wrong(page, "name").isHidden(), true);
  assert.equal(await name.getAttribute("aria-invalid"), null);
});

with_page(
  "the gateway decides what is wrong, where the browser cannot tell",
  "#/row/portinfo?port=4",
  {
    before: (context) =>
      context.route("**/api/check", (route) =>
        route.fulfill({
          json: {
            wrong: {
              description: {
                code: "bad_text",
                message: 'oltmib_portinfo_set_1: description: expected another word, found "x"',
                limits: {},
              },
            },
          },
        }),
      ),
  },
  async (page) => {
    await page.getByLabel("description").fill("x");
    await until(() => wrong(page, "description").innerText(), 'Expected another word, found "x"');
    await review(page);
    assert.equal(await page.getByLabel("description").evaluate((node) => node === document.activeElement), true);
    assert.equal(await page.getByRole("heading", { name: "What will change" }).count(), 0);
  },
);

with_page(
  "numbers, addresses and lists are checked by their kinds",
  "#/row/portinfo?port=4",
  {},
  async (page, { go }) => {
    await page.getByLabel("speed").fill("fast");
    await until(
      async () => /Expected a number from -2147483648 to 2147483647/.test(await wrong(page, "speed").innerText()),
      true,
    );
    await page.getByLabel("speed").fill("99999999999");
    await until(async () => /Expected a number from/.test(await wrong(page, "speed").innerText()), true);
    await page.getByLabel("speed").fill("-5");
    await until(() => wrong(page, "speed").isHidden(), true);
    await go("#/row/cos2queue");
    await page.getByLabel("queue").fill("1,2,3");
    await until(() => wrong(page, "queue").innerText(), "Expected 8 numbers with commas between.");
    await page.getByLabel("queue").fill("7,6,5,4,3,2,1,0");
    await until(() => wrong(page, "queue").isHidden(), true);
    await review(page);
    await page.getByRole("button", { name: "Send this change" }).click();
    await heading(page, "Changed");
    assert.equal(call("oltmib_cos2queue_get_1", "")[0], "7,6,5,4,3,2,1,0");
    await go("#/row/devinfo");
    await page.getByLabel("MAC address").fill("00-1E-80");
    await until(() => wrong(page, "mac").innerText(), "Expected a MAC address like 00-1E-80-AA-00-01.");
  },
);

test("two people at one row: the second is told what changed, and nothing is overwritten unseen", async () => {
  const ann = await visit("#/row/vlaninfo?vlan=20");
  const ben = await visit("#/row/vlaninfo?vlan=20", { user: "ben" });
  await ann.page.getByLabel("untagged ports").fill("ge1,ge8");
  await ben.page.getByLabel("name", { exact: true }).fill("films");
  await review(ben.page);
  await ben.page.getByRole("button", { name: "Send this change" }).click();
  await heading(ben.page, "Changed");
  await review(ann.page);
  await ann.page.getByRole("button", { name: "Send this change" }).click();
  await heading(ann.page, "Somebody else changed this row meanwhile");
  assert.deepEqual(await differences(ann.page), [["name", "video", "films"]]);
  assert.equal(call("oltmib_vlaninfo_get_1", "20")[4], "ge1,ge7,ge8", "nothing of ann's was sent");
  await ann.page.getByRole("button", { name: /keep my changes/ }).click();
  await heading(ann.page, "What will change");
  assert.deepEqual(await differences(ann.page), [["untagged ports", "ge1,ge7,ge8", "ge1,ge8"]]);
  await ann.page.getByRole("button", { name: "Send this change" }).click();
  await heading(ann.page, "Changed");
  const row = call("oltmib_vlaninfo_get_1", "20");
  assert.deepEqual([row[2], row[4]], ["films", "ge1,ge8"], "both changes stand");
  await ann.leave();
  await ben.leave();
});

with_page("who may only read gets no form", "#/row/portinfo?port=1", { user: "guest" }, async (page, { go }) => {
  await page.getByText("You may read this table, not change it.").waitFor();
  assert.equal(await page.locator("main input, main select").count(), 0);
  await until(async () => /uplink to the core/.test(await page.locator("main .pairs").first().innerText()), true);
  await go("#/tables/portinfo");
  await page.locator("table.rows tbody tr").first().waitFor();
  assert.equal(await page.getByRole("link", { name: "Add a row" }).count(), 0);
});

with_page(
  "a row is added, and one that is there already is not overwritten",
  "#/tables/vlaninfo",
  {},
  async (page, { go }) => {
    await page.getByRole("link", { name: "Add a row" }).click();
    await page.getByLabel("name", { exact: true }).fill("cameras");
    await review(page);
    await until(() => wrong(page, "vlan").innerText(), "Expected what says which row it is.");
    await page.getByLabel("vlan").fill("30");
    await page.getByLabel("active").selectOption("on");
    await review(page);
    await page.getByRole("button", { name: "Send these 3 changes" }).click();
    await heading(page, "Changed");
    assert.equal(call("oltmib_vlaninfo_get_1", "30")[2], "cameras");
    await page.getByRole("link", { name: "The new row" }).click();
    await until(() => page.getByLabel("name", { exact: true }).inputValue(), "cameras");
    await go("#/add/vlaninfo");
    await page.getByLabel("vlan").fill("10");
    await page.getByLabel("name", { exact: true }).fill("mine");
    await review(page);
    await page.getByRole("button", { name: "Send these 2 changes" }).click();
    await until(() => page.locator(".failure:visible").getAttribute("data-code"), "row_exists");
    assert.notEqual(call("oltmib_vlaninfo_get_1", "10")[2], "mine");
  },
);

with_page("a secret is set without being seen", "#/row/account?user=guest", {}, async (page) => {
  const box = page.getByLabel("password");
  assert.equal(await box.getAttribute("type"), "password");
  assert.equal(await box.inputValue(), "");
  await page.getByLabel("level").fill("2");
  await review(page);
  await page.getByRole("button", { name: "Send this change" }).click();
  await heading(page, "Changed");
  assert.equal(call("oltmib_account_get_1", "0&guest")[3], "guest", "a secret that nobody typed stays");
  await box.fill("open sesame");
  await review(page);
  await heading(page, "What will change");
  assert.deepEqual(await differences(page), [["password", "secret", "a new secret"]]);
  await page.getByRole("button", { name: "Send this change" }).click();
  await heading(page, "Changed");
  assert.equal(call("oltmib_account_get_1", "0&guest")[3], "open sesame");
  assert.doesNotMatch(await page.locator("main").innerText(), /sesame/);
});

with_page(
  "what was typed and not sent is still there after another view, but for secrets",
  "#/row/account?user=admin",
  {},
  async (page, { go }) => {
    await page.getByLabel("level").fill("7");
    await page.getByLabel("password").fill("forget me");
    await go("#/device");
    await page.locator(".verdict").waitFor();
    await go("#/row/account?user=admin");
    await page.getByText("What you typed before and did not send is still here.").waitFor();
    assert.equal(await page.getByLabel("level").inputValue(), "7");
    assert.equal(await page.getByLabel("password").inputValue(), "");
    await page.getByRole("button", { name: "Drop the changes" }).click();
    assert.equal(await page.getByLabel("level").inputValue(), "15");
  },
);

with_page("a table that only takes is a form for its API", "#/tables/vlanbitmapinfo", {}, async (page) => {
  await heading(page, "oltmib_vlanbitmapinfo_set_1");
  await page.getByLabel("vlan").fill("77");
  await page.getByLabel("bitmap").fill("80");
  await review(page);
  await page.getByRole("button", { name: "Send" }).click();
  await heading(page, "Changed");
});

with_page("rows that cannot be listed are asked for", "#/tables/devcapint", {}, async (page) => {
  await page.getByLabel("item").fill("ports");
  await page.getByRole("button", { name: "Read the row" }).click();
  await until(() => text_of(page, "h1"), "Capabilities, numbers: item ports");
  await until(async () => /8/.test(await page.locator("main .pairs").first().innerText()), true);
});

with_page("the keyboard alone finds a port, changes it and sends it", "#/device", {}, async (page) => {
  await page.locator(".panel a").nth(1).waitFor();
  const focused = () =>
    page.evaluate(() =>
      (document.activeElement.labels?.[0]?.innerText ?? document.activeElement.innerText ?? "").trim(),
    );
  async function tab_to(pattern) {
    for (let presses = 0; presses < 120; presses++) {
      await page.keyboard.press("Tab");
      if (pattern.test(await focused())) {
        const outline = await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle);
        assert.notEqual(outline, "none", `a visible focus on ${pattern}`);
        return;
      }
    }
    assert.fail(`${pattern} is not reached`);
  }
  await tab_to(/^Skip to the content/);
  await tab_to(/^Tables$/);
  await page.keyboard.press("Enter");
  await until(() => page.evaluate(() => document.activeElement.innerText), "Tables");
  await tab_to(/^Search/);
  await page.keyboard.type("vlaninfo");
  await tab_to(/^VLANs$/);
  await page.keyboard.press("Enter");
  await page.locator("table.rows tbody tr").first().waitFor();
  await tab_to(/^1$/);
  await page.keyboard.press("Enter");
  await page.getByLabel("name", { exact: true }).waitFor();
  await tab_to(/^name$/);
  await page.keyboard.press("ControlOrMeta+a");
  await page.keyboard.type("by hand");
  await page.keyboard.press("Enter");
  await heading(page, "What will change");
  await tab_to(/^Send this change$/);
  await page.keyboard.press("Enter");
  await heading(page, "Changed");
  assert.equal(call("oltmib_vlaninfo_get_1", "1")[2], "by hand");
});

with_page(
  "the browser asks before typed text is lost with the page",
  "#/row/portinfo?port=5",
  { noted: false },
  async (page) => {
    await page.getByLabel("description").fill("not sent");
    const asked = page.waitForEvent("dialog");
    page.reload().catch(() => {});
    assert.equal((await asked).type(), "beforeunload");
  },
);

test.after(() => tell("clear"));
