// Elements: made, changed in place, kept in step with lists. Texts only ever become
// text nodes or attributes, so that markup in a device's text stays what it is: text.

const properties = new Set(["value", "checked", "hidden", "disabled", "selected", "open", "indeterminate"]);

// An element. `on` holds listeners by event; a property or attribute that is null
// or false is left out.
export function h(tag, settings = {}, ...children) {
	const node = document.createElement(tag);
	for (const [name, value] of Object.entries(settings)) {
		if (name === "on") {
			for (const [event, listener] of Object.entries(value)) node.addEventListener(event, listener);
		} else {
			set(node, name, value);
		}
	}
	node.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== false));
	return node;
}

// Sets one property or attribute, where it is not so already.
export function set(node, name, value) {
	if (properties.has(name)) {
		if (node[name] !== value) node[name] = value;
	} else if (value === null || value === undefined || value === false) {
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
	return h("bdi", {}, text);
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

// A shape beside a word that says the same.
export function shape(state) {
	const marks = (shapes[state] ?? shapes.none).map(([tag, attributes]) => svg(tag, attributes));
	return svg(
		"svg",
		{ viewBox: "0 0 16 16", class: `shape ${state}`, "aria-hidden": "true", focusable: "false" },
		...marks,
	);
}

let said = 0;

// Tells readers of screens, once they have stopped changing, of what a click or a
// failure did; never what each refresh brings.
export function announce(text) {
	clearTimeout(said);
	said = setTimeout(() => say(document.getElementById("news"), text), 150);
}

// A file for the reader's disk.
export function download(name, type, text) {
	const address = URL.createObjectURL(new Blob([text], { type }));
	const link = h("a", { href: address, download: name });
	document.body.append(link);
	link.click();
	link.remove();
	setTimeout(() => URL.revokeObjectURL(address), 1000);
}
