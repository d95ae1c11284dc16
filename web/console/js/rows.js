// The rows of one table: filtered, sorted, in chosen columns, saved.
import { h, say, set, keyed, announce, download, device_text } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, arranged, key_of, to_row, service_title } from "./model.js";
import { compare, count, csv, file_name, time, value_text } from "./format.js";
import { keep, recall } from "./kept.js";
import { button, failure_part, heading, labelled, scroller, search_box, ticks } from "./parts.js";

const page_rows = 200; // drawn at a time
const walk_rows = 1000; // read at a time
const walk_seconds = 2;

const number_kinds = ["int", "unsigned", "counter", "real"];
const class_of = (field) =>
	field.secret ? "quiet" : number_kinds.includes(field.kind) && !field.values ? "number" : null;

export function show_rows(table) {
	const { keys, content, more, closing } = arranged(table);
	const possible = [...keys, ...content, ...more, ...closing];
	const usual = [...keys, ...content].map((field) => field.name);
	const kept_as = `columns.${table.table}`;
	const remembered = recall(kept_as, []);
	const known = Array.isArray(remembered) ? remembered.filter((name) => table.by_name.has(name)) : [];
	let chosen = new Set(known.length ? known : usual);
	let rows = [];
	let complete = true;
	let read_at = null;
	let reading = null;
	let sorted = null; // { field, down }
	let page = 0;

	const failure = failure_part(() => read());
	const cut = failure_part(() => read(true), { label: "Read on" });
	const status = h("p", { class: "quiet", id: "rows-status" }, "Reading …");
	const filter = search_box(() => turn(-page), { "aria-describedby": status.id });
	const head = h("tr", {});
	const body = h("tbody", {});
	const grid = h(
		"table",
		{ class: "rows" },
		h("caption", { class: "unseen" }, table.title),
		h("thead", {}, head),
		body,
	);
	const earlier = button("Previous rows", () => turn(-1));
	const later = button("Next rows", () => turn(1));
	const pages = h("p", { class: "bar", hidden: true }, earlier, later);

	const columns = () => possible.filter((field) => chosen.has(field.name));

	function turn(by) {
		page += by;
		draw();
		announce(status.textContent);
	}

	function sort_by(field) {
		if (sorted?.field !== field) sorted = { field, down: false };
		else sorted = sorted.down ? null : { field, down: true };
		draw();
		announce(sorted ? `Sorted by ${field.title}, ${sorted.down ? "falling" : "rising"}.` : "In the device's order.");
	}

	function make_head(field) {
		const arrow = h("span", { class: "arrow", "aria-hidden": "true" });
		const cell = h(
			"th",
			{ scope: "col", class: class_of(field) },
			h(
				"button",
				{ type: "button", class: "sort", title: field.description, on: { click: () => sort_by(field) } },
				field.title,
				field.unit && h("span", { class: "unit" }, field.unit),
				arrow,
			),
		);
		return {
			node: cell,
			update() {
				const down = sorted?.field === field ? sorted.down : null;
				set(cell, "aria-sort", down === null ? null : down ? "descending" : "ascending");
				say(arrow, down === null ? "" : down ? "▼" : "▲");
			},
		};
	}

	function make_row({ link }) {
		const tr = h("tr", {});
		function make_cell({ field, first }) {
			const text = device_text("");
			return {
				node: h(
					first ? "th" : "td",
					{ scope: first && "row", class: class_of(field) },
					h("div", { class: "clamp" }, first && link ? h("a", { href: link }, text) : text),
				),
				update: ({ value }) => say(text, first ? value || "(empty)" : value),
			};
		}
		const cells = (row) =>
			columns().map((field, place) => ({ field, first: place === 0, value: value_text(field, row[field.name]) }));
		return {
			node: tr,
			update: ({ row }) => keyed(tr, cells(row), ({ field, first }) => `${first} ${field.name}`, make_cell),
		};
	}

	function shown_rows() {
		const words = filter.value.toLowerCase().split(/\s+/).filter(Boolean);
		const fields = columns();
		const found = rows.filter((row) => {
			const text = words.length
				? fields
						.map((field) => value_text(field, row[field.name]))
						.join("\n")
						.toLowerCase()
				: "";
			return words.every((word) => text.includes(word));
		});
		if (!sorted) return found;
		const { field, down } = sorted;
		return found.sort((a, b) => (down ? -1 : 1) * compare(field, a[field.name], b[field.name]));
	}

	function draw() {
		keyed(head, columns(), (field) => field.name, make_head);
		const found = shown_rows();
		const last_page = Math.max(Math.ceil(found.length / page_rows) - 1, 0);
		page = Math.min(Math.max(page, 0), last_page);
		const part = found.slice(page * page_rows, (page + 1) * page_rows);
		const items = part.map((row) => {
			const key = key_of(table, row);
			const address = to_row(table, key);
			// rows that are told apart by a secret cannot be opened: nobody may say which
			return { row, address, link: Object.values(key).includes(null) ? null : address };
		});
		keyed(body, items, (item) => item.address, make_row);
		set(pages, "hidden", last_page === 0);
		earlier.disabled = page === 0;
		later.disabled = page === last_page;
		const of = found.length === rows.length ? "" : ` of ${count(rows.length)}`;
		const range = last_page ? `, ${count(page * page_rows + 1)} to ${count(page * page_rows + part.length)} shown` : "";
		say(
			status,
			!read_at
				? "Nothing was read."
				: `${count(found.length)}${of} ${rows.length === 1 ? "row" : "rows"}${range}, read at ${time(read_at)}${complete ? "" : ", not all"}`,
		);
	}

	// Reads the table, or on from the last row.
	async function read(on = false) {
		reading?.abort();
		const own = new AbortController();
		reading = own;
		say(status, "Reading …");
		await failure.around(async () => {
			const [result] = await gateway.rows(
				[
					{
						table: table.table,
						after: on ? rows.at(-1) : undefined,
						limit: Math.min(walk_rows, model.limits.rows ?? walk_rows),
					},
				],
				{ seconds: walk_seconds, signal: own.signal },
			);
			if (own.signal.aborted) return;
			rows = on ? [...rows, ...result.rows] : result.rows;
			read_at = new Date();
			const code = result.failure?.code ?? (result.ended === "end" ? null : result.ended);
			complete = code === null;
			const why = {
				too_many_rows: "the table has more.",
				deadline: "the time was over.",
				res: "nobody told whether that is the end.",
			}[code];
			cut.update(
				code && rows.length
					? { code, message: `Cut short after ${count(rows.length)} rows: ${why ?? result.failure.message}` }
					: null,
			);
			draw();
			if (code && !rows.length && result.failure) throw Object.assign(new Error(result.failure.message), { code });
			announce(status.textContent);
		});
		draw();
	}

	const save = (ending, type, text) => {
		download(file_name(table.table, ending), type, text);
		announce("The rows shown were saved.");
	};
	const save_csv = () =>
		save(
			"csv",
			"text/csv;charset=utf-8",
			csv([
				columns().map((field) => field.name),
				...shown_rows().map((row) => columns().map((field) => row[field.name])),
			]),
		);
	const save_json = () =>
		save(
			"json",
			"application/json",
			`${JSON.stringify(
				{
					table: table.table,
					read: read_at,
					complete,
					rows: shown_rows().map((row) =>
						Object.fromEntries(columns().map((field) => [field.name, row[field.name] ?? null])),
					),
				},
				null,
				1,
			)}\n`,
		);

	const column_choice = h("details", { class: "columns" });
	function draw_choice() {
		column_choice.replaceChildren(
			h("summary", {}, "Columns"),
			ticks(
				"Columns",
				possible.map((field) => [field.name, field.title]),
				chosen,
				(name, yes) => {
					if (!yes && chosen.size === 1) {
						announce("One column has to stay.");
						return false;
					}
					if (yes) chosen.add(name);
					else chosen.delete(name);
					keep(kept_as, [...chosen]);
					draw();
				},
				{ class: "unseen" },
			),
			button(
				"Usual columns",
				() => {
					chosen = new Set(usual);
					keep(kept_as, null);
					draw_choice();
					draw();
					column_choice.querySelector("summary").focus();
				},
				{ class: "small" },
			),
		);
	}

	draw_choice();
	const node = h(
		"div",
		{ class: "view rows" },
		h("p", { class: "crumbs" }, h("a", { href: "#/tables" }, "Tables"), " / ", service_title(table.service)),
		heading(table.title),
		table.description && h("p", {}, table.description),
		h(
			"div",
			{ class: "bar" },
			labelled("Filter", filter),
			button("Read again", () => read()),
			button("Save as CSV", save_csv),
			button("Save as JSON", save_json),
			table.changeable && h("a", { class: "button", href: `#/add/${encodeURIComponent(table.table)}` }, "Add a row"),
		),
		column_choice,
		status,
		failure.node,
		cut.node,
		scroller(`Rows of ${table.title}`, grid),
		pages,
	);
	read();
	return { title: table.title, node, stop: () => reading?.abort() };
}
