// Values as people read them, in the browser's locale; and as programs do.

const numbers = (options) => new Intl.NumberFormat(undefined, options);
const grouped = numbers();
const exact = numbers({ useGrouping: false, maximumFractionDigits: 20 });
const compact = numbers({ notation: "compact", maximumFractionDigits: 2 });
const rounded = numbers({ maximumFractionDigits: 1 });
const milliseconds = numbers({ maximumFractionDigits: 1, minimumFractionDigits: 1 });
const clock = new Intl.DateTimeFormat(undefined, { timeStyle: "medium" });
const stamp = new Intl.DateTimeFormat(undefined, { dateStyle: "short", timeStyle: "medium" });

export const count = (number) => grouped.format(number);
export const short = (number) => compact.format(number);
export const rate = (number) => rounded.format(Math.abs(number) < 1000 ? number : Math.round(number));
export const ms = (number) => milliseconds.format(number);
export const time = (date) => clock.format(date);

export function moment(text) {
	const date = new Date(text);
	return Number.isNaN(date.getTime()) ? String(text) : stamp.format(date);
}

const whole = /^-?\d+$/;
const secret_text = "secret";

// A value's text. Numbers that measure something are grouped; those that name
// something (a port, a VLAN) are not.
export function value_text(field, value) {
	if (value === null && field.secret) return secret_text;
	if (value === null || value === undefined) return "";
	if (Array.isArray(value)) return value.join(", ");
	if (field.kind === "counter" && whole.test(value)) return grouped.format(BigInt(value));
	if (typeof value === "number") return (field.unit || field.kind === "real" ? grouped : exact).format(value);
	return String(value);
}

// The same with its unit; seconds that fill hours are told as such, too.
export function with_unit(field, value) {
	const text = value_text(field, value);
	if (!field.unit || text === "" || field.secret) return text;
	if (field.unit === "s" && typeof value === "number" && value >= 3600) return `${long_time(value)} (${text} s)`;
	return `${text} ${field.unit}`;
}

function long_time(seconds) {
	const parts = [
		[Math.floor(seconds / 86400), "day"],
		[Math.floor(seconds / 3600) % 24, "hour"],
		[Math.floor(seconds / 60) % 60, "minute"],
	];
	return parts
		.filter(([number]) => number > 0)
		.map(([number, unit]) => numbers({ style: "unit", unit, unitDisplay: "short" }).format(number))
		.join(" ");
}

// A speed as short as a drawing wants it: thousands of a unit have a unit of their own.
export function speed(field, value) {
	if (typeof value !== "number") return value_text(field, value);
	const larger = { "kbit/s": "Mbit/s", "Mbit/s": "Gbit/s" }[field.unit];
	if (larger && value >= 1000) return `${rounded.format(value / 1000)} ${larger}`;
	return with_unit(field, value);
}

// A value as a form holds it.
export function input_text(value) {
	if (value === null || value === undefined) return "";
	return Array.isArray(value) ? value.join(",") : String(value);
}

export const words_of = (text) => text.toLowerCase().split(/\s+/).filter(Boolean);

// Sorts what is shown in a column: numbers by size, counters too, texts as people do.
const collator = new Intl.Collator(undefined, { numeric: true });
export function compare(field, a, b) {
	if (typeof a === "number" && typeof b === "number") return a - b;
	if (field.kind === "counter" && whole.test(a) && whole.test(b)) {
		const difference = BigInt(a) - BigInt(b);
		return difference < 0n ? -1 : Number(difference > 0n);
	}
	return collator.compare(input_text(a), input_text(b));
}

// How much a counter grew, over the end of its 64 bits too; null where it went back,
// as the device has counted anew.
export function growth(now, before) {
	if (!/^\d+$/.test(now) || !/^\d+$/.test(before)) return null;
	const difference = BigInt.asUintN(64, BigInt(now) - BigInt(before));
	return difference < 1n << 63n ? Number(difference) : null;
}

// One cell of a CSV file. A text that a spreadsheet would run as a formula gets an
// apostrophe before it; numbers stay numbers.
function cell(value) {
	if (value === null || value === undefined) return "";
	let text = input_text(value);
	if (typeof value !== "number" && /^[=+\-@\t\r]/.test(text) && !/^-?\d+(\.\d+)?$/.test(text)) text = `'${text}`;
	return /[",\r\n;\t]/.test(text) || text !== text.trim() ? `"${text.replaceAll('"', '""')}"` : text;
}

export const csv = (lines) => lines.map((line) => `${line.map(cell).join(",")}\r\n`).join("");
