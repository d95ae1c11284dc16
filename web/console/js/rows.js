// The rows of one table: read, filtered, sorted, in chosen columns, a page at a time, saved.
import { h, say, set, keyed, announce, device_text, save } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, arranged, key_of, named, to_row } from "./model.js";
import { compare, count, csv, time, value_text, words_of } from "./format.js";
import { keep, recall } from "./kept.js";
import { latest } from "./live.js";
import { button, clamped, failure_part, labelled, scroller, search_box, table_head, ticks } from "./parts.js";

const page_rows = 200; // drawn at a time
const walk_rows = 1000; // read at a time
const walk_seconds = 2;

const number_kinds = ["int", "unsigned", "counter", "real"];
const class_of = (field) =>
	field.secret ? "quiet" : number_kinds.includes(field.kind) && !field.values ? "number" : null;

const reasons = {
	too_many_rows: "the table has more.",
	deadline: "the time was over.",
	res: "nobody told whether that is the end.",
};

// What was read of the table; it can be read on from its last row.
function make_walk(table, status, changed) {
	const walk = { rows: [], complete: true, read_at: null };
	const read = latest(async (signal, on = false) => {
		say(status, "Reading …");
		await failure.around(async () => {
			const after = on ? walk.rows.at(-1) : undefined;
			const limit = Math.min(walk_rows, model.limits.rows ?? walk_rows);
			const [result] = await gateway.rows([{ table: table.table, after, limit }], { seconds: walk_seconds, signal });
			if (signal.aborted) return;
			walk.rows = on ? [...walk.rows, ...result.rows] : result.rows;
			walk.read_at = new Date();
			const code = result.failure?.code ?? (result.ended === "end" ? null : result.ended);
			walk.complete = code === null;
			const any = walk.rows.length > 0;
			const message = `Cut short after ${count(walk.rows.length)} rows: ${reasons[code] ?? result.failure?.message}`;
			cut.update(code && any ? { code, message } : null);
			changed();
			if (code && !any && result.failure) throw new gateway.Failure(code, result.failure.message);
			announce(status.textContent);
		});
		changed();
	});
	const failure = failure_part(() => read());
	const cut = failure_part(() => read(true), { label: "Read on" });
	return Object.assign(walk, { read, failures: [failure, cut] });
}

// The columns that somebody chose.
function make_columns(table, changed) {
	const { keys, content, more, closing } = arranged(table);
	const usual = [...keys, ...content].map((field) => field.name);
	const possible = [...keys, ...content, ...more, ...closing];
	const kept_as = `columns.${table.table}`;
	const known = [recall(kept_as, [])].flat().filter((name) => table.by_name.has(name));
	let chosen = new Set(known.length ? known : usual);
	const node = h("details.columns");

	function choose(name, yes) {
		if (!yes && chosen.size === 1) {
			announce("One column has to stay.");
			return false;
		}
		if (yes) chosen.add(name);
		else chosen.delete(name);
		keep(kept_as, [...chosen]);
		changed();
	}

	function choose_usual() {
		chosen = new Set(usual);
		keep(kept_as, null);
		draw();
		changed();
		node.querySelector("summary").focus();
	}

	function draw() {
		node.replaceChildren(
			h("summary", "Columns"),
			ticks("Columns", named(possible), chosen, choose, "legend.unseen"),
			button("Usual columns", choose_usual, { class: "small" }),
		);
	}
	draw();
	return { node, list: () => possible.filter((field) => chosen.has(field.name)) };
}

function make_head(field, sort_by, order_of) {
	const arrow = h("span.arrow", { "aria-hidden": "true" });
	const unit = field.unit && h("span.unit", field.unit);
	const click = () => sort_by(field);
	const cell = h(
		"th",
		{ scope: "col", class: class_of(field) },
		h("button.sort", { type: "button", title: field.description, on: { click } }, field.title, unit, arrow),
	);
	return {
		node: cell,
		update() {
			const [order, mark] = order_of(field);
			set(cell, "aria-sort", order);
			say(arrow, mark);
		},
	};
}

function make_cell({ field, first, link }) {
	const text = device_text("");
	return {
		node: h(
			first ? "th" : "td",
			{ scope: first && "row", class: class_of(field) },
			clamped(first && link ? h("a", { href: link }, text) : text),
		),
		update: ({ value }) => say(text, first ? value || "(empty)" : value),
	};
}

