// What the schema and the session say, put so that the views can ask for it. All that
// the console knows of tables comes from here: by kind, by role, by name.
import { schema, session } from "./gateway.js";

export const model = { user: "", limits: {}, services: [], tables: new Map(), codes: {} };

// The daemon's result and the operation close every record: no content of a row.
const closing = new Set(["res", "oper"]);
const is_closing = (field) => closing.has(field.name) || closing.has(field.field);

// Somebody has said what the field is.
const is_named = (field) => field.name !== field.field || field.title !== field.field;

function enrich(table, rights, apis) {
	const fields = new Map(table.fields.map((field) => [field.name, field]));
	const can = (operation) => table.operations.includes(operation);
	const walked = can("getn");
	const stored = walked || can("get");
	return {
		...table,
		by_name: fields,
		key_names: table.key ?? table.fields.filter((field) => field.key).map((field) => field.name),
		walked,
		readable: rights.read === true && stored,
		stored,
		changeable: rights.change === true && can("set"),
		acts: apis.filter((api) => api.operation === "set" || api.operation === "other"),
		may_change: rights.change === true,
		haystack: [table.table, table.title, table.description, ...named(table.fields).flat()]
			.filter(Boolean)
			.join("\n")
			.toLowerCase(),
	};
}

export async function load() {
	const [who, what] = await Promise.all([session(), schema()]);
	const apis = new Map();
	for (const api of what.apis) apis.set(api.table, [...(apis.get(api.table) ?? []), api]);
	model.user = who.user;
	model.limits = who.limits ?? {};
	model.services = what.services;
	model.codes = what.codes ?? {};
	model.tables = new Map(
		what.tables.map((table) => [
			table.table,
			enrich(table, who.tables[table.table] ?? {}, apis.get(table.table) ?? []),
		]),
	);
}

export const all_tables = () => [...model.tables.values()];

export const service_title = (name) => model.services.find((service) => service.name === name)?.title ?? name;

export const named = (fields) => fields.map((field) => [field.name, field.title]);

export const title_in = (table, name) => table?.by_name.get(name)?.title ?? name;

export const field_with = (table, role) => table.fields.find((field) => field.role === role);

export const value_in = (table, role, row) => row[field_with(table, role)?.name];

// The first table that may be read and whose fields have all these roles.
export function table_with(...roles) {
	return all_tables().find((table) => table.readable && roles.every((role) => field_with(table, role)));
}

export const table_of_role = (role) => all_tables().find((table) => table.readable && table.role === role);

// Tables that are told apart by the port alone and hold counters.
export function counted_tables() {
	return all_tables().filter((table) => {
		const { readable, walked, key_names, fields } = table;
		const is_told = key_names.length === 1 && key_names[0] === field_with(table, "port")?.name;
		return readable && walked && is_told && fields.some((field) => field.kind === "counter");
	});
}

// The fields of a row that are content: keys first; `more` are those of which
// nobody has said what they are, `closing` what ends each record.
export function arranged(table) {
	const keys = table.key_names.map((name) => table.by_name.get(name)).filter(Boolean);
	const others = table.fields.filter((field) => !keys.includes(field) && !is_closing(field) && field.kind !== "skip");
	const known = others.filter(is_named);
	const some = known.length > 0;
	return {
		keys,
		content: some ? known : others,
		more: some ? others.filter((field) => !is_named(field)) : [],
		closing: table.fields.filter(is_closing),
	};
}

// The key of a row, by the key fields' names.
export function key_of(table, row) {
	return Object.fromEntries(table.key_names.map((name) => [name, row[name]]));
}

// Addresses of views.
export const to_table = (table) => `#/tables/${encodeURIComponent(table.table)}`;
export function to_row(table, key) {
	const query = String(new URLSearchParams(key));
	return `#/row/${encodeURIComponent(table.table)}${query ? `?${query}` : ""}`;
}
