// One field of a form: its control by kind and limits, its hint, its mistake. The
// gateway decides what is wrong; the browser says the same at once where it can tell.
import { h, say, set, plain } from "./dom.js";
import { count, input_text } from "./format.js";
import { new_id } from "./parts.js";

const bytes_of = (text) => new TextEncoder().encode(text).length;
const mac_forms = /^([0-9a-f]{2}([-:])([0-9a-f]{2}\2){4}[0-9a-f]{2}|([0-9a-f]{4}\.){2}[0-9a-f]{4}|[0-9a-f]{12})$/i;

const is_whole = (kind) => ["int", "unsigned"].includes(kind);

function hint_of({ kind, limits = {} }) {
	switch (kind) {
		case "int":
		case "unsigned":
			return limits.most < 2147483647 ? `${limits.least} to ${limits.most}` : "a whole number";
		case "real":
			return "a number";
		case "mac":
			return "like 00-1E-80-AA-00-01";
		case "hex":
			return `pairs of hexadecimal digits, at most ${limits.longest} bytes`;
		case "list":
			return `${limits.items} numbers with commas between`;
		default:
			return `at most ${count(limits.longest ?? 0)} bytes`;
	}
}

// What is wrong, as a sentence for the one who types.
function sentence({ code, message, limits = {} }) {
	switch (code) {
		case "bad_number":
		case "out_of_range":
			return `Expected a number${"most" in limits ? ` from ${limits.least} to ${limits.most}` : ""}.`;
		case "too_long":
			return `Expected at most ${count(limits.longest)} bytes.`;
		case "separator":
			return `Expected a text without ${limits.characters}.`;
		case "bad_mac":
			return "Expected a MAC address like 00-1E-80-AA-00-01.";
		case "bad_list":
			return `Expected ${limits.items} numbers with commas between.`;
		default: // without the API's and the field's names before it
			return plain(message ?? code).replace(/^[a-z0-9_]+: ([a-z0-9_]+: )?e/, "E");
	}
}

// What the browser can tell itself.
function quick_check({ kind, values, limits = {} }, text) {
	let code = null;
	if (is_whole(kind) && !values) {
		if (!/^\s*[-+]?\d+\s*$/.test(text)) code = "bad_number";
		else if (Number(text) < limits.least || Number(text) > limits.most) code = "out_of_range";
	} else if (kind === "mac") {
		if (!mac_forms.test(text.trim())) code = "bad_mac";
	} else if (kind === "list") {
		const numbers = text.split(",");
		const whole = numbers.every((one) => /^\s*-?\d+\s*$/.test(one));
		if (!whole || numbers.length !== limits.items) code = "bad_list";
	} else if (kind === "text") {
		if (bytes_of(text) > limits.longest) code = "too_long";
		else if (Array.from(limits.characters ?? "").some((one) => text.includes(one))) code = "separator";
	}
	return code && { code, limits };
}

function make_control({ kind, values, secret, limits, size }, empty_choice) {
	if (values) {
		const words = [...(empty_choice ? [""] : []), ...Object.values(values)];
		return h(
			"select",
			words.map((word) => h("option", { value: word }, word || "not given")),
		);
	}
	const number = is_whole(kind);
	return h("input", {
		type: secret ? "password" : "text",
		inputmode: number && limits?.least >= 0 ? "numeric" : null,
		autocomplete: secret ? "new-password" : "off",
		autocapitalize: "off",
		spellcheck: "false",
		class: number ? "number" : kind === "text" && size > 60 ? "long" : null,
		dir: kind === "text" ? "auto" : null,
	});
}

export function make_field(field, { on_input, empty_choice, required }) {
	const id = new_id("field");
	const hint = h("span.hint", { id: `${id}-hint` });
	const wrong = h("span.wrong", { id: `${id}-wrong`, hidden: true });
	const control = make_control(field, empty_choice);
	Object.assign(control, { id, name: field.name });
	set(control, "aria-describedby", `${hint.id} ${wrong.id}`);
	set(control, "aria-required", required && "true");
	const mark = h("span.changed", { hidden: true }, "changed");
	const node = h(
		"div.field",
		{ "data-field": field.name },
		h("label", { for: id }, field.title, field.unit && h("span.unit", ` ${field.unit}`)),
		h("div.entry", control, mark, hint, wrong),
		field.description && h("p.about", field.description),
	);

	let base = control.value; // as read
	let problem = null;
	function note() {
		const dirty = self.dirty();
		mark.hidden = !dirty;
		const typed = field.kind === "text" && !field.secret && dirty ? `${count(bytes_of(control.value))} bytes; ` : "";
		say(hint, field.values ? "" : (field.secret ? "unchanged while empty; " : typed) + hint_of(field));
	}

	const self = {
		field,
		node,
		control,
		text: () => control.value,
		dirty: () => (field.secret ? control.value !== "" : control.value !== base),
		// The value as read; what somebody typed stays.
		base(value) {
			const dirty = self.dirty();
			base = field.secret ? "" : input_text(value);
			if (field.values && base !== "" && !Array.from(control.options).some((option) => option.value === base)) {
				control.append(h("option", { value: base }, base));
			}
			if (!dirty) control.value = base;
			note();
		},
		put(text) {
			control.value = text;
			note();
		},
		reset() {
			control.value = base;
			self.wrong(null);
			note();
		},
		wrong(found) {
			problem = found;
			wrong.hidden = !found;
			set(control, "aria-invalid", found ? "true" : null);
			say(wrong, found ? sentence(found) : "");
		},
		problem: () => problem,
	};
	control.addEventListener("input", () => {
		self.wrong(self.dirty() && quick_check(field, control.value));
		note();
		on_input();
	});
	note();
	return self;
}
