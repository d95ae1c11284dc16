// Elements: made, changed in place, kept in step with lists. Texts only ever become
// text nodes or attributes, so that markup in a device's text stays what it is: text.

const properties = new Set(["value", "checked", "hidden", "disabled", "selected", "open", "indeterminate"]);

// An element: h("p.quiet", { hidden: true, on: { click } }, child ...). Settings may be left
// out, what is null or false is; a part stands for its node.
export function h(what, ...children) {
	const [tag, ...classes] = what.split(".");
	const node = document.createElement(tag);
	if (classes.length) node.className = classes.join(" ");
	const settings = children[0]?.constructor === Object && !children[0].node ? children.shift() : {};
	for (const [name, value] of Object.entries(settings)) {
		if (name === "on") {
			for (const [event, listener] of Object.entries(value)) node.addEventListener(event, listener);
		} else {
			set(node, name, value);
		}
	}
	const shown = children.flat().filter((child) => (child ?? false) !== false);
	node.append(...shown.map((child) => child.node ?? child));
	return node;
}

// Sets one property or attribute, where it is not so already.
export function set(node, name, value) {
	if (properties.has(name)) {
		if (node[name] !== value) node[name] = value;
	} else if ((value ?? false) === false) {
		node.removeAttribute(name);
	} else {
		const text = value === true ? "" : String(value);
		if (node.getAttribute(name) !== text) node.setAttribute(name, text);
	}
}

// Writes a text where it is another: what is selected or read out stays so.
export function say(node, text) {
	if (node.textContent !== text) node.textContent = text;
}

// A device's text beside others: what it holds cannot turn their direction.
export function device_text(text) {
	return h("bdi", text);
}

// The same for attributes and sentences, where no element can stand: without the
// characters that turn directions or break lines.
export function plain(text) {
	// eslint-disable-next-line no-control-regex
	return String(text).replace(/[\u0000-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g, " ");
}

const lists = new WeakMap();

// Keeps the children of `parent` in step with `items`: one of the same key is kept
// where it stands and told of its item. make(item) gives { node, update(item) }.
export function keyed(parent, items, key_of, make) {
	const before = lists.get(parent) ?? new Map();
	const now = new Map();
	let place = parent.firstChild;
	for (const item of items) {
		let key = String(key_of(item));
		while (now.has(key)) key += " again";
		const part = before.get(key) ?? make(item);
		part.update?.(item);
		now.set(key, part);
		if (part.node === place) {
			place = place.nextSibling;
		} else {
			parent.insertBefore(part.node, place);
		}
	}
	for (const [key, part] of before) if (!now.has(key)) part.node.remove();
	lists.set(parent, now);
}

const svg_name = "http://www.w3.org/2000/svg";

export function svg(tag, attributes = {}, ...children) {
	const node = document.createElementNS(svg_name, tag);
	for (const [name, value] of Object.entries(attributes)) node.setAttribute(name, value);
	node.append(...children);
	return node;
}

// Beside a word that says the same.
export const drawing = (size, kind, ...marks) =>
	svg("svg", { viewBox: `0 0 ${size}`, class: kind, "aria-hidden": "true" }, ...marks);

// The shapes of states, told apart without colour: a disc, a triangle, a cross, a ring.
const shapes = {
	good: [["circle", { cx: 8, cy: 8, r: 6 }]],
	warn: [
		["path", { d: "M8 1 15.5 14.5H.5z" }],
		["path", { d: "M7.2 6h1.6v4H7.2zM7.2 11.2h1.6v1.6H7.2z", class: "hole" }],
	],
	bad: [["path", { d: "M3.5 1 8 5.5 12.5 1 15 3.5 10.5 8l4.5 4.5-2.5 2.5L8 10.5 3.5 15 1 12.5 5.5 8 1 3.5z" }]],
	none: [["circle", { cx: 8, cy: 8, r: 5, class: "ring" }]],
};

export function shape(state) {
	const node = drawing("16 16", `shape ${state}`, ...(shapes[state] ?? shapes.none).map((mark) => svg(...mark)));
	set(node, "focusable", "false");
	return node;
}

let said = 0;

// Tells readers of screens, once they have stopped changing, of what a click or a
// failure did; never what each refresh brings.
export function announce(text) {
	clearTimeout(said);
	said = setTimeout(() => say(document.getElementById("news"), text), 150);
}

const types = { csv: "text/csv;charset=utf-8", json: "application/json" };

// A file for the reader's disk.
export function save({ table }, ending, text, what) {
	const name = `${table}-${new Date().toISOString().replace(/[:.]/g, "-")}.${ending}`;
	const address = URL.createObjectURL(new Blob([text], { type: types[ending] }));
	const link = h("a", { href: address, download: name });
	document.body.append(link);
	link.click();
	link.remove();
	setTimeout(() => URL.revokeObjectURL(address), 1000);
	announce(`The ${what} shown were saved.`);
}
