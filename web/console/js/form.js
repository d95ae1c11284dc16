// A row's form: its fields, buttons and notes, and a side where what will change stands, and
// what did. It reads the row and has what is typed checked; sending.js sends.
import { h, say, announce } from "./dom.js";
import * as gateway from "./gateway.js";
import { arranged } from "./model.js";
import { latest } from "./live.js";
import { button, failure_part, pairs_part } from "./parts.js";
import { make_field } from "./field.js";
import { show_review, values } from "./sending.js";

const check_after = 200; // ms without a key pressed
const read_seconds = 2;
const drafts = new Map(); // what was typed and not sent, by address; no secrets

const is_typed = (field) =>
	field.argument && !["counter", "skip"].includes(field.kind) && field.name !== "res" && field.field !== "res";

function make_fields({ table, adding, fresh }, on_input) {
	const { keys, content, more, closing } = arranged(table);
	const is_key = ({ field }) => keys.includes(field);
	const is_input = (field) => is_typed(field) && (fresh || (table.changeable && !keys.includes(field)));
	const make = (field) => make_field(field, { on_input, empty_choice: fresh, required: adding && is_key({ field }) });
	const shown_of = (list) => pairs_part(fresh ? [] : list.filter((field) => !is_input(field)));
	const rare_fields = [...more, ...closing];
	const usual = [...keys, ...content].filter(is_input).map(make);
	const rare = rare_fields.filter(is_input).map(make);
	const inputs = [...usual, ...rare];
	const shown = shown_of(content);
	const shown_rare = shown_of(rare_fields);
	const folded = h("details.more", { hidden: !rare_fields.length }, h("summary", "More fields"), rare, shown_rare);
	return {
		shown,
		entries: [...usual, folded],
		is_key,
		dirty: () => inputs.filter((input) => input.dirty()),
		named: (name) => inputs.find(({ field }) => field.name === name),
		take(row) {
			for (const input of inputs) input.base(row[input.field.name]);
			shown.show(row);
			shown_rare.show(row);
		},
		reset() {
			for (const input of inputs) input.reset();
		},
		mark(wrong) {
			for (const input of inputs) input.wrong(input.dirty() ? wrong[input.field.name] : null);
		},
		// How many there are; the first gets the focus.
		mistakes() {
			for (const input of adding ? inputs.filter(is_key) : []) {
				if (input.text() === "") input.wrong({ message: "Expected what says which row it is." });
			}
			const wrong = inputs.filter((input) => input.problem());
			if (rare.includes(wrong[0])) folded.open = true;
			wrong[0]?.control.focus();
			return wrong.length;
		},
	};
}

// Of the row of a key, of a new row, or of an API that has no row to read.
export class Form {
	place = location.hash;
	base = null; // the row as read
	failure = failure_part(() => this.read());
	send_failure = failure_part(null);
	note = h("p.quiet", { hidden: true });
	side = h("section.card.side", { hidden: true });
	review_button = h("button.primary", { type: "submit" }, "Show what will change");
	drop = button(
		"Drop the changes",
		() => {
			this.forget();
			announce("The changes were dropped.");
		},
		{ hidden: true },
	);
	read = latest((signal, told) => this.read_row(signal, told));
	check = latest((signal) => this.check_typed(signal));
	leaving = (event) => this.fields.dirty().length > 0 && event.preventDefault();

	constructor({ table, key = {}, adding, api }) {
		const fresh = adding || api; // nothing is there to be read
		const editable = fresh || table.changeable;
		const may_not = !editable && table.operations.includes("set");
		Object.assign(this, { table, key, adding, api, fresh });
		this.fields = make_fields(this, () => this.typed());
		const submit = (event) => {
			event.preventDefault();
			this.review();
		};
		this.entry = h(
			"form",
			{ novalidate: true, autocomplete: "off", hidden: !fresh, on: { submit } },
			this.fields.entries,
			this.note,
			h(
				"div.bar.buttons",
				editable && this.review_button,
				this.drop,
				!fresh && button("Read again", () => this.read(true)),
			),
		);
		this.node = h(
			"div.form",
			api && h("h2", api.name),
			this.failure,
			may_not && h("p.quiet", "You may read this table, not change it."),
			this.side,
			this.send_failure,
			this.fields.shown,
			this.entry,
		);
		addEventListener("beforeunload", this.leaving);
		if (fresh) this.recall(drafts.get(this.place));
		else this.read();
	}

	stop() {
		clearTimeout(this.timer);
		this.read.stop();
		this.check.stop();
		removeEventListener("beforeunload", this.leaving);
	}

	read_row(signal, told) {
		return this.failure.around(async () => {
			const row = await gateway.row(this.table.table, this.key, { seconds: read_seconds, signal });
			if (signal.aborted) return;
			const draft = this.base ? null : drafts.get(this.place);
			if (!this.base) this.entry.hidden = false;
			this.take(row);
			this.recall(draft);
			if (told) announce("Read again.");
		});
	}

	// The row as it is now; what was typed stays.
	take(row) {
		this.base = row;
		this.fields.take(row);
		this.remember();
	}

	typed() {
		this.remember();
		clearTimeout(this.timer);
		this.timer = setTimeout(this.check, check_after);
	}

	// Asks the gateway what is wrong with what was typed; true where it has been told.
	async check_typed(signal) {
		const { api, table, key, fields } = this;
		clearTimeout(this.timer);
		let known = false;
		await this.send_failure.around(async () => {
			const what = api ? { api: api.name } : { table: table.table };
			const wrong = await gateway.check(what, { ...key, ...values(fields.dirty()) }, signal);
			if (signal.aborted) return;
			fields.mark(wrong);
			known = true;
		});
		return known;
	}

	async review() {
		if (!(await this.check())) return;
		const mistakes = this.fields.mistakes();
		if (mistakes) {
			announce(`${mistakes} ${mistakes === 1 ? "field has" : "fields have"} a mistake.`);
		} else if (!this.api && this.fields.dirty().length === 0) {
			this.tell("Nothing was changed yet.");
			announce(this.note.textContent);
		} else {
			show_review(this);
		}
	}

	tell(text) {
		say(this.note, text);
		this.note.hidden = !text;
	}

	remember() {
		const dirty = this.fields.dirty();
		const kept = dirty.filter((input) => !input.field.secret);
		if (kept.length) drafts.set(this.place, values(kept));
		else drafts.delete(this.place);
		this.drop.hidden = dirty.length === 0;
	}

	forget() {
		this.fields.reset();
		this.remember();
		this.tell("");
	}

	// Fills in what was typed here before and not sent.
	recall(draft) {
		if (!draft) return;
		for (const [name, text] of Object.entries(draft)) this.fields.named(name)?.put(text);
		this.remember();
		this.tell("What you typed before and did not send is still here.");
		this.check();
	}

	// Shows something in place of the form, or above it.
	show_side(with_form, text, ...parts) {
		const title = h("h2", { tabindex: "-1" }, text);
		this.side.replaceChildren(title, ...parts);
		this.turn(true, with_form);
		this.tell("");
		title.focus();
	}

	back() {
		this.turn(false, true);
		this.review_button.focus();
	}

	turn(with_side, with_form) {
		this.side.hidden = !with_side;
		this.entry.hidden = !with_form;
		this.send_failure.update(null);
	}
}
