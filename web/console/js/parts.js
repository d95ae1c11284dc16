// Pieces that several views are made of.
import { h, say, shape, set, plain, keyed, device_text } from "./dom.js";
import { model, service_title } from "./model.js";
import { with_unit } from "./format.js";

export const button = (text, click, settings) => h("button", { type: "button", on: { click }, ...settings }, text);

// A shape and a word, which may change: state.update("good", "up").
export function state_mark(state, word) {
	const text = h("span.word");
	const node = h("span.state", shape(state), text);
	const update = (next, next_word) => {
		if (next !== node.dataset.state) node.firstChild.replaceWith(shape(next));
		set(node, "data-state", next);
		say(text, next_word);
	};
	update(state, word);
	return { node, update };
}

// Why something failed, and a way to try again. update(null) hides it.
export function failure_part(retry, { small, label = "Try again" } = {}) {
	const sentence = h("span.sentence");
	const node = h(
		small ? "span" : "div",
		{ class: small ? "failure small" : "failure notice bad", hidden: true },
		shape("bad"),
		" ",
		sentence,
		" ",
		retry && button(label, () => retry(), { class: "small" }),
	);
	const update = (failure) => {
		node.hidden = !failure;
		if (!failure) return;
		set(node, "title", model.codes[failure.code]);
		set(node, "data-code", failure.code ?? "failed");
		say(sentence, plain(failure.message ?? "It failed."));
	};
	return {
		node,
		update,
		// Does `work`, and shows why it failed if it did; a request that was given up is none.
		async around(work) {
			try {
				await work();
				update(null);
			} catch (problem) {
				if (problem.code === undefined) throw problem;
				if (problem.code !== "stopped") update(problem);
			}
		},
	};
}

let numbers = 0;
export const new_id = (name) => `${name}-${(numbers += 1)}`;

// A heading that takes the focus when its view is opened.
export const heading = (text) => h("h1", { tabindex: "-1" }, text);

// A page with a sentence and nothing else.
export function sentence_page(title, ...text) {
	return { title, node: h("div.view", heading(title), h("p", text)) };
}

export function no_such_table(name) {
	return sentence_page(
		"No such table",
		`The device has no table ${plain(name)}. `,
		h("a", { href: "#/tables" }, "All tables"),
	);
}

export function table_head(table, title, more) {
	return [
		h("p.crumbs", h("a", { href: "#/tables" }, "Tables"), " / ", service_title(table.service), more),
		heading(title),
		table.description && h("p", table.description),
	];
}

export const card = (title, settings, ...children) => h("section.card", settings, h("h2", title), children);

export function labelled(text, control) {
	control.id ||= new_id("control");
	return h("span.labelled", h("label", { for: control.id }, text), control);
}

export const search_box = (input, settings) =>
	h("input", { type: "search", autocomplete: "off", spellcheck: "false", on: { input }, ...settings });

export function choice(label, options, chosen, on_change) {
	const box = h(
		"select",
		{ on: { change: () => on_change(box.value) } },
		options.map(([value, text]) => h("option", { value, selected: String(value) === String(chosen) }, text)),
	);
	return labelled(label, box);
}

// Boxes to tick, as many as wanted. on_change(value, ticked) says whether it may be.
export function ticks(legend, options, chosen, on_change, title = "legend") {
	return h(
		"fieldset.ticks",
		h(title, legend),
		options.map(([value, text]) =>
			h(
				"label.tick",
				h("input", {
					type: "checkbox",
					value,
					checked: chosen.has(value),
					on: {
						change: ({ target }) => {
							if (on_change(value, target.checked) === false) target.checked = !target.checked;
						},
					},
				}),
				h("bdi", text),
			),
		),
	);
}

// A long text in a cell.
export const clamped = (...text) => h("div.clamp", text);

// A place for a wide table that scrolls by keyboard, too.
export const scroller = (label, ...children) =>
	h("div.scroller", { tabindex: "0", role: "region", "aria-label": label }, children);

// A table's first line; a title may come with a class.
export function head_row(...titles) {
	return h(
		"thead",
		h(
			"tr",
			titles.map((title) => [title].flat()).map(([title, kind]) => h("th", { scope: "col", class: kind }, title)),
		),
	);
}

// Fields with their values, which change in place.
export function pairs_part(fields) {
	const list = h("dl.pairs");
	return {
		node: list,
		show(row) {
			keyed(
				list,
				fields.map((field) => ({ field, text: with_unit(field, row[field.name]) || "–" })),
				({ field }) => field.name,
				({ field }) => {
					const value = device_text("");
					return {
						node: h("div", h("dt", field.title), h("dd", value)),
						update: ({ text }) => say(value, text),
					};
				},
			);
		},
	};
}
