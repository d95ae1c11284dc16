// The requests to the gateway, the only network that there is. A request that fails
// throws a Failure, with the gateway's own code and sentence where it gave them.

export class Failure extends Error {
	constructor(code, message, more = {}) {
		super(message);
		Object.assign(this, { code, ...more });
	}
}

let token = "";
let tell = null;

// Calls watcher(failure or null) whenever the gateway is lost or found again.
export function watch(watcher) {
	tell = watcher;
}

function lost(code, message) {
	const failure = new Failure(code, message);
	tell(failure);
	return failure;
}

// `seconds` is what the gateway may take; the network gets some more.
async function request(path, { body, headers = {}, seconds = 10, signal } = {}) {
	const stop = new AbortController();
	const give_up = () => stop.abort();
	const timer = setTimeout(give_up, (seconds + 5) * 1000);
	if (signal?.aborted) give_up();
	signal?.addEventListener("abort", give_up);
	try {
		let answer, text;
		try {
			answer = await fetch(path, {
				method: body ? "POST" : "GET",
				headers: body ? { "Content-Type": "application/json", ...headers } : headers,
				body: body ? JSON.stringify(body) : undefined,
				signal: stop.signal,
				credentials: "same-origin",
			});
			text = await answer.text();
		} catch (problem) {
			if (signal?.aborted) throw new Failure("stopped", "The request was given up.", { cause: problem });
			throw lost("unreachable", "The device's web server does not answer.");
		}
		let told;
		try {
			told = JSON.parse(text);
		} catch {
			if (answer.status === 401) throw lost("not_signed_in", "You are not signed in any more: reload the page.");
			throw lost("bad_answer", `The gateway's answer (status ${answer.status}) is not JSON.`);
		}
		tell(null);
		if (!answer.ok) {
			const { code, message, ...more } = told.error ?? {};
			throw new Failure(code ?? "failed", message ?? `The gateway answered status ${answer.status}.`, more);
		}
		return told;
	} finally {
		clearTimeout(timer);
		signal?.removeEventListener("abort", give_up);
	}
}

export async function session() {
	const found = await request("api/session");
	token = found.token;
	return found;
}

export const schema = () => request("api/schema");
export const health = (signal) => request("api/health", { signal });
export const log = (signal, limit = 10) => request(`api/log?limit=${limit}`, { signal });

const several =
	(path, name) =>
	async (items, { seconds = 1, signal } = {}) =>
		items.length ? (await request(path, { body: { [name]: items, seconds }, seconds, signal })).results : [];

// The results of several reads, by position: each { row } or { failure }.
export const all = several("api/all", "calls");

// The results of several walks: each { rows, ended } or { rows, failure }.
export const rows = several("api/rows", "walks");

// Whole tables, where each stands once.
export const rows_of = (tables, options) =>
	rows(
		[...new Set(tables)].filter(Boolean).map(({ table }) => ({ table })),
		options,
	);

export async function row(table, key, options) {
	const [result] = await all([{ table, key }], options);
	if (result.failure) throw new Failure(result.failure.code, result.failure.message);
	return result.row;
}

export async function check(what, fields, signal) {
	return (await request("api/check", { body: { ...what, fields }, signal })).wrong;
}

// A change. The token is bound to the user and may have run out: it is asked for
// anew, once.
export async function change(body) {
	const send = () => request("api/change", { body, headers: { "X-Librpc-Token": token }, seconds: 30 });
	try {
		return await send();
	} catch (failure) {
		if (failure.code !== "bad_token") throw failure;
		await session();
		return send();
	}
}
