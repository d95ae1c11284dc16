// A board for each counter that is plotted: the plot, and a table of its values at one
// moment, which the pointer chooses, or a slider.
import { h, say, set, keyed, svg, drawing } from "./dom.js";
import { rate, time } from "./format.js";
import { card, failure_part, head_row, labelled, scroller } from "./parts.js";
import { make_plot, colour_of, dash_of } from "./plot.js";

function swatch(place) {
	const line = svg("line", { x1: 0, y1: 4, x2: 28, y2: 4, "stroke-dasharray": dash_of(place).join(" ") || "none" });
	const mark = drawing("28 8", "swatch", line);
	mark.style.color = `var(--series-${colour_of(place)})`;
	return mark;
}

const least_and_most = (values) => {
	const known = values.filter((value) => value !== null);
	return [Math.min, Math.max].map((better) => known.reduce((a, b) => better(a, b), known[0]));
};
const shown_number = (value) => (Number.isFinite(value) ? rate(value) : "–");

function make_value({ place, label }, retry) {
	const cells = [0, 1, 2].map(() => h("td.number"));
	const why = failure_part(retry, { small: true });
	return {
		node: h("tr", h("th", { scope: "row" }, swatch(place), " ", h("bdi", label), " ", why), cells),
		update({ values, index, problem }) {
			why.update(problem);
			[values[index], ...least_and_most(values)].forEach((value, i) => say(cells[i], shown_number(value)));
		},
	};
}

function write(body, plotted, values, index, retry) {
	const items = plotted
		.ports()
		.map((port, i) => ({ ...port, problem: plotted.problems.get(port.port), values: values[i], index }));
	const make = (item) => make_value(item, retry);
	keyed(body, items, ({ port }) => port, make);
}

function make_board(field, title) {
	const body = h("tbody");
	const area = h("div.plot", { "aria-hidden": "true" });
	const heads = head_row("Port", ["Value", "number"], ["Least", "number"], ["Most", "number"]);
	const node = card(title, { "data-field": field.name }, area, scroller(`${title}: values`, h("table", heads, body)));
	return { field, body, area, node, plot: null };
}

// The slider, and the time that it stands at.
function make_moment(move) {
	const at = h("span.at");
	const slider = h("input.slider", {
		type: "range",
		min: 0,
		max: 0,
		step: 1,
		on: { input: () => move(slider.value === slider.max ? null : slider.valueAsNumber) },
	});
	return {
		node: h("div.bar", labelled("Values at", slider), at),
		show(times, index) {
			const last = times.length - 1;
			const text =
				last < 0 ? "–" : time(new Date(times[index ?? last] * 1000)) + (index === null ? ", the latest" : "");
			set(slider, "max", Math.max(last, 0));
			slider.value = Math.max(index ?? last, 0);
			set(slider, "aria-valuetext", text);
			say(at, text);
		},
	};
}

export function make_boards(plotted, retry) {
	const failure = failure_part(build);
	const moment = make_moment(move);
	const holder = h("div.boards");
	let boards = [];

	async function build() {
		stop();
		const ports = plotted.ports();
		const built = plotted.fields().map((field) => make_board(field, plotted.title_of(field)));
		const none = built.length === 0 || ports.length === 0;
		boards = built;
		holder.replaceChildren(
			...(none ? [h("p.quiet", "Choose a port and a counter.")] : built.map((board) => board.node)),
		);
		draw();
		try {
			for (const board of built) {
				const plot = await make_plot(board.area, ports, move);
				if (boards === built) board.plot = plot;
				else plot.stop();
			}
			failure.update(null);
		} catch (problem) {
			for (const { area } of built) area.hidden = true;
			failure.update({ code: "no_plots", message: `${problem.message} The tables have the values.` });
		}
		draw();
	}

	function stop() {
		for (const { plot } of boards) plot?.stop();
		boards = [];
	}

	function draw() {
		const { times, lines } = plotted.in_range();
		const end = times.at(-1) ?? Date.now() / 1000;
		for (const { field, plot } of boards) plot?.show([times, ...lines(field)], [end - plotted.span, end]);
		write_values();
	}

	function move(index) {
		plotted.point = index;
		write_values();
		for (const { plot } of boards) plot?.point(index);
	}

	function write_values() {
		const { times, lines } = plotted.in_range();
		if (plotted.point >= times.length) plotted.point = null;
		const index = plotted.point ?? times.length - 1;
		for (const { field, body } of boards) write(body, plotted, lines(field), index, retry);
		moment.show(times, plotted.point);
	}

	return { failure, parts: [moment, holder], build, draw, stop };
}
