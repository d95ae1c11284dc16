// What the console is made of: small, without inline code, and with a plot library that is
// the one that its maker publishes.
import assert from "node:assert/strict";
import { readFileSync, readdirSync, statSync } from "node:fs";
import { join, relative } from "node:path";
import test from "node:test";
import { address, modules, source, users } from "./browser.mjs";

const folder = join(source, "web", "console");
const most_bytes = 150000;

function files(under) {
  return readdirSync(under, { withFileTypes: true }).flatMap((entry) =>
    entry.isDirectory() ? files(join(under, entry.name)) : [relative(folder, join(under, entry.name))],
  );
}

const read = (name) => readFileSync(join(folder, name), "utf8");

test("the console takes at most 150 KB, with the plot library", () => {
  const bytes = files(folder).reduce((sum, name) => sum + statSync(join(folder, name)).size, 0);
  assert.ok(bytes <= most_bytes, `${bytes} bytes`);
  assert.ok(bytes > 80000, `${bytes} bytes: all of it was found`);
});

test("it is one page, one style sheet and plain modules", () => {
  const names = files(folder).filter((name) => !name.startsWith("vendor"));
  assert.deepEqual(
    names.filter((name) => name.endsWith(".html")),
    ["index.html"],
  );
  assert.deepEqual(
    names.filter((name) => name.endsWith(".css")),
    ["console.css"],
  );
  for (const name of names.filter((one) => one.endsWith(".js"))) {
    for (const [, from] of read(name).matchAll(/\bfrom "([^"]*)"/g)) assert.match(from, /^\.\/[a-z]+\.js$/, name);
  }
});

test("there is no inline code and no inline style, and nothing comes from elsewhere", () => {
  const page = read("index.html");
  assert.doesNotMatch(page, /<script(?![^>]*\bsrc=)/);
  assert.doesNotMatch(page, /<style|\sstyle=|\son[a-z]+=|javascript:/);
  for (const name of files(folder).filter((one) => !one.startsWith("vendor"))) {
    const addresses = read(name).match(/https?:\/\/[^\s"')]+/g) ?? [];
    assert.deepEqual(
      addresses.filter((one) => one !== "http://www.w3.org/2000/svg"),
      [],
      name,
    );
  }
});

test("the vendored plot library is, byte for byte, the one that the lock file pins", () => {
  const { version, license } = JSON.parse(readFileSync(join(modules, "uplot", "package.json"), "utf8"));
  const lock = JSON.parse(readFileSync(join(source, "tests", "web", "package-lock.json"), "utf8"));
  const pinned = lock.packages["node_modules/uplot"];
  assert.equal(pinned.version, version);
  assert.match(pinned.integrity, /^sha512-/); // which npm held the package against
  assert.equal(license, "MIT");
  const theirs = (name) => readFileSync(join(modules, "uplot", name), "utf8");
  assert.ok(read("vendor/uPlot.iife.min.js") === theirs("dist/uPlot.iife.min.js"), "its program");
  assert.ok(read("vendor/uPlot.LICENSE") === theirs("LICENSE"), "its licence");
  assert.match(read("vendor/uPlot.iife.min.js").slice(0, 100), new RegExp(`v${version.replaceAll(".", "\\.")}`));
  assert.deepEqual(files(join(folder, "vendor")).sort(), ["vendor/uPlot.LICENSE", "vendor/uPlot.iife.min.js"]);
});

test("the server gives each file with its type, and lets no page frame it", async () => {
  const headers = { Authorization: `Basic ${btoa(`ann:${users.ann}`)}` };
  const types = {
    html: "text/html",
    js: "text/javascript",
    css: "text/css",
    svg: "image/svg+xml",
    LICENSE: "text/plain",
  };
  for (const name of files(folder)) {
    const answer = await fetch(address + name, { headers });
    assert.equal(answer.status, 200, name);
    assert.ok(
      answer.headers.get("content-type").startsWith(types[name.split(".").pop()]),
      `${name}: ${answer.headers.get("content-type")}`,
    );
    assert.equal(answer.headers.get("x-content-type-options"), "nosniff", name);
    assert.match(answer.headers.get("content-security-policy"), /frame-ancestors 'none'/, name);
    await answer.arrayBuffer();
  }
});
