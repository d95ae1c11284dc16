// Counters of ports as they move: one request a second for all that is shown. Which
// tables can be plotted, and of what ports, comes from the schema's roles.
import { h, say, set, keyed, svg, announce, download, plain } from "./dom.js";
import * as gateway from "./gateway.js";
import { counted_tables, field_with, table_with } from "./model.js";
import { csv, growth, rate, time, value_text } from "./format.js";
import { live, interval } from "./live.js";
import { choice, failure_part, heading, labelled, scroller, ticks } from "./parts.js";
import { make_plot, colour_of, dash_of } from "./plot.js";
import { is_on } from "./panel.js";

const most_ports = 12; // at once: lines that can still be told apart
const most_samples = 3600;
const ranges = [[60, "1 minute"], [300, "5 minutes"], [900, "15 minutes"], [3600, "1 hour"]];
const paces = [1, 2, 5, 10];
const plot_height = 190;

const swatch = (place) => svg("svg", { viewBox: "0 0 28 8", class: `swatch series-${colour_of(place)}`, "aria-hidden": "true", focusable: "false" },
  svg("line", { x1: 0, y1: 4, x2: 28, y2: 4, "stroke-dasharray": dash_of(place).join(" ") || "none" }));

// What was read of the ports: times, and for each port and counter its total and its
// growth a second, by position.
function samples() {
  const times = [];
  const lines = new Map(); // "port counter" -> { total, rate }
  const last = new Map(); // port -> { row, at }
  const name_of = (port, field) => `${port} ${field}`;
  function trim() {
    if (times.length <= most_samples + 300) return;
    times.splice(0, 300);
    for (const line of lines.values()) {
      line.total.splice(0, 300);
      line.rate.splice(0, 300);
    }
  }
  return {
    times,
    // results: [{ port, row or null }]
    add(at, results, fields) {
      times.push(at);
      for (const { port, row } of results) {
        const before = last.get(port);
        for (const field of fields) {
          const name = name_of(port, field.name);
          if (!lines.has(name)) lines.set(name, { total: [], rate: [] });
          const line = lines.get(name);
          const grown = row && before ? growth(row[field.name], before.row[field.name]) : null;
          while (line.total.length < times.length - 1) {
            line.total.push(null);
            line.rate.push(null);
          }
          line.total.push(row ? Number(row[field.name]) : null);
          line.rate.push(grown === null || at <= before.at ? null : grown / (at - before.at));
        }
        if (row) last.set(port, { row, at });
        else last.delete(port);
      }
      trim();
    },
    // a line's values for all times
    line(port, field, kind) {
      const found = lines.get(name_of(port, field))?.[kind] ?? [];
      while (found.length < times.length) found.push(null);
      return found;
    },
  };
}

