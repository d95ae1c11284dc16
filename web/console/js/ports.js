// Counters of ports as they move: one request a second for all that is shown.
import { h, say, set, keyed, svg, announce, download, plain } from "./dom.js";
import * as gateway from "./gateway.js";
import { counted_tables, field_with, table_with } from "./model.js";
import { csv, file_name, rate, time, value_text } from "./format.js";
import { live, interval } from "./live.js";
import { button, choice, failure_part, head_row, heading, labelled, scroller, sentence_page, ticks } from "./parts.js";
import { make_plot, colour_of, dash_of } from "./plot.js";
import { make_samples } from "./samples.js";
import { is_on } from "./panel.js";

const most_ports = 12; // at once: lines that can still be told apart
const ranges = [
	[60, "1 minute"],
	[300, "5 minutes"],
	[900, "15 minutes"],
	[3600, "1 hour"],
];
const usual_seconds = 1;

function swatch(place) {
	const line = svg("line", { x1: 0, y1: 4, x2: 28, y2: 4, "stroke-dasharray": dash_of(place).join(" ") || "none" });
	const mark = svg("svg", { viewBox: "0 0 28 8", class: "swatch", "aria-hidden": "true" }, line);
	mark.style.color = `var(--series-${colour_of(place)})`;
	return mark;
}

const least_and_most = (values) => {
	const known = values.filter((value) => value !== null);
	return [Math.min, Math.max].map((better) => known.reduce((a, b) => better(a, b), known[0]));
};
const shown_number = (value) => (Number.isFinite(value) ? rate(value) : "–");

