// The device at a glance: is it well, what is it, which daemons answer, how are its
// ports, what was changed last. Each part is read and fails on its own.
import { h, say, set, keyed, plain, device_text } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, table_of_role, arranged, title_in, to_row } from "./model.js";
import { ms, moment, count, input_text } from "./format.js";
import { live, interval } from "./live.js";
import { card, clamped, failure_part, head_row, heading, pairs_part, scroller, state_mark } from "./parts.js";
import { front_panel } from "./panel.js";

const usual_seconds = 5;

function summary_part() {
	const state = state_mark("none", "Asking the daemons …");
	const facts = {};
	for (const name of ["daemons", "ports", "errors"]) facts[name] = { mark: state_mark("none", "") };
	for (const fact of Object.values(facts)) fact.node = h("li", { hidden: true }, fact.mark);
	return {
		node: h("div.summary", { id: "summary" }, h("p.verdict", state), h("ul.facts", Object.values(facts))),
		verdict: state.update,
		fact(name, kind, text) {
			facts[name].mark.update(kind, text);
			facts[name].node.hidden = false;
		},
	};
}

function identity_part(retry) {
	const table = table_of_role("device");
	if (!table) return null;
	const { keys, content } = arranged(table);
	const pairs = pairs_part([...keys, ...content]);
	const failure = failure_part(retry);
	return {
		node: card("Identity", { id: "identity" }, failure, pairs),
		read: (signal) => failure.around(async () => pairs.show(await gateway.row(table.table, {}, { signal }))),
	};
}

function daemons_part(summary, retry) {
	const body = h("tbody");
	const failure = failure_part(retry);

	function make() {
		const name = h("bdi");
		const state = state_mark("none", "");
		const why = failure_part(retry, { small: true });
		const taken = h("td.number");
		const row = h("tr", h("th", { scope: "row" }, name), h("td", state, " ", why), taken);
		return {
			node: row,
			update(service) {
				const up = service.state === "up";
				say(name, service.title || service.name);
				set(row, "data-service", service.name);
				state.update(up ? "good" : "bad", up ? "answers" : plain(service.state));
				// without the call's name, the NULL procedure's, and its service: the line has that
				const { code, message } = service.failure ?? {};
				why.update(up ? null : { code, message: message?.replace(/^null \(.*?\): /, "") });
				say(taken, typeof service.ms === "number" ? ms(service.ms) : "–");
			},
		};
	}

	return {
		node: card(
			"Daemons",
			{ id: "daemons" },
			failure,
			scroller("Daemons", h("table", head_row("Daemon", "State", ["Answer, ms", "number"]), body)),
		),
		async read(signal) {
			let known = false;
			await failure.around(async () => {
				const { services, well } = await gateway.health(signal);
				known = true;
				keyed(body, services, (service) => service.name, make);
				const down = services.filter((service) => service.state !== "up");
				const up = services.length - down.length;
				summary.fact(
					"daemons",
					down.length ? "bad" : "good",
					`${count(up)} of ${count(services.length)} daemons answer`,
				);
				const names = down.map((service) => plain(service.title || service.name)).join(", ");
				if (well) summary.verdict("good", "The device is well");
				else summary.verdict("bad", up ? `Not well: ${names}` : "No daemon answers");
			});
			if (!known && !signal.aborted) summary.verdict("none", "Whether the device is well is not known");
		},
	};
}

function log_part(retry) {
	const body = h("tbody");
	const none = h("p.quiet", { hidden: true });
	const failure = failure_part(retry);
	const table = scroller("Last changes", h("table", head_row("Time", "Who", "Table", "Row", "Fields", "Result"), body));
	const side = (value) => (value?.secret ? "a new secret" : input_text(value?.after));

	function make(change) {
		const known = model.tables.get(change.table);
		const list = (of, value) =>
			Object.entries(of ?? {})
				.map(([name, one]) => `${title_in(known, name)} ${value(one)}`)
				.join(", ") || "–";
		const texts = [
			list(change.key, input_text),
			list(change.fields, side),
			change.result === 0 ? "done" : change.result === null ? "–" : `${change.result}`,
		];
		return {
			node: h(
				"tr",
				h("td.time", moment(change.time)),
				h("td", device_text(change.user ?? "–")),
				h(
					"td",
					known ? h("a", { href: to_row(known, change.key ?? {}) }, known.title) : device_text(change.table ?? "–"),
				),
				texts.map((text) => h("td", clamped(device_text(text)))),
			),
		};
	}

	return {
		node: card("Last changes", { id: "changes" }, failure, none, table),
		read: (signal) =>
			failure.around(async () => {
				const { changes, kept } = await gateway.log(signal);
				say(none, kept === false ? "Changes go to the system's log." : "No change was made yet.");
				none.hidden = changes.length > 0;
				table.hidden = changes.length === 0;
				keyed(body, changes, JSON.stringify, make);
			}),
	};
}

export function show_device() {
	let poll = null;
	const retry = () => poll?.now();
	const summary = summary_part();
	const parts = [
		identity_part(retry),
		front_panel(summary, retry),
		daemons_part(summary, retry),
		log_part(retry),
	].filter(Boolean);
	const node = h("div.view.device", heading("Device"), summary, h("div.cards", parts));
	poll = live(interval(usual_seconds), (signal) => Promise.all(parts.map((part) => part.read(signal))));
	return { title: "Device", node, stop: poll.stop };
}
