// What was read of ports, over time: for each port and counter its total and its
// growth a second, by position beside the times.
import { growth } from "./format.js";

const most = 3600;
const spare = 300; // dropped at once, so that arrays are not moved each second

export function make_samples() {
	const times = [];
	const lines = new Map(); // "port counter" -> { total, rate }
	const last = new Map(); // port -> { row, at }

	function line_of(port, counter) {
		const name = `${port} ${counter}`;
		if (!lines.has(name)) lines.set(name, { total: [], rate: [] });
		const line = lines.get(name);
		for (const values of [line.total, line.rate]) while (values.length < times.length) values.push(null);
		return line;
	}

	return {
		times,
		line: (port, counter, kind) => line_of(port, counter)[kind],
		// results: [{ port, row or null }]
		add(at, results, counters) {
			times.push(at);
			for (const { port, row } of results) {
				const before = last.get(port);
				for (const { name } of row ? counters : []) {
					const { total, rate } = line_of(port, name);
					const grown = before && at > before.at ? growth(row[name], before.row[name]) : null;
					total[times.length - 1] = Number(row[name]);
					rate[times.length - 1] = grown === null ? null : grown / (at - before.at);
				}
				if (row) last.set(port, { row, at });
				else last.delete(port);
			}
			if (times.length < most + spare) return;
			times.splice(0, spare);
			for (const line of lines.values()) for (const values of [line.total, line.rate]) values.splice(0, spare);
		},
	};
}
