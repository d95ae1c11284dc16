// Every table by service, with a search; and the rows of one.
import { h, say, announce } from "./dom.js";
import { model, all_tables, to_table } from "./model.js";
import { count, words_of } from "./format.js";
import { heading, labelled, no_such_table, search_box } from "./parts.js";
import { show_rows } from "./rows.js";
import { show_row } from "./row.js";

let asked = ""; // what was searched for last

function hints(table, words) {
	const head = `${table.table}\n${table.title}`.toLowerCase();
	const left = words.filter((word) => !head.includes(word));
	const fields = table.fields.filter((field) =>
		left.some((word) => `${field.name}\n${field.title}`.toLowerCase().includes(word)),
	);
	return (
		fields
			.slice(0, 4)
			.map((field) => field.title)
			.join(", ") + (fields.length > 4 ? " …" : "")
	);
}

function make_entry(table) {
	const hint = h("span.hint");
	const node = h(
		"li",
		h("a", { href: to_table(table) }, table.title),
		table.title !== table.table && h("code", table.table),
		!table.readable && !table.may_change && h("span.quiet", "no right to it"),
		hint,
	);
	return {
		node,
		search(words) {
			const fits = words.every((word) => table.haystack.includes(word));
			node.hidden = !fits;
			say(hint, fits ? hints(table, words) : "");
			return fits;
		},
	};
}

function make_group(service) {
	const own = all_tables().filter((table) => table.service === service.name);
	const entries = own.map(make_entry);
	return { entries, node: h("section.group", h("h2", service.title || service.name), h("ul", entries)) };
}

function show_list() {
	const groups = model.services.map(make_group);
	const found = h("p.quiet", { id: "found" });
	const input = () => {
		search();
		announce(found.textContent);
	};
	const box = search_box(input, { "aria-describedby": found.id, value: asked });
	function search() {
		asked = box.value;
		const words = words_of(asked);
		let matches = 0;
		for (const { node, entries } of groups) {
			const fitting = entries.filter((entry) => entry.search(words)).length;
			node.hidden = fitting === 0;
			matches += fitting;
		}
		const all = `${count(model.tables.size)} tables`;
		say(found, words.length ? `${count(matches)} of ${all}` : all);
	}
	search();
	const bar = h("search.bar", { role: "search" }, labelled("Search names, titles and fields", box), found);
	return { title: "Tables", node: h("div.view.tables", heading("Tables"), bar, h("div.groups", groups)) };
}

export function show_tables({ rest, query }) {
	if (rest.length === 0) return show_list();
	const table = model.tables.get(rest[0]);
	if (!table) return no_such_table(rest[0]);
	return table.walked && table.readable && table.key_names.length > 0 ? show_rows(table) : show_row({ rest, query });
}
