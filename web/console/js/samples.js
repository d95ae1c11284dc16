// What was read of ports, over time: for each port and counter its total and its
// growth a second, by position beside the times. And which part of it is plotted.
import { growth } from "./format.js";

const most = 3600;
const spare = 300; // dropped at once, so that arrays are not moved each second

function make_samples() {
	const times = [];
	const lines = new Map(); // "port counter" -> { total, rate }
	const last = new Map(); // port -> { row, at }

	function line_of(port, counter) {
		const name = `${port} ${counter}`;
		if (!lines.has(name)) lines.set(name, { total: [], rate: [] });
		const line = lines.get(name);
		for (const values of Object.values(line)) while (values.length < times.length) values.push(null);
		return line;
	}

	return {
		times,
		line: (port, counter, kind) => line_of(port, counter)[kind],
		// results: [{ port, row or null }]
		add(at, results, counters) {
			times.push(at);
			for (const { port, row } of results) {
				const before = last.get(port);
				for (const { name } of row ? counters : []) {
					const { total, rate } = line_of(port, name);
					const grown = before && at > before.at ? growth(row[name], before.row[name]) : null;
					total[times.length - 1] = Number(row[name]);
					rate[times.length - 1] = grown === null ? null : grown / (at - before.at);
				}
				if (row) last.set(port, { row, at });
				else last.delete(port);
			}
			if (times.length < most + spare) return;
			times.splice(0, spare);
			for (const line of lines.values()) for (const values of Object.values(line)) values.splice(0, spare);
		},
	};
}

export const is_octets = (field) => field.role?.startsWith("octets_");

// The ports and counters of a table that are plotted, over which time, and how.
export class Plotted {
	kind = "rate"; // or "total"
	span = 60; // seconds
	problems = new Map(); // port -> why its last reading failed

	choose(table) {
		const counters = table.fields.filter((field) => field.kind === "counter");
		const usual = counters.filter(is_octets);
		Object.assign(this, { table, counters });
		this.samples = make_samples();
		this.point = null; // which of the samples shown; null: the latest
		this.all_ports = []; // { port, label, place, up }
		this.shown_ports = new Set();
		this.shown_fields = new Set((usual.length ? usual : counters.slice(0, 2)).map((field) => field.name));
	}

	// At first some that are up are shown.
	take(ports) {
		this.all_ports = ports;
		if (this.shown_ports.size > 0) return;
		this.shown_ports = new Set([...ports.filter((port) => port.up), ...ports].slice(0, 4).map((port) => port.port));
	}

	ports() {
		return this.all_ports.filter(({ port }) => this.shown_ports.has(port));
	}

	fields() {
		return this.counters.filter((field) => this.shown_fields.has(field.name));
	}

	// The samples in the range: their times, and a counter's lines of the ports.
	in_range() {
		const { times } = this.samples;
		const end = times.at(-1) ?? 0;
		let from = times.length;
		while (from > 0 && times[from - 1] >= end - this.span) from -= 1;
		const line = (port, field) => this.samples.line(port, field.name, this.kind).slice(from);
		const ports = this.ports();
		return { times: times.slice(from), lines: (field) => ports.map(({ port }) => line(port, field)) };
	}

	title_of({ title, unit }) {
		if (this.kind === "total") return unit ? `${title}, ${unit}` : title;
		return unit ? `${title}, ${unit}/s` : `${title} per second`;
	}
}