export function show_ports() {
  const tables = counted_tables();
  const node = h("div", { class: "view ports" }, heading("Ports"));
  if (tables.length === 0) {
    node.append(h("p", { class: "notice" }, "No table that you may read has counters of ports: names say so by the role port."));
    return { title: "Ports", node };
  }

  let table = tables.find((candidate) => field_with(candidate, "octets_in") || field_with(candidate, "octets_out")) ?? tables[0];
  let counters, port_field, held, shown_fields, shown_ports;
  let ports = []; // { port, label, place }
  let kind = "rate";
  let span = ranges[0][0];
  let paused = false;
  let point = null; // an index of the samples, or null: the latest
  let poll = null;
  let plots = [];
  let over = false;

  const list_failure = failure_part(() => list_ports());
  const failure = failure_part(() => poll?.now());
  const plots_failure = failure_part(() => build());
  const choices = h("div", { class: "choices" });
  const boards = h("div", { class: "boards" });
  const pause_button = h("button", { type: "button", "aria-pressed": "false", on: { click: () => pause(!paused) } }, "Pause");
  const slider = h("input", { type: "range", min: 0, max: 0, value: 0, step: 1, class: "slider", on: { input: () => move(slider.valueAsNumber >= Number(slider.max) ? null : slider.valueAsNumber) } });
  const at = h("output", { class: "at" });

  const fields_of = (candidate) => candidate.fields.filter((field) => field.kind === "counter");
  const series_ports = () => ports.filter((port) => shown_ports.has(String(port.port)));

  function choose_table(name) {
    table = tables.find((candidate) => candidate.table === name);
    counters = fields_of(table);
    port_field = field_with(table, "port");
    held = samples();
    point = null;
    const usual = counters.filter((field) => ["octets_in", "octets_out"].includes(field.role));
    shown_fields = new Set((usual.length ? usual : counters.slice(0, 2)).map((field) => field.name));
    shown_ports = new Set();
    list_ports();
  }

  // Which ports there are; those whose link is up are shown first.
  async function list_ports() {
    const links = table_with("port", "link");
    const walked = table;
    try {
      const [own, theirs] = await gateway.rows([{ table: table.table }, ...(links && links !== table ? [{ table: links.table }] : [])]);
      if (over || walked !== table) return;
      list_failure.update(own.failure ?? null);
      const link_port = links && field_with(links, "port").name;
      const up = new Map((theirs?.rows ?? []).map((row) => [row[link_port], is_on(row[field_with(links, "link").name])]));
      const name_field = field_with(table, "port_name");
      ports = own.rows.map((row, place) => {
        const number = row[port_field.name];
        return { port: number, place, label: plain((name_field && row[name_field.name]) || value_text(port_field, number)), up: up.get(number) !== false };
      });
      if (shown_ports.size === 0) for (const port of [...ports.filter((some) => some.up), ...ports].slice(0, 4)) shown_ports.add(String(port.port));
    } catch (problem) {
      if (over) return;
      list_failure.update(problem);
    }
    build_choices();
    build();
    poll?.now();
  }

  function build_choices() {
    choices.replaceChildren(
      ticks("Ports", ports.map((port) => [port.port, port.label]), shown_ports, (port, yes, box) => {
        if (yes && shown_ports.size >= most_ports) {
          box.checked = false;
          announce(`At most ${most_ports} ports are shown at once.`);
          return;
        }
        if (yes) shown_ports.add(port);
        else shown_ports.delete(port);
        build();
        poll?.now();
      }),
      ticks("Counters", counters.map((field) => [field.name, field.title]), shown_fields, (name, yes) => {
        if (yes) shown_fields.add(name);
        else shown_fields.delete(name);
        build();
      }));
  }

  // A board for each counter: the plot, and a table of its values.
  async function build() {
    for (const plot of plots) plot.stop();
    plots = [];
    boards.replaceChildren();
    const series = series_ports();
    const building = counters.filter((field) => shown_fields.has(field.name)).map((field) => {
      const title = `${field.title}${kind === "rate" ? " per second" : ""}${field.unit ? `, ${field.unit}` : ""}`;
      const holder = h("div", { class: "plot", role: "img", "aria-label": `${title}: the values stand in the table below` });
      const body = h("tbody", {});
      const board = h("section", { class: "card board", "data-field": field.name }, h("h2", {}, title), holder, scroller(`${title}, values`,
        h("table", { class: "values" }, h("thead", {}, h("tr", {}, h("th", { scope: "col" }, "Port"),
          ["Value", "Least", "Most"].map((word) => h("th", { scope: "col", class: "number" }, word)))), body)));
      boards.append(board);
      return { field, holder, body };
    });
    if (building.length === 0 || series.length === 0) boards.append(h("p", { class: "quiet" }, "Choose a port and a counter."));
    const own = building.map((board) => ({ ...board, plot: null, stop() { this.plot?.stop(); this.stopped = true; } }));
    plots = own;
    draw();
    try {
      await Promise.all(own.map(async (board) => {
        const plot = await make_plot(board.holder, series, plot_height, (index) => hover(index));
        if (board.stopped || over) plot.stop();
        else board.plot = plot;
      }));
      plots_failure.update(null);
    } catch (problem) {
      for (const board of own) board.holder.hidden = true;
      plots_failure.update({ code: "no_plots", message: `${problem.message} The values stand in the tables.` });
    }
    draw();
  }

  // The first sample of the range.
  function first_index() {
    const { times } = held;
    const end = times.at(-1) ?? 0;
    let index = times.length;
    while (index > 0 && times[index - 1] >= end - span) index -= 1;
    return index;
  }

  function hover(index) {
    if (index === null || index === undefined) move(null);
    else move(index);
  }

  function move(index) {
    point = index;
    write_values();
    for (const { plot } of plots) plot?.point(index);
  }

  function shown_lines(from) {
    const series = series_ports();
    return (field) => series.map((port) => held.line(port.port, field.name, kind).slice(from));
  }

  let problems = new Map(); // port -> why its last reading failed

  function write_values() {
    const from = first_index();
    const times = held.times.slice(from);
    const last = times.length - 1;
    const index = point === null || point > last ? last : point;
    const lines = shown_lines(from);
    const series = series_ports();
    const show = (value) => (value === null || value === undefined || !Number.isFinite(value) ? "–" : rate(value));
    for (const { field, body } of plots) {
      const values = lines(field);
      keyed(body, series.map((port, i) => ({ ...port, values: values[i], index })), (port) => port.port, (port) => {
        const cells = ["now", "least", "most"].map(() => h("td", { class: "number" }));
        const why = failure_part(() => poll?.now(), { small: true });
        return {
          node: h("tr", {}, h("th", { scope: "row" }, swatch(port.place), " ", h("bdi", {}, port.label), " ", why.node), cells),
          update(now) {
            const known = now.values.filter((value) => value !== null);
            why.update(problems.get(now.port) ?? null);
            say(cells[0], show(now.values[now.index]));
            say(cells[1], show(known.length ? known.reduce((a, b) => Math.min(a, b)) : null));
            say(cells[2], show(known.length ? known.reduce((a, b) => Math.max(a, b)) : null));
          },
        };
      });
    }
    set(slider, "max", Math.max(last, 0));
    slider.value = Math.max(index, 0);
    slider.disabled = last < 1;
    const text = last < 0 ? "–" : `${time(new Date(times[Math.max(index, 0)] * 1000))}${point === null ? ", the latest" : ""}`;
    set(slider, "aria-valuetext", text);
    say(at, text);
  }

  function draw() {
    const from = first_index();
    const times = held.times.slice(from);
    const end = times.at(-1) ?? Date.now() / 1000;
    const lines = shown_lines(from);
    for (const { field, plot } of plots) plot?.show([times, ...lines(field)], [end - span, end]);
    if (point !== null && point >= times.length) point = null;
    write_values();
  }

  async function read(signal) {
    const series = series_ports();
    if (series.length === 0) return;
    const reading = table;
    try {
      const results = await gateway.all(series.map((port) => ({ table: table.table, key: { [port_field.name]: port.port } })), { signal });
      if (reading !== table) return;
      failure.update(null);
      problems = new Map(results.map((result, i) => [series[i].port, result.failure]).filter(([, problem]) => problem));
      held.add(Date.now() / 1000, results.map((result, i) => ({ port: series[i].port, row: result.row ?? null })), counters);
    } catch (problem) {
      if (problem.code === "stopped" || reading !== table) return;
      failure.update(problem);
      held.add(Date.now() / 1000, series.map((port) => ({ port: port.port, row: null })), counters);
    }
    draw();
  }

  function pause(yes) {
    paused = yes;
    set(pause_button, "aria-pressed", String(paused));
    say(pause_button, paused ? "Go on" : "Pause");
    poll.pause(paused);
    announce(paused ? "Paused." : "Reading again.");
  }

  function save() {
    const from = first_index();
    const lines = shown_lines(from);
    const fields = plots.map((board) => board.field);
    const series = series_ports();
    const all = fields.map((field) => lines(field));
    const head = ["time", ...fields.flatMap((field) => series.map((port) => `${port.label} ${field.name}${kind === "rate" ? " per second" : ""}`))];
    const body = held.times.slice(from).map((moment, i) =>
      [new Date(moment * 1000).toISOString(), ...all.flatMap((of_field) => of_field.map((line) => line[i]))]);
    download(`${table.table}-${new Date().toISOString().replace(/[:.]/g, "-")}.csv`, "text/csv;charset=utf-8", csv([head, ...body]));
    announce("The values shown were saved.");
  }

  const pace = interval(paces[0]);
  const pace_options = [...new Set([pace, ...paces])].sort((a, b) => a - b).map((seconds) => [seconds, `${seconds} s`]);
  node.append(
    h("div", { class: "bar", role: "group", "aria-label": "What is plotted" },
      labelled("Table", choice(tables.map((candidate) => [candidate.table, candidate.title]), table.table, choose_table)),
      labelled("Show", choice([["rate", "per second"], ["total", "as counted"]], kind, (value) => { kind = value; build(); })),
      labelled("Range", choice(ranges, span, (value) => { span = Number(value); point = null; draw(); })),
      labelled("Every", choice(pace_options, pace, (value) => poll.pace(Number(value)))),
      pause_button,
      h("button", { type: "button", on: { click: save } }, "Save as CSV")),
    list_failure.node, failure.node, plots_failure.node, choices,
    h("div", { class: "bar at-bar" }, labelled("Values at", slider), at),
    boards);
  choose_table(table.table);
  poll = live(pace, read);
  return {
    title: "Ports",
    node,
    stop() {
      over = true;
      poll.stop();
      for (const plot of plots) plot.stop();
    },
  };
}
