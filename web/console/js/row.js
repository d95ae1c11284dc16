// One row as a form: read, changed, checked as it is typed, shown before it is sent,
// told afterwards. Also a new row, and APIs that only do something.
import { h, say, set, announce, device_text, plain } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, arranged, to_row, to_table, service_title } from "./model.js";
import { input_text, value_text } from "./format.js";
import {
	button,
	failure_part,
	head_row,
	heading,
	labelled,
	no_such_table,
	pairs_part,
	scroller,
	sentence_page,
} from "./parts.js";
import { make_field } from "./field.js";

const check_after = 200; // ms without a key pressed
const read_seconds = 2;
const drafts = new Map(); // what was typed and not sent, by address; no secrets

const new_secret = "a new secret";
const shown_text = (field, value) => (value?.secret ? new_secret : value_text(field, value) || "(empty)");

// Fields, each with cells: before and after.
function difference_table(caption, heads, lines) {
	return scroller(
		caption,
		h(
			"table",
			{ class: "difference" },
			head_row("Field", ...heads),
			h(
				"tbody",
				{},
				lines.map(({ field, cells }) =>
					h(
						"tr",
						{ "data-field": field.name },
						h("th", { scope: "row" }, field.title),
						cells.map((cell) => h("td", {}, h("div", { class: "clamp" }, device_text(cell)))),
					),
				),
			),
		),
	);
}

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
		"form",
		{ class: "bar", on: { submit } },
		boxes.map((box) => labelled(table.by_name.get(box.name)?.title ?? box.name, box)),
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
		.map(([name, value]) => `${table.by_name.get(name)?.title ?? name} ${plain(value)}`)
		.join(", ");
	const title = adding ? `New row of ${table.title}` : table.title + (which && `: ${which}`);
	if (acting ? !table.may_change : !table.readable) return sentence_page(title, "You have no right to this table.");

	const forms = [];
	const node = h(
		"div",
		{ class: "view row" },
		h(
			"p",
			{ class: "crumbs" },
			h("a", { href: "#/tables" }, "Tables"),
			" / ",
			service_title(table.service),
			table.walked && table.key_names.length > 0 && [" / ", h("a", { href: to_table(table) }, table.title)],
		),
		heading(title),
		table.description && h("p", {}, table.description),
	);
	if (acting) {
		forms.push(...table.acts.map((api) => row_form({ table, api })));
	} else if (adding || table.key_names.every((name) => name in key)) {
		forms.push(row_form({ table, key, adding }));
	} else {
		node.append(h("p", {}, "The device cannot list these rows: say which one."), ask_key(table, query));
	}
	node.append(...forms.map((form) => form.node));
	return { title, node, stop: () => forms.forEach((form) => form.stop()) };
}

