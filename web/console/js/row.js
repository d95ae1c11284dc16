// The page of one row, of a new row, or of APIs that only do something.
import { h, plain } from "./dom.js";
import { model, title_in, to_row, to_table } from "./model.js";
import { labelled, no_such_table, sentence_page, table_head } from "./parts.js";
import { Form } from "./form.js";

// A table whose rows cannot be listed: which row is it to be?
function ask_key(table, query) {
	const boxes = table.key_names.map((name) =>
		h("input", { name, value: query.get(name) ?? "", autocomplete: "off", spellcheck: "false" }),
	);
	const submit = (event) => {
		event.preventDefault();
		location.hash = to_row(table, Object.fromEntries(boxes.map((box) => [box.name, box.value])));
	};
	return h(
		"form.bar",
		{ on: { submit } },
		boxes.map((box) => labelled(title_in(table, box.name), box)),
		h("button", { type: "submit" }, "Read the row"),
	);
}

export function show_row({ view, rest, query }) {
	const table = model.tables.get(rest[0]);
	if (!table) return no_such_table(rest[0] ?? "");
	const adding = view === "add";
	const acting = !table.stored;
	const key = Object.fromEntries(
		table.key_names.filter((name) => query.has(name)).map((name) => [name, query.get(name)]),
	);
	const which = Object.entries(key)
		.map(([name, value]) => `${title_in(table, name)} ${plain(value)}`)
		.join(", ");
	const title = adding ? `New row of ${table.title}` : table.title + (which && `: ${which}`);
	if (acting ? !table.may_change : !table.readable) return sentence_page(title, "You have no right to this table.");

	const listed = table.walked && table.key_names.length > 0;
	const forms = [];
	const node = h(
		"div.view.row",
		table_head(table, title, listed && [" / ", h("a", { href: to_table(table) }, table.title)]),
	);
	if (acting) {
		forms.push(...table.acts.map((api) => new Form({ table, api })));
	} else if (adding || table.key_names.every((name) => name in key)) {
		forms.push(new Form({ table, key, adding }));
	} else {
		node.append(h("p", "The device cannot list these rows: say which one."), ask_key(table, query));
	}
	node.append(...forms.map((form) => form.node));
	return { title, node, stop: () => forms.forEach((form) => form.stop()) };
}
