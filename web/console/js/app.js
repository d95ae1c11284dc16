// The console: signs in, reads what there is, and shows the view that the address
// names. A view is a function of the address's parts that gives { title, node, stop }:
// a new one is a row of `views`, a link in index.html and a module beside this one.
import { h, set, announce, plain, shape } from "./dom.js";
import { watch } from "./gateway.js";
import { load, model } from "./model.js";
import { failure_part, sentence_page } from "./parts.js";
import { show_device } from "./device.js";
import { show_ports } from "./ports.js";
import { show_tables } from "./tables.js";
import { show_row } from "./row.js";
import { time } from "./format.js";

const views = { device: show_device, ports: show_ports, tables: show_tables, row: show_row, add: show_row };

const main = document.getElementById("main");
let shown = null;
let first = true;

// "#/row/portinfo?port=3" as its parts.
function where() {
	const [path, query = ""] = location.hash.replace(/^#\/?/, "").split(/\?(.*)/s);
	const [view, ...rest] = path.split("/").map((part) => {
		try {
			return decodeURIComponent(part);
		} catch {
			return part;
		}
	});
	return { view: view || "device", rest, query: new URLSearchParams(query) };
}

function show() {
	const at = where();
	shown?.stop?.();
	shown = views[at.view]?.(at) ?? sentence_page("No such page", "Choose a view above.");
	main.replaceChildren(shown.node);
	document.title = `${plain(shown.title)} – Console`;
	for (const link of document.querySelectorAll("nav a")) {
		const name = link.getAttribute("href").slice(2);
		const current = name === at.view || (name === "tables" && ["row", "add"].includes(at.view));
		set(link, "aria-current", current ? (name === at.view && at.rest.length === 0 ? "page" : "true") : null);
	}
	if (!first) {
		scrollTo(0, 0);
		main.querySelector("h1")?.focus({ preventScroll: true });
	}
	first = false;
}

// Whether the gateway answers at all: one line for all that hangs on it.
const link = document.getElementById("link");
let lost_at = null;
watch((failure) => {
	if (failure) {
		lost_at ??= new Date();
		link.replaceChildren(shape("bad"), ` ${failure.message} What is shown is of ${time(lost_at)} or before.`);
		if (link.hidden) announce(failure.message);
		link.hidden = false;
	} else if (lost_at) {
		lost_at = null;
		link.hidden = true;
		announce("The device's web server answers again.");
	}
});

async function start() {
	try {
		await load();
	} catch (failure) {
		const part = failure_part(start);
		part.update(failure);
		main.replaceChildren(h("h1", "The console cannot start"), part.node);
		return;
	}
	if (model.user) document.getElementById("who").replaceChildren("Signed in as ", h("bdi", model.user));
	addEventListener("hashchange", show);
	show();
}

document.getElementById("skip").addEventListener("click", (event) => {
	event.preventDefault(); // the address is the view's
	main.focus();
});
start();
