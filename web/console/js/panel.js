// A drawing of the ports: link, speed and new errors by shape, word and colour. The
// ports are the rows of the table whose fields have the roles port and link; the
// errors come from the table whose fields have port and errors.
import { h, say, set, keyed, plain, svg, drawing, shape } from "./dom.js";
import * as gateway from "./gateway.js";
import { table_with, field_with, value_in, to_row, key_of } from "./model.js";
import { speed, growth, count, value_text } from "./format.js";
import { card, failure_part } from "./parts.js";

// Words for "no" that a link or a switch may have.
const negative = new Set(["down", "off", "no", "none", "disabled", "inactive", "false", "0"]);
export const is_on = (value) => !negative.has(String(value ?? "").toLowerCase());

// A socket: filled with a tick where the link is up, hollow where it is down, crossed
// out where the port is switched off.
const marks = { up: "M15 26l6 6 12-13", off: "M6 6l36 36M42 6L6 42", unknown: "M19 20a5 5 0 1 1 6 5v4M24 33v3" };
const socket = (state) =>
	drawing(
		"48 44",
		`socket ${state}`,
		svg("path", { d: "M4 40V14h8V7h5V3h14v4h5v7h8v26z" }),
		svg("path", { d: marks[state] ?? "", class: "mark" }),
	);

function make_port() {
	const name = h("bdi.name");
	const word = h("span.word");
	const rate = h("span.rate");
	const errors = h("span.errors", { hidden: true }, shape("warn"), " ", h("span"));
	const link = h("a", socket("unknown"), name, " ", word, " ", rate, " ", errors);
	return {
		node: h("li", link),
		update(port) {
			if (link.dataset.state !== port.state) link.firstChild.replaceWith(socket(port.state));
			set(link, "href", port.href);
			set(link, "data-state", port.state);
			say(name, port.name);
			say(word, port.state);
			say(rate, port.state === "up" ? port.speed : "");
			errors.hidden = !port.errors;
			if (port.errors) say(errors.lastChild, `+${count(port.errors)} errors`);
		},
	};
}

// What was counted since the refresh before, by port; a port's first reading tells nothing.
function make_errors(table) {
	const fields = ["errors_in", "errors_out"].map((role) => field_with(table, role)).filter(Boolean);
	const before = new Map(); // port -> its error counters
	return (rows) => {
		const found = new Map();
		for (const row of rows) {
			const port = value_in(table, "port", row);
			const now = fields.map((field) => String(row[field.name]));
			const grown = now.map((value, i) => growth(value, before.get(port)?.[i]) ?? 0);
			const sum = grown.reduce((a, b) => a + b);
			if (before.has(port)) found.set(port, sum);
			before.set(port, now);
		}
		return found;
	};
}

function state_of(table, row) {
	if (field_with(table, "enabled") && !is_on(value_in(table, "enabled", row))) return "off";
	const link = value_in(table, "link", row);
	if (link === undefined) return "unknown";
	return is_on(link) ? "up" : "down";
}

function port_of(table, row, errors) {
	const number = value_in(table, "port", row);
	const speed_field = field_with(table, "speed");
	return {
		number,
		href: to_row(table, key_of(table, row)),
		state: state_of(table, row),
		errors: errors.get(number),
		name: value_in(table, "port_name", row) || value_text(field_with(table, "port"), number),
		speed: speed_field ? speed(speed_field, row[speed_field.name]) : "",
	};
}

function sum_up(summary, ports, errors) {
	const up = ports.filter((port) => port.state === "up").length;
	summary.fact("ports", up ? "good" : "none", `${count(up)} of ${count(ports.length)} ports are up`);
	const bad = ports.filter((port) => port.errors);
	const names = bad.length > 3 ? `${count(bad.length)} ports` : bad.map((port) => plain(port.name)).join(", ");
	if (errors.size) {
		summary.fact("errors", bad.length ? "warn" : "good", bad.length ? `New errors at ${names}` : "No new errors");
	}
}

export function front_panel(summary, retry) {
	const table = table_with("port", "link");
	if (!table) return null;
	const counted = table_with("port", "errors_in") ?? table_with("port", "errors_out");
	const failure = failure_part(retry);
	const errors_failure = failure_part(retry);
	const new_errors = counted && make_errors(counted);
	const list = h("ul.panel", { "aria-label": "Ports" });
	const legend = h(
		"p.legend",
		["up", "down", "off"].map((state) => h("span", socket(state), state)),
		counted && h("span", shape("warn"), "new errors"),
	);

	function show(ports, statistics = ports) {
		if (counted) errors_failure.update(statistics.failure);
		const errors = counted ? new_errors(statistics.rows) : new Map();
		if (ports.failure && ports.rows.length === 0) return summary.fact("ports", "bad", "The ports cannot be read");
		const shown = ports.rows.map((row) => port_of(table, row, errors));
		keyed(list, shown, (port) => port.number, make_port);
		sum_up(summary, shown, errors);
	}

	return {
		node: card("Front panel", { id: "panel" }, failure, errors_failure, list, legend),
		async read(signal) {
			let problem = null;
			await failure.around(async () => {
				const results = await gateway.rows_of([table, counted], { signal });
				show(...results);
				problem = results[0].failure;
			});
			if (problem) failure.update(problem);
		},
	};
}
