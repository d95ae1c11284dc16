// A drawing of the ports: link, speed and new errors by shape, word and colour. The
// ports are the rows of the table whose fields have the roles port and link; the
// errors come from the table whose fields have port and errors.
import { h, say, set, keyed, plain, svg } from "./dom.js";
import * as gateway from "./gateway.js";
import { table_with, field_with, to_row, key_of } from "./model.js";
import { speed, growth, count, value_text } from "./format.js";
import { failure_part } from "./parts.js";

// Words for "no" that a link or a switch may have.
const negative = new Set(["down", "off", "no", "none", "disabled", "inactive", "false", "0"]);
export const is_on = (value) => !negative.has(String(value ?? "").toLowerCase());

// A socket: filled where the link is up, hollow where it is down, crossed out where
// the port is switched off.
const outline = "M4 40V14h8V7h5V3h14v4h5v7h8v26z";
function socket(state) {
  const marks = [svg("path", { d: outline, class: "jack" })];
  if (state === "up") marks.push(svg("path", { d: "M15 26l6 6 12-13", class: "tick-mark" }));
  if (state === "off") marks.push(svg("path", { d: "M6 6l36 36M42 6L6 42", class: "cross-mark" }));
  if (state === "unknown") marks.push(svg("path", { d: "M19 20a5 5 0 1 1 6 5v4M24 33v3", class: "tick-mark" }));
  return svg("svg", { viewBox: "0 0 48 44", class: `socket ${state}`, "aria-hidden": "true", focusable: "false" }, ...marks);
}

const warning = () => svg("svg", { viewBox: "0 0 16 16", class: "shape warn badge", "aria-hidden": "true", focusable: "false" },
  svg("path", { d: "M8 1 15.5 14.5H.5z" }), svg("path", { d: "M7.2 6h1.6v4H7.2zM7.2 11.2h1.6v1.6H7.2z", class: "hole" }));

const words = { up: "up", down: "down", off: "switched off", unknown: "unknown" };

function make_port() {
  const name = h("bdi", { class: "name" });
  const link_word = h("span", { class: "word" });
  const rate = h("span", { class: "rate" });
  const errors = h("span", { class: "errors", hidden: true }, warning(), h("span", {}));
  const link = h("a", {}, socket("unknown"), name, link_word, rate, errors);
  let drawn = "unknown";
  return {
    node: h("li", {}, link),
    update(port) {
      if (port.state !== drawn) {
        link.firstChild.replaceWith(socket(port.state));
        drawn = port.state;
      }
      set(link, "href", port.href);
      set(link, "data-state", port.state);
      say(name, port.name);
      say(link_word, words[port.state]);
      say(rate, port.state === "up" ? port.speed : "");
      set(errors, "hidden", !port.errors);
      if (port.errors) say(errors.lastChild, `+${count(port.errors)} errors`);
    },
  };
}

export function front_panel(summary, retry) {
  const table = table_with("port", "link");
  if (!table) return null;
  const counted = table_with("port", "errors_in") ?? table_with("port", "errors_out");
  const failure = failure_part(retry);
  const errors_failure = failure_part(retry);
  const list = h("ul", { class: "panel", "aria-label": "Ports" });
  const key = h("p", { class: "legend" }, ["up", "down", "off"].map((state) => h("span", {}, socket(state), words[state])),
    counted && h("span", {}, warning(), "new errors"));
  const node = h("section", { class: "card wide", id: "panel" }, h("h2", {}, "Front panel"), failure.node, errors_failure.node, list, key);

  const roles = Object.fromEntries(["port", "port_name", "enabled", "link", "speed"].map((role) => [role, field_with(table, role)]));
  const error_fields = counted ? [field_with(counted, "errors_in"), field_with(counted, "errors_out")].filter(Boolean) : [];
  const counted_port = counted && field_with(counted, "port");
  const before = new Map(); // port -> its error counters at the refresh before

  function new_errors(result) {
    const found = new Map();
    if (!result) return found;
    errors_failure.update(result.failure ?? null);
    for (const row of result.rows ?? []) {
      const port = row[counted_port.name];
      const now = error_fields.map((field) => String(row[field.name] ?? ""));
      const old = before.get(port);
      before.set(port, now);
      if (old) found.set(port, now.reduce((sum, value, i) => sum + (growth(value, old[i]) ?? 0), 0));
    }
    return found;
  }

  function state_of(row) {
    if (roles.enabled && !is_on(row[roles.enabled.name])) return "off";
    if (row[roles.link.name] === undefined) return "unknown";
    return is_on(row[roles.link.name]) ? "up" : "down";
  }

  async function read(signal) {
    try {
      const walks = [{ table: table.table }, ...(counted && counted !== table ? [{ table: counted.table }] : [])];
      const [ports, statistics] = await gateway.rows(walks, { signal });
      failure.update(ports.failure ?? null);
      const errors = new_errors(counted === table ? ports : statistics);
      if (ports.failure && ports.rows.length === 0) {
        summary.fact("ports", "bad", "The ports cannot be read");
        return;
      }
      const shown = ports.rows.map((row) => {
        const number = row[roles.port.name];
        const named = roles.port_name && row[roles.port_name.name];
        return {
          number, href: to_row(table, key_of(table, row)), state: state_of(row), errors: errors.get(number) ?? 0,
          name: named || value_text(roles.port, number), speed: roles.speed ? speed(roles.speed, row[roles.speed.name]) : "",
        };
      });
      keyed(list, shown, (port) => port.number, make_port);
      const up = shown.filter((port) => port.state === "up").length;
      summary.fact("ports", up ? "good" : "none", `${count(up)} of ${count(shown.length)} ports are up`);
      const bad = shown.filter((port) => port.errors > 0);
      const names = bad.length > 3 ? `${count(bad.length)} ports` : bad.map((port) => plain(port.name)).join(", ");
      if (errors.size) summary.fact("errors", bad.length ? "warn" : "good", bad.length ? `New errors at ${names}` : "No new errors");
    } catch (problem) {
      if (problem.code !== "stopped") failure.update(problem);
    }
  }
  return { node, read };
}
