// The device at a glance: is it well, what is it, which daemons answer, how are its
// ports, what was changed last. Each part is read and fails on its own.
import { h, say, set, keyed, plain, device_text } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, table_of_role, arranged, to_row } from "./model.js";
import { with_unit, ms, moment, count } from "./format.js";
import { live, interval } from "./live.js";
import { failure_part, heading, scroller, state_mark } from "./parts.js";
import { front_panel } from "./panel.js";

const usual_seconds = 5;

function card(title, settings, ...children) {
  return h("section", { class: "card", ...settings }, h("h2", {}, title), children);
}

function summary_part() {
  const state = state_mark("none", "Asking the daemons …");
  const facts = h("ul", { class: "facts" });
  const held = {};
  const node = h("div", { class: "summary", id: "summary" }, h("p", { class: "verdict" }, state.node), facts);
  return {
    node,
    verdict(kind, text) {
      state.update(kind, text);
    },
    fact(name, kind, text) {
      if (!held[name]) {
        held[name] = state_mark(kind, text);
        facts.append(h("li", {}, held[name].node));
      }
      held[name].update(kind, text);
    },
  };
}

function identity_part(retry) {
  const table = table_of_role("device");
  if (!table) return null;
  const list = h("dl", { class: "pairs" });
  const failure = failure_part(retry);
  const node = card("Identity", { id: "identity" }, failure.node, list);
  const { keys, content } = arranged(table);
  return {
    node,
    async read(signal) {
      try {
        const row = await gateway.row(table.table, {}, { signal });
        failure.update(null);
        const pairs = [...keys, ...content].map((field) => ({ field, text: with_unit(field, row[field.name]) }));
        keyed(list, pairs, ({ field }) => field.name, ({ field }) => {
          const value = device_text("");
          return { node: h("div", {}, h("dt", {}, field.title), h("dd", {}, value)), update: ({ text }) => say(value, text) };
        });
      } catch (problem) {
        if (problem.code !== "stopped") failure.update(problem);
      }
    },
  };
}

const daemon_words = { up: "answers", absent: "absent", stuck: "stuck" };

function daemons_part(summary, retry) {
  const body = h("tbody", {});
  const failure = failure_part(retry);
  const node = card("Daemons", { id: "daemons" }, failure.node, scroller("Daemons",
    h("table", {}, h("thead", {}, h("tr", {}, h("th", { scope: "col" }, "Daemon"), h("th", { scope: "col" }, "State"),
      h("th", { scope: "col", class: "number" }, "Answer, ms"))), body)));

  function make() {
    const name = h("bdi", {});
    const state = state_mark("none", "");
    const why = failure_part(retry, { small: true });
    const taken = h("td", { class: "number" });
    const row = h("tr", {}, h("th", { scope: "row" }, name), h("td", {}, state.node, " ", why.node), taken);
    return {
      node: row,
      update(service) {
        say(name, service.title || service.name);
        set(row, "data-service", service.name);
        state.update(service.state === "up" ? "good" : "bad", daemon_words[service.state] ?? plain(service.state));
        why.update(service.state === "up" ? null : service.failure ?? { message: "It does not answer." });
        say(taken, service.ms === undefined || service.ms === null ? "–" : ms(service.ms));
      },
    };
  }

  return {
    node,
    async read(signal) {
      try {
        const { services, well } = await gateway.health(signal);
        failure.update(null);
        keyed(body, services, (service) => service.name, make);
        const up = services.filter((service) => service.state === "up");
        const down = services.filter((service) => service.state !== "up");
        summary.fact("daemons", down.length ? "bad" : "good", `${count(up.length)} of ${count(services.length)} daemons answer`);
        if (well) summary.verdict("good", "The device is well");
        else if (up.length === 0) summary.verdict("bad", "No daemon answers");
        else summary.verdict("bad", `Not well: ${down.map((service) => plain(service.title || service.name)).join(", ")}`);
      } catch (problem) {
        if (problem.code === "stopped") return;
        failure.update(problem);
        summary.verdict("none", "Whether the device is well is not known");
      }
    },
  };
}

function log_part(retry) {
  const body = h("tbody", {});
  const none = h("p", { class: "quiet", hidden: true }, "No change was logged.");
  const failure = failure_part(retry);
  const table = h("table", {}, h("thead", {}, h("tr", {}, ["Time", "Who", "Table", "Row", "Fields", "Result"].map((title) =>
    h("th", { scope: "col" }, title)))), body);
  const node = card("Last changes", { id: "changes" }, failure.node, none, scroller("Last changes", table));
  const text_of = (value) => (value && typeof value === "object" ? Object.entries(value)
    .map(([name, part]) => (Array.isArray(value) ? String(part) : `${name} ${part}`)).join(", ") : String(value ?? ""));

  function make(change) {
    const known = model.tables.get(change.table);
    const fields = Array.isArray(change.fields) ? change.fields : Object.keys(change.fields ?? {});
    const titles = fields.map((name) => known?.by_name.get(name)?.title ?? name).join(", ");
    const key = change.key ?? {};
    const where = text_of(key) || "–";
    return {
      node: h("tr", {}, h("td", { class: "time" }, moment(change.time)), h("td", {}, device_text(text_of(change.user))),
        h("td", {}, known ? h("a", { href: to_row(known, key) }, known.title) : device_text(text_of(change.table))),
        [where, titles || "–", text_of(change.result)].map((text) => h("td", {}, h("div", { class: "clamp" }, device_text(text))))),
    };
  }

  return {
    node,
    async read(signal) {
      try {
        const { changes } = await gateway.log(signal);
        failure.update(null);
        set(none, "hidden", changes.length > 0);
        set(table, "hidden", changes.length === 0);
        const seen = new Map();
        keyed(body, changes, (change) => {
          const text = JSON.stringify(change);
          seen.set(text, (seen.get(text) ?? 0) + 1);
          return `${text}${seen.get(text)}`;
        }, make);
      } catch (problem) {
        if (problem.code !== "stopped") failure.update(problem);
      }
    },
  };
}

export function show_device() {
  let poll = null;
  const retry = () => poll?.now();
  const summary = summary_part();
  const parts = [identity_part(retry), front_panel(summary, retry), daemons_part(summary, retry), log_part(retry)].filter(Boolean);
  const node = h("div", { class: "view device" }, heading("Device"), summary.node,
    h("div", { class: "cards" }, parts.map((part) => part.node)));
  poll = live(interval(usual_seconds), (signal) => Promise.all(parts.map((part) => part.read(signal))));
  return { title: "Device", node, stop: poll.stop };
}