// The table as drawn, and the order of its rows.
function make_grid(table, columns, changed) {
	let sorted = null; // { field, down }
	const head = h("tr");
	const body = h("tbody");

	function sort_by(field) {
		if (sorted?.field !== field) sorted = { field, down: false };
		else sorted = sorted.down ? null : { field, down: true };
		changed();
		announce(sorted ? `Sorted by ${field.title}, ${sorted.down ? "falling" : "rising"}.` : "In the device's order.");
	}

	const order_of = (field) =>
		sorted?.field !== field ? [null, ""] : sorted.down ? ["descending", "▼"] : ["ascending", "▲"];

	function cells_of(row) {
		const key = key_of(table, row);
		// rows that are told apart by a secret cannot be opened: nobody may say which
		const link = Object.values(key).includes(null) ? null : to_row(table, key);
		return columns().map((field, place) => ({
			field,
			link,
			first: place === 0,
			value: value_text(field, row[field.name]),
		}));
	}

	function make_row() {
		const node = h("tr");
		const name = ({ field, first }) => `${first} ${field.name}`;
		return { node, update: (row) => keyed(node, cells_of(row), name, make_cell) };
	}

	return {
		node: h("table.rows", h("caption.unseen", table.title), h("thead", head), body),
		in_order(rows) {
			if (!sorted) return rows;
			const { field, down } = sorted;
			return [...rows].sort((a, b) => (down ? -1 : 1) * compare(field, a[field.name], b[field.name]));
		},
		draw(rows) {
			const make = (field) => make_head(field, sort_by, order_of);
			keyed(head, columns(), ({ name }) => name, make);
			keyed(body, rows, (row) => to_row(table, key_of(table, row)), make_row);
		},
	};
}

// Which part of the rows is drawn.
function make_pages(changed) {
	let page = 0;
	const turn = (to) => {
		page = to;
		changed();
	};
	const earlier = button("Previous rows", () => turn(page - 1));
	const later = button("Next rows", () => turn(page + 1));
	const node = h("p.bar", { hidden: true }, earlier, later);
	return {
		node,
		turn,
		part(rows) {
			const last = Math.max(Math.ceil(rows.length / page_rows) - 1, 0);
			page = Math.min(Math.max(page, 0), last);
			const start = page * page_rows;
			const part = rows.slice(start, start + page_rows);
			node.hidden = last === 0;
			earlier.disabled = page === 0;
			later.disabled = page === last;
			return { part, range: last ? `, ${count(start + 1)} to ${count(start + part.length)} shown` : "" };
		},
	};
}

// The rows that hold all words of a text.
function matching(rows, columns, text) {
	const words = words_of(text);
	if (words.length === 0) return rows;
	return rows.filter((row) => {
		const cells = columns.map((field) => value_text(field, row[field.name]));
		const found = cells.join("\n").toLowerCase();
		return words.every((word) => found.includes(word));
	});
}

const as_csv = (rows, columns) =>
	csv([columns.map((field) => field.name), ...rows.map((row) => columns.map((field) => row[field.name]))]);

function as_json({ table }, { read_at, complete }, rows, columns) {
	const values = rows.map((row) => Object.fromEntries(columns.map(({ name }) => [name, row[name] ?? null])));
	return `${JSON.stringify({ table, read: read_at, complete, rows: values }, null, 1)}\n`;
}

export function show_rows(table) {
	const status = h("p.quiet", { id: "rows-status" }, "Reading …");
	const walk = make_walk(table, status, draw);
	const columns = make_columns(table, draw);
	const grid = make_grid(table, columns.list, draw);
	const pages = make_pages(() => {
		draw();
		announce(status.textContent);
	});
	const filter = search_box(() => pages.turn(0), { "aria-describedby": status.id });
	const shown = () => grid.in_order(matching(walk.rows, columns.list(), filter.value));

	function draw() {
		const found = shown();
		const { part, range } = pages.part(found);
		grid.draw(part);
		const { rows, complete, read_at } = walk;
		const of = found.length === rows.length ? "" : ` of ${count(rows.length)}`;
		const what = `${count(found.length)}${of} ${rows.length === 1 ? "row" : "rows"}${range}`;
		say(status, read_at ? `${what}, read at ${time(read_at)}${complete ? "" : ", not all"}` : "Nothing was read.");
	}

	const node = h(
		"div.view.rows",
		table_head(table, table.title),
		h(
			"div.bar",
			labelled("Filter", filter),
			button("Read again", () => walk.read()),
			button("Save as CSV", () => save(table, "csv", as_csv(shown(), columns.list()), "rows")),
			button("Save as JSON", () => save(table, "json", as_json(table, walk, shown(), columns.list()), "rows")),
			table.changeable && h("a.button", { href: `#/add/${encodeURIComponent(table.table)}` }, "Add a row"),
		),
		columns,
		status,
		walk.failures,
		scroller(`Rows of ${table.title}`, grid),
		pages,
	);
	walk.read();
	return { title: table.title, node, stop: walk.read.stop };
}
