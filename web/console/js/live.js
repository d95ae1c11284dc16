// Work that is done again and again while its view is shown and the page is seen.

// Seconds between two refreshes: ?every=SECONDS in the page's address overrules.
export function interval(usual) {
	const asked = Number(new URLSearchParams(location.search).get("every"));
	return asked > 0 ? Math.min(Math.max(asked, 0.02), 3600) : usual;
}

// Runs work(signal) at once and then every `seconds`, never twice at a time.
export function live(seconds, work) {
	let timer = 0;
	let running = null;
	let over = false;
	let paused = false;
	let again = false;

	async function turn() {
		clearTimeout(timer);
		if (over) return;
		if (running) {
			again = true;
			return;
		}
		const began = performance.now();
		running = new AbortController();
		try {
			await work(running.signal);
		} catch (failure) {
			if (failure.code === undefined) console.error(failure);
		}
		running = null;
		if (over) return;
		if (again) {
			again = false;
			turn();
		} else if (!paused && !document.hidden) {
			timer = setTimeout(turn, Math.max(seconds * 1000 - (performance.now() - began), 0));
		}
	}
	const seen = () => {
		if (!document.hidden && !paused) turn();
	};
	document.addEventListener("visibilitychange", seen);
	turn();
	return {
		now: turn,
		pause(yes) {
			paused = yes;
			if (paused) clearTimeout(timer);
			else turn();
		},
		stop() {
			over = true;
			clearTimeout(timer);
			running?.abort();
			document.removeEventListener("visibilitychange", seen);
		},
	};
}

// Runs work(signal, ...) and gives up the run before.
export function latest(work) {
	let running = null;
	const run = (...given) => {
		run.stop();
		running = new AbortController();
		return work(running.signal, ...given);
	};
	run.stop = () => running?.abort();
	return run;
}
