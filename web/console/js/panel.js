// A drawing of the ports: link, speed and new errors by shape, word and colour. The
// ports are the rows of the table whose fields have the roles port and link; the
// errors come from the table whose fields have port and errors.
import { h, say, set, keyed, plain, svg, shape } from "./dom.js";
import * as gateway from "./gateway.js";
import { table_with, field_with, to_row, key_of } from "./model.js";
import { speed, growth, count, value_text } from "./format.js";
import { failure_part } from "./parts.js";

// Words for "no" that a link or a switch may have.
const negative = new Set(["down", "off", "no", "none", "disabled", "inactive", "false", "0"]);
export const is_on = (value) => !negative.has(String(value ?? "").toLowerCase());

// A socket: filled with a tick where the link is up, hollow where it is down, crossed
// out where the port is switched off.
const marks = { up: "M15 26l6 6 12-13", off: "M6 6l36 36M42 6L6 42", unknown: "M19 20a5 5 0 1 1 6 5v4M24 33v3" };
function socket(state) {
	return svg(
		"svg",
		{ viewBox: "0 0 48 44", class: `socket ${state}`, "aria-hidden": "true" },
		svg("path", { d: "M4 40V14h8V7h5V3h14v4h5v7h8v26z" }),
		svg("path", { d: marks[state] ?? "", class: "mark" }),
	);
}

const words = { up: "up", down: "down", off: "off", unknown: "unknown" };

function make_port() {
	const name = h("bdi", { class: "name" });
	const word = h("span", { class: "word" });
	const rate = h("span", { class: "rate" });
	const errors = h("span", { class: "errors", hidden: true }, shape("warn"), " ", h("span", {}));
	const link = h("a", {}, socket("unknown"), name, " ", word, " ", rate, " ", errors);
	return {
		node: h("li", {}, link),
		update(port) {
			if (link.dataset.state !== port.state) link.firstChild.replaceWith(socket(port.state));
			set(link, "href", port.href);
			set(link, "data-state", port.state);
			say(name, port.name);
			say(word, words[port.state]);
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
	const legend = h(
		"p",
		{ class: "legend" },
		["up", "down", "off"].map((state) => h("span", {}, socket(state), words[state])),
		counted && h("span", {}, shape("warn"), "new errors"),
	);
	const name_of = (role) => field_with(table, role)?.name;
	const [port_name, enabled, link] = ["port_name", "enabled", "link"].map(name_of);
	const port_field = field_with(table, "port");
	const speed_field = field_with(table, "speed");
	const before = new Map(); // port -> its error counters at the refresh before

	// What was counted since the refresh before, by port; a port's first reading tells nothing.
	function new_errors({ rows, failure: problem }) {
		const fields = ["errors_in", "errors_out"].map((role) => field_with(counted, role)).filter(Boolean);
		const found = new Map();
		errors_failure.update(problem);
		for (const row of rows) {
			const port = row[field_with(counted, "port").name];
			const now = fields.map((field) => String(row[field.name]));
			if (before.has(port)) {
				found.set(
					port,
					now.reduce((sum, value, i) => sum + (growth(value, before.get(port)[i]) ?? 0), 0),
				);
			}
			before.set(port, now);
		}
		return found;
	}

	function state_of(row) {
		if (enabled && !is_on(row[enabled])) return "off";
		if (row[link] === undefined) return "unknown";
		return is_on(row[link]) ? "up" : "down";
	}

	function show([ports, statistics]) {
		const errors = counted ? new_errors(statistics ?? ports) : new Map();
		if (ports.failure && ports.rows.length === 0) return summary.fact("ports", "bad", "The ports cannot be read");
		const shown = ports.rows.map((row) => ({
			number: row[port_field.name],
			href: to_row(table, key_of(table, row)),
			state: state_of(row),
			errors: errors.get(row[port_field.name]),
			name: row[port_name] || value_text(port_field, row[port_field.name]),
			speed: speed_field ? speed(speed_field, row[speed_field.name]) : "",
		}));
		keyed(list, shown, (port) => port.number, make_port);
		const up = shown.filter((port) => port.state === "up").length;
		summary.fact("ports", up ? "good" : "none", `${count(up)} of ${count(shown.length)} ports are up`);
		const bad = shown.filter((port) => port.errors);
		const names = bad.length > 3 ? `${count(bad.length)} ports` : bad.map((port) => plain(port.name)).join(", ");
		if (errors.size) {
			summary.fact("errors", bad.length ? "warn" : "good", bad.length ? `New errors at ${names}` : "No new errors");
		}
	}

	return {
		node: h(
			"section",
			{ class: "card", id: "panel" },
			h("h2", {}, "Front panel"),
			failure.node,
			errors_failure.node,
			list,
			legend,
		),
		async read(signal) {
			let problem = null;
			await failure.around(async () => {
				const results = await gateway.rows(
					[...new Set([table, counted])].filter(Boolean).map((one) => ({ table: one.table })),
					{ signal },
				);
				show(results);
				problem = results[0].failure;
			});
			if (problem) failure.update(problem);
		},
	};
}
