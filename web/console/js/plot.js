// One plot: a counter of several ports over time. The library is fetched when the
// first plot is wanted; without it the values stand in the tables all the same.
import { h } from "./dom.js";
import { short, time } from "./format.js";

const height = 190;
let library = null;

function fetch_library() {
	library ??= new Promise((resolve, reject) => {
		const failed = () => {
			library = null; // the next plot tries again
			reject(new Error("The plot library cannot be loaded."));
		};
		document.head.append(
			h("script", { src: "vendor/uPlot.iife.min.js", on: { load: () => resolve(globalThis.uPlot), error: failed } }),
		);
	});
	return library;
}

// Lines are told apart by colour and by dashes.
const colours = 6;
const dashes = [[], [7, 4], [2, 3], [10, 3, 2, 3]];
export const colour_of = (place) => place % colours;
export const dash_of = (place) => dashes[(place + Math.floor(place / colours)) % dashes.length];

// How the library is to draw the lines.
function options_of(lines, range, setCursor) {
	const styles = getComputedStyle(document.documentElement);
	const colour = (name) => styles.getPropertyValue(name).trim();
	const axis = {
		stroke: colour("--muted"),
		grid: { stroke: colour("--line"), width: 1 },
		ticks: { show: false },
		font: "12px system-ui, sans-serif",
	};
	return {
		legend: { show: false },
		cursor: { drag: { x: false, y: false }, y: false, points: { size: 7 } },
		scales: {
			x: { range },
			y: { range: (self, least, most) => (least === null ? [0, 1] : [Math.min(0, least), most > 0 ? most * 1.1 : 1]) },
		},
		axes: [
			{ ...axis, values: (self, marks) => marks.map((mark) => time(new Date(mark * 1000))), space: 90, size: 30 },
			{ ...axis, values: (self, marks) => marks.map(short), size: 64 },
		],
		series: [
			{},
			...lines.map(({ place }) => ({
				stroke: colour(`--series-${colour_of(place)}`),
				dash: dash_of(place),
				width: 2,
				points: { show: false },
			})),
		],
		hooks: { setCursor: [setCursor] },
	};
}

// A plot in `holder` of lines with a `place` each; move(index or null) is told where
// the pointer is.
export async function make_plot(holder, lines, move) {
	const Plot = await fetch_library();
	let plot = null;
	let shown = [[], ...lines.map(() => [])];
	let range = [0, 1];
	let quiet = false; // the pointer is put there by us
	const size = () => ({ width: Math.max(holder.clientWidth, 150), height });
	const moved = ({ cursor }) => quiet || move(cursor.left >= 0 ? cursor.idx : null);

	function make() {
		plot?.destroy();
		plot = new Plot({ ...size(), ...options_of(lines, () => range, moved) }, shown, holder);
	}

	const quietly = (work) => {
		quiet = true;
		work();
		quiet = false;
	};
	quietly(make);
	const sizes = new ResizeObserver(() => quietly(() => plot.setSize(size())));
	sizes.observe(holder);
	const theme = matchMedia("(prefers-color-scheme: dark)");
	const themed = () => quietly(make);
	theme.addEventListener("change", themed);
	return {
		show(data, span) {
			shown = data;
			range = span;
			quietly(() => plot.setData(data));
		},
		point: (index) =>
			quietly(() =>
				plot.setCursor(
					index === null ? { left: -10, top: -10 } : { left: plot.valToPos(shown[0][index], "x"), top: 10 },
				),
			),
		stop() {
			sizes.disconnect();
			theme.removeEventListener("change", themed);
			plot.destroy();
		},
	};
}