export function show_ports() {
	const tables = counted_tables();
	if (tables.length === 0) {
		return sentence_page("Ports", "No table that you may read has counters of ports.");
	}

	let table, counters, port_field, samples;
	let ports = []; // { port, label, place, up }
	let shown_fields, shown_ports;
	let problems = new Map(); // port -> why its last reading failed
	let kind = "rate";
	let span = ranges[0][0];
	let paused = false;
	let point = null; // which of the samples shown; null: the latest
	let poll = null;
	let boards = []; // { field, body, plot }
	let over = false;

	const list_failure = failure_part(() => list_ports());
	const failure = failure_part(() => poll.now());
	const plots_failure = failure_part(() => build());
	const choices = h("div", { class: "choices" });
	const holder = h("div", { class: "boards" });
	const pause_button = button("Pause", () => pause(!paused), { "aria-pressed": "false" });
	const slider = h("input", {
		type: "range",
		min: 0,
		max: 0,
		step: 1,
		class: "slider",
		on: { input: () => move(slider.value === slider.max ? null : slider.valueAsNumber) },
	});
	const at = h("span", { class: "at" });

	const shown = () => ports.filter((port) => shown_ports.has(port.port));
	const chosen_fields = () => counters.filter((field) => shown_fields.has(field.name));

	function choose_table(name) {
		table = tables.find((one) => one.table === name);
		counters = table.fields.filter((field) => field.kind === "counter");
		port_field = field_with(table, "port");
		samples = make_samples();
		ports = [];
		point = null;
		const usual = counters.filter((field) => field.role?.startsWith("octets_"));
		shown_fields = new Set((usual.length ? usual : counters.slice(0, 2)).map((field) => field.name));
		shown_ports = new Set();
		list_ports();
	}

	// Which ports there are; the first that are up are shown at first.
	async function list_ports() {
		const links = table_with("port", "link");
		const listed = table;
		await list_failure.around(async () => {
			const walks = [...new Set([listed, links])].filter(Boolean).map((one) => ({ table: one.table }));
			const results = await gateway.rows(walks);
			if (over || listed !== table) return;
			const up = new Map(
				(links ? results.at(-1).rows : []).map((row) => [
					row[field_with(links, "port").name],
					is_on(row[field_with(links, "link").name]),
				]),
			);
			const name_field = field_with(table, "port_name");
			ports = results[0].rows.map((row, place) => {
				const port = row[port_field.name];
				return {
					port,
					place,
					label: plain((name_field && row[name_field.name]) || value_text(port_field, port)),
					up: up.get(port) !== false,
				};
			});
			if (shown_ports.size === 0) {
				shown_ports = new Set([...ports.filter((port) => port.up), ...ports].slice(0, 4).map((port) => port.port));
			}
			if (results[0].failure && ports.length === 0) {
				throw Object.assign(new Error(results[0].failure.message), results[0].failure);
			}
		});
		if (over || listed !== table) return;
		build_choices();
		build();
		poll?.now();
	}

	function build_choices() {
		const change = (list, value, yes) => {
			if (yes) list.add(value);
			else list.delete(value);
			build();
		};
		choices.replaceChildren(
			ticks(
				"Ports",
				ports.map((port) => [port.port, port.label]),
				shown_ports,
				(port, yes) => {
					if (yes && shown_ports.size >= most_ports) {
						announce(`At most ${most_ports} ports are shown at once.`);
						return false;
					}
					change(shown_ports, port, yes);
					poll.now();
				},
			),
			ticks(
				"Counters",
				counters.map((field) => [field.name, field.title]),
				shown_fields,
				(name, yes) => change(shown_fields, name, yes),
			),
		);
	}

	// A board for each counter: the plot, and a table of its values.
	async function build() {
		for (const board of boards) board.plot?.stop();
		const series = shown();
		const built = chosen_fields().map((field) => ({
			field,
			body: h("tbody", {}),
			area: h("div", { class: "plot", "aria-hidden": "true" }),
			plot: null,
		}));
		boards = built;
		holder.replaceChildren(
			...boards.map(({ field, body, area }) => {
				const title = title_of(field);
				return h(
					"section",
					{ class: "card", "data-field": field.name },
					h("h2", {}, title),
					area,
					scroller(
						`${title}: values`,
						h("table", {}, head_row("Port", ["Value", "number"], ["Least", "number"], ["Most", "number"]), body),
					),
				);
			}),
		);
		if (boards.length === 0 || series.length === 0) {
			holder.replaceChildren(h("p", { class: "quiet" }, "Choose a port and a counter."));
		}
		draw();
		try {
			for (const board of built) {
				const plot = await make_plot(board.area, series, move);
				if (over || boards !== built) plot.stop();
				else board.plot = plot;
			}
			plots_failure.update(null);
		} catch (problem) {
			for (const { area } of built) area.hidden = true;
			plots_failure.update({ code: "no_plots", message: `${problem.message} The tables have the values.` });
		}
		draw();
	}

	// The samples in the range: their times, and a counter's lines of the ports.
	function in_range() {
		const end = samples.times.at(-1) ?? 0;
		let from = samples.times.length;
		while (from > 0 && samples.times[from - 1] >= end - span) from -= 1;
		const series = shown();
		return {
			times: samples.times.slice(from),
			lines: (field) => series.map((port) => samples.line(port.port, field.name, kind).slice(from)),
		};
	}

	function title_of({ title, unit }) {
		if (kind === "total") return unit ? `${title}, ${unit}` : title;
		return unit ? `${title}, ${unit}/s` : `${title} per second`;
	}

	function move(index) {
		point = index;
		write_values();
		for (const { plot } of boards) plot?.point(index);
	}

	function make_value({ port, place, label }) {
		const cells = [0, 1, 2].map(() => h("td", { class: "number" }));
		const why = failure_part(() => poll.now(), { small: true });
		return {
			node: h("tr", {}, h("th", { scope: "row" }, swatch(place), " ", h("bdi", {}, label), " ", why.node), cells),
			update({ values, index }) {
				why.update(problems.get(port));
				[values[index], ...least_and_most(values)].forEach((value, i) => say(cells[i], shown_number(value)));
			},
		};
	}

	function write_values() {
		const { times, lines } = in_range();
		const last = times.length - 1;
		if (point > last) point = null;
		const index = point ?? last;
		for (const { field, body } of boards) {
			const values = lines(field);
			keyed(
				body,
				shown().map((port, i) => ({ ...port, values: values[i], index })),
				(port) => port.port,
				make_value,
			);
		}
		const text = last < 0 ? "–" : `${time(new Date(times[index] * 1000))}${point === null ? ", the latest" : ""}`;
		set(slider, "max", Math.max(last, 0));
		slider.value = Math.max(index, 0);
		set(slider, "aria-valuetext", text);
		say(at, text);
	}

	function draw() {
		const { times, lines } = in_range();
		const end = times.at(-1) ?? Date.now() / 1000;
		for (const { field, plot } of boards) plot?.show([times, ...lines(field)], [end - span, end]);
		write_values();
	}

	async function read(signal) {
		const series = shown();
		const own = samples;
		if (series.length === 0) return;
		let results = [];
		await failure.around(async () => {
			results = await gateway.all(
				series.map((port) => ({ table: table.table, key: { [port_field.name]: port.port } })),
				{ signal },
			);
		});
		if (over || signal.aborted || own !== samples) return;
		problems = new Map(series.map((port, i) => [port.port, results[i]?.failure]));
		samples.add(
			Date.now() / 1000,
			series.map((port, i) => ({ port: port.port, row: results[i]?.row })),
			counters,
		);
		draw();
	}

	function pause(yes) {
		paused = yes;
		set(pause_button, "aria-pressed", String(paused));
		poll.pause(paused);
		announce(paused ? "Paused." : "Reading again.");
	}

	function save() {
		const { times, lines } = in_range();
		const fields = chosen_fields();
		const all = fields.flatMap(lines);
		const head = fields.flatMap((field) =>
			shown().map((port) => `${port.label} ${field.name}${kind === "rate" ? " per second" : ""}`),
		);
		download(
			file_name(table.table, "csv"),
			"text/csv;charset=utf-8",
			csv([
				["time", ...head],
				...times.map((moment, i) => [new Date(moment * 1000).toISOString(), ...all.map((line) => line[i])]),
			]),
		);
		announce("The values shown were saved.");
	}

	choose_table(
		(tables.find((one) => one.fields.some((field) => field.role?.startsWith("octets_"))) ?? tables[0]).table,
	);
	const node = h(
		"div",
		{ class: "view ports" },
		heading("Ports"),
		h(
			"div",
			{ class: "bar", role: "group", "aria-label": "What is plotted" },
			labelled(
				"Table",
				choice(
					tables.map((one) => [one.table, one.title]),
					table.table,
					choose_table,
				),
			),
			labelled(
				"Show",
				choice(
					[
						["rate", "per second"],
						["total", "as counted"],
					],
					kind,
					(value) => {
						kind = value;
						build();
					},
				),
			),
			labelled(
				"Range",
				choice(ranges, span, (value) => {
					span = Number(value);
					point = null;
					draw();
				}),
			),
			pause_button,
			button("Save as CSV", save),
		),
		list_failure.node,
		failure.node,
		plots_failure.node,
		choices,
		h("div", { class: "bar" }, labelled("Values at", slider), at),
		holder,
	);
	poll = live(interval(usual_seconds), read);
	return {
		title: "Ports",
		node,
		stop() {
			over = true;
			poll.stop();
			for (const { plot } of boards) plot?.stop();
		},
	};
}
