// Counters of ports as they move: one request a second for all that is shown.
import { h, set, announce, plain, save } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, counted_tables, field_with, named, table_with, value_in } from "./model.js";
import { csv, value_text } from "./format.js";
import { live, interval } from "./live.js";
import { button, choice, failure_part, heading, sentence_page, ticks } from "./parts.js";
import { make_boards } from "./boards.js";
import { Plotted, is_octets } from "./samples.js";
import { is_on } from "./panel.js";

const most_ports = 12; // at once: lines that can still be told apart
const ranges = [
	[60, "1 minute"],
	[300, "5 minutes"],
	[900, "15 minutes"],
	[3600, "1 hour"],
];
const usual_seconds = 1;

// The ports of a table, and why some are missing.
async function list_ports(table) {
	const links = table_with("port", "link");
	const results = await gateway.rows_of([table, links]);
	const [{ rows, failure }] = results;
	const up = new Map(
		links && results.at(-1).rows.map((row) => [value_in(links, "port", row), is_on(value_in(links, "link", row))]),
	);
	const ports = rows.map((row, place) => {
		const port = value_in(table, "port", row);
		const label = plain(value_in(table, "port_name", row) || value_text(field_with(table, "port"), port));
		return { port, place, label, up: up.get(port) !== false };
	});
	return { ports, failure };
}

function as_csv(plotted) {
	const { times, lines } = plotted.in_range();
	const fields = plotted.fields();
	const all = fields.flatMap(lines);
	const of = plotted.kind === "rate" ? " per second" : "";
	const head = fields.flatMap(({ name }) => plotted.ports().map(({ label }) => `${label} ${name}${of}`));
	return csv([
		["time", ...head],
		...times.map((moment, i) => [new Date(moment * 1000).toISOString(), ...all.map((line) => line[i])]),
	]);
}

function make_controls(tables, choose, { plotted, boards }, ...buttons) {
	const kinds = [
		["rate", "per second"],
		["total", "as counted"],
	];
	const titles = tables.map((one) => [one.table, one.title]);
	return h(
		"div.bar",
		{ role: "group", "aria-label": "What is plotted" },
		choice("Table", titles, plotted.table.table, (name) => choose(model.tables.get(name))),
		choice("Show", kinds, plotted.kind, (kind) => {
			plotted.kind = kind;
			boards.build();
		}),
		choice("Range", ranges, plotted.span, (seconds) => {
			plotted.span = Number(seconds);
			plotted.point = null;
			boards.draw();
		}),
		buttons,
		button("Save as CSV", () => save(plotted.table, "csv", as_csv(plotted), "values")),
	);
}

function make_ticks({ all_ports, counters, shown_ports, shown_fields }, build, read_now) {
	const change = (list, value, yes) => {
		if (yes) list.add(value);
		else list.delete(value);
		build();
	};
	const change_port = (port, yes) => {
		if (yes && shown_ports.size >= most_ports) {
			announce(`At most ${most_ports} ports are shown at once.`);
			return false;
		}
		change(shown_ports, port, yes);
		read_now();
	};
	const names = all_ports.map(({ port, label }) => [port, label]);
	return [
		ticks("Ports", names, shown_ports, change_port),
		ticks("Counters", named(counters), shown_fields, (name, yes) => change(shown_fields, name, yes)),
	];
}

// True where what was read is still wanted.
async function read_ports(plotted, failure, signal) {
	const { table, samples, counters } = plotted;
	const { name } = field_with(table, "port");
	const ports = plotted.ports().map(({ port }) => port);
	if (ports.length === 0) return false;
	let results = [];
	await failure.around(async () => {
		const calls = ports.map((port) => ({ table: table.table, key: { [name]: port } }));
		results = await gateway.all(calls, { signal });
	});
	if (signal.aborted || samples !== plotted.samples) return false;
	plotted.problems = new Map(ports.map((port, i) => [port, results[i]?.failure]));
	const read = ports.map((port, i) => ({ port, row: results[i]?.row }));
	samples.add(Date.now() / 1000, read, counters);
	return true;
}

function plot_ports(tables) {
	let over = false;
	let poll = null;
	const read_now = () => poll?.now();
	const plotted = new Plotted();
	const boards = make_boards(plotted, read_now);
	const failure = failure_part(read_now);
	const list_failure = failure_part(list);
	const choices = h("div.choices");

	function choose(table) {
		plotted.choose(table);
		list();
	}

	async function list() {
		const { table } = plotted;
		const gone = () => over || plotted.table !== table;
		await list_failure.around(async () => {
			const { ports, failure: problem } = await list_ports(table);
			if (gone()) return;
			plotted.take(ports);
			if (problem && ports.length === 0) throw new gateway.Failure(problem.code, problem.message);
		});
		if (gone()) return;
		choices.replaceChildren(...make_ticks(plotted, boards.build, read_now));
		boards.build();
		read_now();
	}

	let paused = false;
	const pause = button(
		"Pause",
		() => {
			paused = !paused;
			set(pause, "aria-pressed", String(paused));
			poll.pause(paused);
			announce(paused ? "Paused." : "Reading again.");
		},
		{ "aria-pressed": "false" },
	);

	choose(tables.find((one) => one.fields.some(is_octets)) ?? tables[0]);
	const controls = make_controls(tables, choose, { plotted, boards }, pause);
	const node = h(
		"div.view.ports",
		[heading("Ports"), controls, list_failure, failure, boards.failure, choices],
		boards.parts,
	);
	poll = live(interval(usual_seconds), async (signal) => {
		if (await read_ports(plotted, failure, signal)) boards.draw();
	});
	const stop = () => {
		over = true;
		poll.stop();
		boards.stop();
	};
	return { title: "Ports", node, stop };
}

export function show_ports() {
	const tables = counted_tables();
	if (tables.length) return plot_ports(tables);
	return sentence_page("Ports", "No table that you may read has counters of ports.");
}