// A form: of the row of a key, of a new row, or of an API that has no row to read.
function row_form({ table, key = {}, adding = false, api = null }) {
	const place = location.hash;
	const fresh = adding || Boolean(api); // nothing is there to be read
	const editable = fresh || table.changeable;
	const { keys, content, more, closing } = arranged(table);
	const is_input = (field) =>
		editable &&
		field.argument &&
		!["counter", "skip"].includes(field.kind) &&
		field.name !== "res" &&
		field.field !== "res" &&
		(fresh || !keys.includes(field));
	const inputs = [...keys, ...content, ...more, ...closing]
		.filter(is_input)
		.map((field) =>
			make_field(field, { on_input: typed, empty_choice: fresh, required: adding && keys.includes(field) }),
		);
	const input_of = new Map(inputs.map((input) => [input.field.name, input]));
	const rare = inputs.filter(({ field }) => more.includes(field) || closing.includes(field));
	const shown = pairs_part(fresh ? [] : content.filter((field) => !is_input(field)));
	const shown_more = pairs_part(fresh ? [] : [...more, ...closing].filter((field) => !is_input(field)));
	let base = null; // the row as read
	let timer = 0;
	let reading = null;
	let checking = null;

	const failure = failure_part(() => read());
	const send_failure = failure_part(null);
	const note = h("p", { class: "quiet", hidden: true });
	const review_button = h("button", { type: "submit", class: "primary" }, "Show what will change");
	const drop = button(
		"Drop the changes",
		() => {
			forget();
			announce("The changes were dropped.");
		},
		{ hidden: true },
	);
	const more_part = h(
		"details",
		{ class: "more", hidden: more.length + closing.length === 0 },
		h("summary", {}, "More fields"),
		rare.map((input) => input.node),
		shown_more.node,
	);
	const submit = (event) => {
		event.preventDefault();
		review();
	};
	const form = h(
		"form",
		{ novalidate: true, autocomplete: "off", hidden: !fresh, on: { submit } },
		inputs.filter((input) => !rare.includes(input)).map((input) => input.node),
		more_part,
		note,
		h(
			"div",
			{ class: "bar buttons" },
			editable && review_button,
			drop,
			!fresh && button("Read again", () => read(true)),
		),
	);
	const side = h("section", { class: "card side", hidden: true }); // what will change, what did
	const may_not = !editable && table.operations.includes("set");
	const node = h(
		"div",
		{ class: "form" },
		api && h("h2", {}, api.name),
		failure.node,
		may_not && h("p", { class: "quiet" }, "You may read this table, not change it."),
		side,
		send_failure.node,
		shown.node,
		form,
	);

	const dirty = () => inputs.filter((input) => input.dirty());
	const values = (list) => Object.fromEntries(list.map((input) => [input.field.name, input.text()]));

	function tell(text) {
		say(note, text);
		set(note, "hidden", !text);
	}

	function remember() {
		const kept = dirty().filter((input) => !input.field.secret);
		if (kept.length) drafts.set(place, values(kept));
		else drafts.delete(place);
		set(drop, "hidden", dirty().length === 0);
	}

	function forget() {
		for (const input of inputs) input.reset();
		remember();
		tell("");
	}

	function typed() {
		remember();
		clearTimeout(timer);
		timer = setTimeout(check, check_after);
	}

	// Asks the gateway what is wrong with what was typed; true where it has been told.
	async function check() {
		clearTimeout(timer);
		checking?.abort();
		const own = new AbortController();
		checking = own;
		let known = false;
		await send_failure.around(async () => {
			const wrong = await gateway.check(
				api ? { api: api.name } : { table: table.table },
				{ ...key, ...values(dirty()) },
				own.signal,
			);
			if (own.signal.aborted) return;
			for (const input of inputs) input.wrong(input.dirty() ? wrong[input.field.name] : null);
			known = true;
		});
		return known;
	}

	async function review() {
		if (!(await check())) return;
		for (const input of adding ? inputs : []) {
			if (keys.includes(input.field) && input.text() === "") {
				input.wrong({ message: "Expected what says which row it is." });
			}
		}
		const wrong = inputs.filter((input) => input.problem());
		if (wrong.length) {
			if (rare.includes(wrong[0])) more_part.open = true;
			wrong[0].control.focus();
			announce(`${wrong.length} ${wrong.length === 1 ? "field has" : "fields have"} a mistake.`);
		} else if (!api && dirty().length === 0) {
			tell("Nothing was changed yet.");
			announce(note.textContent);
		} else {
			show_review();
		}
	}

	// Shows something in place of the form, or above it.
	function show_side(with_form, text, ...parts) {
		const title = h("h2", { tabindex: "-1" }, text);
		side.replaceChildren(title, ...parts);
		set(side, "hidden", false);
		set(form, "hidden", !with_form);
		send_failure.update(null);
		tell("");
		title.focus();
	}

	function back() {
		set(side, "hidden", true);
		set(form, "hidden", false);
		send_failure.update(null);
		review_button.focus();
	}

	function show_review() {
		const lines = dirty().map(({ field, text }) => ({
			field,
			cells: [base ? shown_text(field, base[field.name]) : "–", field.secret ? new_secret : text() || "(empty)"],
		}));
		const send = button(
			api ? "Send" : lines.length === 1 ? "Send this change" : `Send these ${lines.length} changes`,
			() => transmit(send),
			{ class: "primary" },
		);
		show_side(
			false,
			"What will change",
			lines.length
				? difference_table("What will change", ["Before", "After"], lines)
				: h("p", {}, "The call carries no fields."),
			h("div", { class: "bar" }, send, button("Back to the form", back)),
		);
	}

	async function transmit(send) {
		send.disabled = true;
		const is_key = (input) => keys.includes(input.field);
		const body = api
			? { api: api.name, fields: values(dirty()) }
			: adding
				? {
						table: table.table,
						key: values(dirty().filter(is_key)),
						changes: values(dirty().filter((input) => !is_key(input))),
						add: true,
					}
				: { table: table.table, key, changes: values(dirty()), read: base };
		await send_failure.around(async () => {
			try {
				show_result(await gateway.change(body), body.key);
			} catch (problem) {
				send.disabled = false;
				if (problem.code === "changed_meanwhile") return show_meanwhile(problem.row);
				input_of.get(problem.field)?.wrong(problem);
				announce(plain(problem.message));
				throw problem;
			}
		});
	}

	// Somebody else changed the row between our reading and our sending.
	function show_meanwhile(row) {
		const others = table.fields.filter(
			(field) => field.kind !== "counter" && input_text(row[field.name]) !== input_text(base[field.name]),
		);
		const lines = others.map((field) => ({
			field,
			cells: [shown_text(field, base[field.name]), shown_text(field, row[field.name])],
		}));
		const accept = (keep) => () => {
			take(row);
			if (!keep) forget();
			if (dirty().length) show_review();
			else back();
		};
		show_side(
			false,
			"Somebody else changed this row meanwhile",
			h("p", {}, "Nothing of yours was sent."),
			difference_table("What somebody else changed", ["When you read it", "Now"], lines),
			h(
				"div",
				{ class: "bar" },
				button("Take the row as it is now, keep my changes", accept(true), { class: "primary" }),
				button("Take the row as it is now, drop my changes", accept(false)),
			),
		);
	}

	function show_result({ status, changed }, new_key) {
		const lines = Object.entries(changed ?? {}).map(([name, change]) => {
			const field = table.by_name.get(name) ?? { name, title: name };
			return {
				field,
				change,
				cells: change.secret
					? ["secret", new_secret]
					: ["before" in change ? shown_text(field, change.before) : "–", shown_text(field, change.after)],
			};
		});
		for (const { field, change } of lines) if (base && !change.secret) base[field.name] = change.after;
		if (base) take(base);
		forget();
		show_side(
			true,
			status ? `The daemon answered status ${status}` : "Changed",
			lines.length
				? difference_table("What changed", ["Before", "After"], lines)
				: h("p", {}, api ? "The daemon carried it out." : "The device has these values already."),
			adding ? h("p", {}, h("a", { href: to_row(table, new_key) }, "The new row")) : "",
		);
		if (!fresh) read();
	}

	function take(row) {
		base = row;
		for (const input of inputs) input.base(row[input.field.name]);
		shown.show(row);
		shown_more.show(row);
		remember();
	}

	// Fills in what was typed here before and not sent.
	function recall_draft(draft) {
		if (!draft) return;
		for (const [name, text] of Object.entries(draft)) input_of.get(name)?.put(text);
		remember();
		tell("What you typed before and did not send is still here.");
		check();
	}

	async function read(told) {
		reading?.abort();
		const own = new AbortController();
		reading = own;
		await failure.around(async () => {
			const row = await gateway.row(table.table, key, { seconds: read_seconds, signal: own.signal });
			if (own.signal.aborted) return;
			const draft = base ? null : drafts.get(place);
			if (!base) set(form, "hidden", false);
			take(row);
			recall_draft(draft);
			if (told) announce("Read again.");
		});
	}

	const leaving = (event) => dirty().length > 0 && event.preventDefault();
	addEventListener("beforeunload", leaving);
	if (fresh) recall_draft(drafts.get(place));
	else read();
	return {
		node,
		stop() {
			clearTimeout(timer);
			reading?.abort();
			checking?.abort();
			removeEventListener("beforeunload", leaving);
		},
	};
}
