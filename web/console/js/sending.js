// What a form sends: shown before, told afterwards; and what somebody else changed
// between the form's reading and its sending.
import { h, announce, device_text, plain } from "./dom.js";
import { change } from "./gateway.js";
import { to_row } from "./model.js";
import { input_text, value_text } from "./format.js";
import { button, clamped, head_row, scroller } from "./parts.js";

export const values = (inputs) => Object.fromEntries(inputs.map((input) => [input.field.name, input.text()]));

const new_secret = "a new secret";
const shown_text = (field, value) => (value?.secret ? new_secret : value_text(field, value) || "(empty)");

// Fields, each with cells: before and after.
function difference_table(caption, heads, lines) {
	return scroller(
		caption,
		h(
			"table.difference",
			head_row("Field", ...heads),
			h(
				"tbody",
				lines.map(({ field, cells }) =>
					h(
						"tr",
						{ "data-field": field.name },
						h("th", { scope: "row" }, field.title),
						cells.map((cell) => h("td", clamped(device_text(cell)))),
					),
				),
			),
		),
	);
}

const before_and_after = (caption, lines, otherwise) =>
	lines.length ? difference_table(caption, ["Before", "After"], lines) : h("p", otherwise);

export function show_review(form) {
	const { base } = form;
	const lines = form.fields.dirty().map(({ field, text }) => ({
		field,
		cells: [base ? shown_text(field, base[field.name]) : "–", field.secret ? new_secret : text() || "(empty)"],
	}));
	const send = button(
		form.api ? "Send" : lines.length === 1 ? "Send this change" : `Send these ${lines.length} changes`,
		() => transmit(form, send),
		{ class: "primary" },
	);
	form.show_side(
		false,
		"What will change",
		before_and_after("What will change", lines, "The call carries no fields."),
		h(
			"div.bar",
			send,
			button("Back to the form", () => form.back()),
		),
	);
}

function request_of({ table, key, adding, api, fields, base }) {
	const dirty = fields.dirty();
	if (api) return { api: api.name, fields: values(dirty) };
	if (!adding) return { table: table.table, key, changes: values(dirty), read: base };
	return {
		table: table.table,
		key: values(dirty.filter(fields.is_key)),
		changes: values(dirty.filter((input) => !fields.is_key(input))),
		add: true,
	};
}

async function transmit(form, send) {
	send.disabled = true;
	const request = request_of(form);
	await form.send_failure.around(async () => {
		try {
			show_result(form, await change(request), request.key);
		} catch (problem) {
			send.disabled = false;
			if (problem.code === "changed_meanwhile") return show_meanwhile(form, problem.row);
			form.fields.named(problem.field)?.wrong(problem);
			announce(plain(problem.message));
			throw problem;
		}
	});
}

function show_meanwhile(form, row) {
	const { base } = form;
	const is_other = ({ kind, name }) => kind !== "counter" && input_text(row[name]) !== input_text(base[name]);
	const lines = form.table.fields.filter(is_other).map((field) => ({
		field,
		cells: [base, row].map((one) => shown_text(field, one[field.name])),
	}));
	const accept = (keep) => () => {
		form.take(row);
		if (!keep) form.forget();
		if (form.fields.dirty().length) show_review(form);
		else form.back();
	};
	form.show_side(
		false,
		"Somebody else changed this row meanwhile",
		h("p", "Nothing of yours was sent."),
		difference_table("What somebody else changed", ["When you read it", "Now"], lines),
		h(
			"div.bar",
			button("Take the row as it is now, keep my changes", accept(true), { class: "primary" }),
			button("Take the row as it is now, drop my changes", accept(false)),
		),
	);
}

function show_result(form, { status, changed }, new_key) {
	const { base, table, adding, api } = form;
	const lines = Object.entries(changed ?? {}).map(([name, { secret, before, after }]) => {
		const field = table.by_name.get(name) ?? { name, title: name };
		if (secret) return { field, cells: ["secret", new_secret] };
		if (base) base[name] = after;
		return { field, cells: [before === undefined ? "–" : shown_text(field, before), shown_text(field, after)] };
	});
	if (base) form.take(base);
	form.forget();
	form.show_side(
		true,
		status ? `The daemon answered status ${status}` : "Changed",
		before_and_after(
			"What changed",
			lines,
			api ? "The daemon carried it out." : "The device has these values already.",
		),
		adding ? h("p", h("a", { href: to_row(table, new_key) }, "The new row")) : "",
	);
	if (!form.fresh) form.read();
}
