// What the browser keeps for the reader. Where it refuses (private windows, full or
// forbidden storage) nothing is kept and nothing breaks.

const prefix = "librpc.console.";

export function recall(name, otherwise) {
	try {
		return JSON.parse(localStorage.getItem(prefix + name)) ?? otherwise;
	} catch {
		return otherwise;
	}
}

export function keep(name, value) {
	try {
		if (value === null) localStorage.removeItem(prefix + name);
		else localStorage.setItem(prefix + name, JSON.stringify(value));
	} catch {
		// nothing is kept then
	}
}
