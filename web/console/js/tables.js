// Every table by service, with a search; and the rows of one.
import { h, say, set, announce } from "./dom.js";
import { model, to_table } from "./model.js";
import { count } from "./format.js";
import { heading, labelled, no_such_table, search_box } from "./parts.js";
import { show_rows } from "./rows.js";
import { show_row } from "./row.js";

let asked = ""; // what was searched for last

function hints(table, words) {
	if (words.length === 0) return "";
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

function show_list() {
	const entries = [];
	const groups = model.services.map((service) => {
		const own = [...model.tables.values()].filter((table) => table.service === service.name);
		const items = own.map((table) => {
			const hint = h("span", { class: "hint" });
			const item = h(
				"li",
				{},
				h("a", { href: to_table(table) }, table.title),
				table.title === table.table ? null : h("code", {}, table.table),
				table.readable || table.may_change ? null : h("span", { class: "quiet" }, "no right to it"),
				hint,
			);
			const entry = { table, item, hint };
			entries.push(entry);
			return entry;
		});
		return {
			node: h(
				"section",
				{ class: "group" },
				h("h2", {}, service.title || service.name),
				h(
					"ul",
					{},
					items.map((entry) => entry.item),
				),
			),
			items,
		};
	});

	const found = h("p", { class: "quiet", id: "found" });
	const box = search_box(
		() => {
			filter();
			announce(found.textContent);
		},
		{ "aria-describedby": found.id, value: asked },
	);
	function filter() {
		asked = box.value;
		const words = asked.toLowerCase().split(/\s+/).filter(Boolean);
		let matches = 0;
		for (const { table, item, hint } of entries) {
			const fits = words.every((word) => table.haystack.includes(word));
			set(item, "hidden", !fits);
			say(hint, fits ? hints(table, words) : "");
			matches += fits;
		}
		for (const { node, items } of groups) {
			set(
				node,
				"hidden",
				items.every((entry) => entry.item.hidden),
			);
		}
		say(
			found,
			words.length ? `${count(matches)} of ${count(entries.length)} tables` : `${count(entries.length)} tables`,
		);
	}
	filter();
	return {
		title: "Tables",
		node: h(
			"div",
			{ class: "view tables" },
			heading("Tables"),
			h("search", { class: "bar", role: "search" }, labelled("Search names, titles and fields", box), found),
			h(
				"div",
				{ class: "groups" },
				groups.map((group) => group.node),
			),
		),
	};
}

export function show_tables({ rest, query }) {
	if (rest.length === 0) return show_list();
	const table = model.tables.get(rest[0]);
	if (!table) return no_such_table(rest[0]);
	return table.walked && table.readable && table.key_names.length > 0 ? show_rows(table) : show_row({ rest, query });
}
