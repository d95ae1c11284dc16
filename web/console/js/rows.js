// The rows of one table: filtered, sorted, in chosen columns, saved.
import { h, say, set, keyed, announce, download, device_text } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, arranged, key_of, to_row, service_title } from "./model.js";
import { compare, count, csv, time, value_text } from "./format.js";
import { keep, recall } from "./kept.js";
import { failure_part, heading, labelled, scroller } from "./parts.js";

const page_rows = 200; // drawn at a time
const walk_seconds = 2;

export function show_rows(table) {
  const { keys, content, more, closing } = arranged(table);
  const possible = [...keys, ...content, ...more, ...closing];
  const usual = [...keys, ...content].map((field) => field.name);
  const columns_name = `columns.${table.table}`;
  const remembered = recall(columns_name, null);
  const known = Array.isArray(remembered) ? remembered.filter((name) => table.by_name.has(name)) : [];
  let chosen = new Set(known.length ? known : usual);
  let rows = [];
  let ended = null; // what cut the walk short, if anything did
  let sorted = null; // { field, down }
  let page = 0;
  let read_at = null;
  let reading = null;
  const limit = model.limits.rows ?? 1000;

  const failure = failure_part(() => read());
  const cut = failure_part(() => read(true), { label: "Read on" });
  const status = h("p", { class: "quiet", id: "rows-status" }, "Reading …");
  const filter_box = h("input", { type: "search", autocomplete: "off", spellcheck: "false", "aria-describedby": "rows-status", on: { input: () => { page = 0; draw(); announce(status.textContent); } } });
  const head = h("tr", {});
  const body = h("tbody", {});
  const grid = h("table", { class: "rows" }, h("caption", { class: "unseen" }, table.title), h("thead", {}, head), body);
  const earlier = h("button", { type: "button", on: { click: () => turn(-1) } }, "Previous rows");
  const later = h("button", { type: "button", on: { click: () => turn(1) } }, "Next rows");
  const pages = h("p", { class: "bar", hidden: true }, earlier, later);
  const again = h("button", { type: "button", on: { click: () => read() } }, "Read again");

  const columns = () => possible.filter((field) => chosen.has(field.name));

  function turn(by) {
    page += by;
    draw();
    announce(status.textContent);
  }

  function sort_by(field) {
    if (sorted?.field !== field) sorted = { field, down: false };
    else if (!sorted.down) sorted = { field, down: true };
    else sorted = null;
    draw();
    announce(sorted ? `Sorted by ${field.title}, ${sorted.down ? "falling" : "rising"}.` : "In the device's order.");
  }

  function draw_head() {
    keyed(head, columns(), (field) => field.name, (field) => {
      const arrow = h("span", { class: "arrow", "aria-hidden": "true" });
      const button = h("button", { type: "button", class: "sort", title: field.description, on: { click: () => sort_by(field) } },
        field.title, field.unit ? h("span", { class: "unit" }, field.unit) : null, arrow);
      const cell = h("th", { scope: "col", class: is_number(field) ? "number" : null }, button);
      return {
        node: cell,
        update() {
          const own = sorted?.field === field;
          set(cell, "aria-sort", own ? (sorted.down ? "descending" : "ascending") : null);
          say(arrow, own ? (sorted.down ? "▼" : "▲") : "");
        },
      };
    });
  }

  const is_number = (field) => ["int", "unsigned", "counter", "real"].includes(field.kind) && !field.values;

  function make_row() {
    const tr = h("tr", {});
    return {
      node: tr,
      update({ row, link }) {
        const values = columns().map((field, place) => ({ field, place, value: value_text(field, row[field.name]) }));
        keyed(tr, values, ({ field, place }) => `${place === 0} ${field.name}`, ({ field, place }) => {
          const text = device_text("");
          const inner = place === 0 ? h("a", { href: link }, text) : text;
          const cell = h(place === 0 ? "th" : "td", { scope: place === 0 ? "row" : null, class: is_number(field) ? "number" : field.secret ? "quiet" : null }, h("div", { class: "clamp" }, inner));
          return { node: cell, update: ({ value }) => say(text, place === 0 && value === "" ? "(empty)" : value) };
        });
      },
    };
  }

  function shown_rows() {
    const words = filter_box.value.toLowerCase().split(/\s+/).filter(Boolean);
    const fields = columns();
    let found = rows;
    if (words.length) {
      found = found.filter((row) => {
        const text = fields.map((field) => value_text(field, row[field.name])).join("\n").toLowerCase();
        return words.every((word) => text.includes(word));
      });
    }
    if (sorted) {
      const { field, down } = sorted;
      const sign = down ? -1 : 1;
      found = [...found].sort((a, b) => sign * compare(field, a[field.name], b[field.name]));
    }
    return found;
  }

  function draw() {
    draw_head();
    const found = shown_rows();
    const last_page = Math.max(Math.ceil(found.length / page_rows) - 1, 0);
    page = Math.min(Math.max(page, 0), last_page);
    const part = found.slice(page * page_rows, (page + 1) * page_rows);
    const seen = new Map();
    keyed(body, part.map((row) => {
      const link = to_row(table, key_of(table, row));
      seen.set(link, (seen.get(link) ?? 0) + 1);
      return { row, link, key: `${link} ${seen.get(link)}` };
    }), (item) => item.key, make_row);
    set(pages, "hidden", last_page === 0);
    earlier.disabled = page === 0;
    later.disabled = page === last_page;
    const some = found.length === rows.length ? `${count(rows.length)} ${rows.length === 1 ? "row" : "rows"}` : `${count(found.length)} of ${count(rows.length)} rows`;
    const range = last_page ? `, ${count(page * page_rows + 1)} to ${count(page * page_rows + part.length)} shown` : "";
    if (!reading) say(status, `${some}${range}${read_at ? `, read at ${time(read_at)}` : ""}${ended ? ", not all" : ""}`);
  }

  const why_cut = {
    too_many_rows: () => `Cut short after ${count(rows.length)} rows: the table has more.`,
    deadline: () => `Cut short after ${count(rows.length)} rows: the time for a reading was over.`,
  };

  async function read(on = false) {
    reading?.abort();
    const own = new AbortController();
    reading = own;
    say(status, on ? "Reading on …" : "Reading …");
    try {
      const after = on && rows.length ? key_of(table, rows.at(-1)) : undefined;
      const [result] = await gateway.rows([{ table: table.table, after, limit }], { seconds: walk_seconds, signal: own.signal });
      if (reading !== own) return;
      rows = on ? [...rows, ...result.rows] : result.rows;
      read_at = new Date();
      ended = result.failure?.code ?? null;
      const known_cut = result.failure && rows.length > 0 && why_cut[result.failure.code];
      cut.update(known_cut ? { code: result.failure.code, message: known_cut() } : null);
      failure.update(result.failure && !known_cut ? { ...result.failure, message: `${result.failure.message}${rows.length ? ` – cut short after ${count(rows.length)} rows.` : ""}` } : null);
      if (result.ended === "res") cut.update({ code: "res", message: "The device ended the rows with a result that nobody explained: there may be more." });
      reading = null;
      draw();
      announce(result.failure ? "The rows are not all there." : status.textContent);
    } catch (problem) {
      if (problem.code === "stopped" || reading !== own) return;
      reading = null;
      failure.update(problem);
      draw();
    }
  }

  const as_saved = () => shown_rows();
  const file_name = (ending) => `${table.table}-${new Date().toISOString().replace(/[:.]/g, "-")}.${ending}`;
  function save_csv() {
    const fields = columns();
    download(file_name("csv"), "text/csv;charset=utf-8", csv([fields.map((field) => field.name), ...as_saved().map((row) => fields.map((field) => row[field.name]))]));
    announce("The rows shown were saved as CSV.");
  }
  function save_json() {
    const fields = columns();
    const plain_rows = as_saved().map((row) => Object.fromEntries(fields.map((field) => [field.name, row[field.name] ?? null])));
    download(file_name("json"), "application/json", `${JSON.stringify({ table: table.table, read: read_at?.toISOString() ?? null, complete: ended === null, rows: plain_rows }, null, 1)}\n`);
    announce("The rows shown were saved as JSON.");
  }

  const boxes = new Map();
  const column_box = (field) => {
    const box = h("input", { type: "checkbox", checked: chosen.has(field.name), on: { change: () => {
      if (box.checked) chosen.add(field.name);
      else chosen.delete(field.name);
      if (chosen.size === 0) {
        chosen.add(field.name);
        box.checked = true;
        announce("One column has to stay.");
      }
      keep(columns_name, possible.map((one) => one.name).filter((name) => chosen.has(name)));
      draw();
    } } });
    boxes.set(field.name, box);
    return h("label", { class: "tick" }, box, field.title);
  };
  const usual_button = h("button", { type: "button", class: "small", on: { click: () => {
    chosen = new Set(usual);
    for (const [name, box] of boxes) box.checked = chosen.has(name);
    keep(columns_name, null);
    draw();
  } } }, "Usual columns");
  const column_choice = h("details", { class: "columns" }, h("summary", {}, "Columns"),
    h("fieldset", { class: "ticks" }, h("legend", { class: "unseen" }, "Columns"), possible.map(column_box)), usual_button);

  const node = h("div", { class: "view rows" },
    h("p", { class: "crumbs" }, h("a", { href: "#/tables" }, "Tables"), " / ", service_title(table.service)),
    heading(table.title), table.description ? h("p", {}, table.description) : null,
    h("div", { class: "bar" }, labelled("Filter", filter_box), again,
      h("button", { type: "button", on: { click: save_csv } }, "Save as CSV"),
      h("button", { type: "button", on: { click: save_json } }, "Save as JSON"),
      table.changeable ? h("a", { class: "button", href: `#/row/${encodeURIComponent(table.table)}?+new` }, "Add a row") : null),
    column_choice, status, failure.node, cut.node, scroller(`Rows of ${table.title}`, grid), pages);
  read();
  return { title: table.title, node, stop: () => reading?.abort() };
}
