// One row as a form: read, changed, checked as it is typed, shown before it is sent,
// told afterwards. Also a new row, and APIs that only do something.
import { h, say, set, keyed, announce, device_text, plain } from "./dom.js";
import * as gateway from "./gateway.js";
import { model, arranged, to_row, to_table, service_title } from "./model.js";
import { input_text, secret_text, value_text, with_unit } from "./format.js";
import { failure_part, heading, labelled, scroller } from "./parts.js";
import { make_field } from "./field.js";

const check_after = 200; // ms without a key pressed
const read_seconds = 2;
const drafts = new Map(); // what was typed and not sent, by address

const shown_text = (field, value) => {
  if (value && typeof value === "object" && value.secret) return "a new secret";
  return value_text(field, value) === "" ? "(empty)" : value_text(field, value);
};

// A table of fields, before and after.
function difference_table(caption, heads, lines) {
  return scroller(caption, h("table", { class: "difference" }, h("caption", { class: "unseen" }, caption),
    h("thead", {}, h("tr", {}, heads.map((head) => h("th", { scope: "col" }, head)))),
    h("tbody", {}, lines.map(({ field, cells }) => h("tr", { "data-field": field.name }, h("th", { scope: "row" }, field.title),
      cells.map((cell) => h("td", {}, h("div", { class: "clamp" }, device_text(cell)))))))));
}

// Values that nobody changes here.
function pairs_part(fields) {
  const list = h("dl", { class: "pairs" });
  return {
    node: list,
    show(row) {
      keyed(list, fields.map((field) => ({ field, text: with_unit(field, row[field.name]) })), ({ field }) => field.name, ({ field }) => {
        const value = device_text("");
        return { node: h("div", {}, h("dt", {}, field.title), h("dd", {}, value)), update: ({ text }) => say(value, text === "" ? "–" : text) };
      });
    },
  };
}

// A table whose rows cannot be walked: which row is it to be?
function ask_key(table, query) {
  const controls = table.key_names.map((name) => {
    const field = table.by_name.get(name);
    return { name, box: h("input", { type: "text", value: query.get(name) ?? "", autocomplete: "off", spellcheck: "false" }), title: field?.title ?? name };
  });
  return h("form", {
    class: "bar", on: { submit: (event) => {
      event.preventDefault();
      location.hash = to_row(table, Object.fromEntries(controls.map(({ name, box }) => [name, box.value])));
    } },
  }, controls.map(({ title, box }) => labelled(title, box)), h("button", { type: "submit" }, "Read the row"));
}

export function show_row({ rest, query }) {
  const table = model.tables.get(rest[0]);
  if (!table) return { title: "No such table", node: h("div", { class: "view" }, heading("No such table"), h("p", {}, h("a", { href: "#/tables" }, "All tables"))) };
  const adding = query.has("+new");
  const acting = !table.stored;
  const given = Object.fromEntries(table.key_names.filter((name) => query.has(name)).map((name) => [name, query.get(name)]));
  const complete = adding || acting || table.key_names.every((name) => name in given);
  const which = Object.entries(given).map(([name, value]) => `${table.by_name.get(name)?.title ?? name} ${plain(value)}`).join(", ");
  const title = adding ? `New row of ${table.title}` : which ? `${table.title}: ${which}` : table.title;
  const crumbs = h("p", { class: "crumbs" }, h("a", { href: "#/tables" }, "Tables"), " / ", service_title(table.service),
    table.walked && table.key_names.length ? [" / ", h("a", { href: to_table(table) }, table.title)] : null);
  const node = h("div", { class: "view row" }, crumbs, heading(title));
  if (table.description) node.append(h("p", {}, table.description));
  const stops = [];
  const done = { title, node, stop: () => stops.forEach((stop) => stop()) };

  if (acting ? !table.may_change : !table.readable) {
    node.append(h("p", { class: "notice" }, "You have no right to this table."));
    return done;
  }
  if (!complete) {
    node.append(h("p", {}, "The device cannot list these rows: say which one."), ask_key(table, query));
    return done;
  }
  if (acting) {
    for (const api of table.acts) node.append(make_form({ api }));
    return done;
  }
  node.append(make_form({}));
  return done;

  // The form; with `api`, of an API that has no row to read.
  function make_form({ api }) {
    const place = location.hash;
    const editable = api || adding ? true : table.changeable;
    const { keys, content, more, closing } = arranged(table);
    const taken = (field) => editable && field.argument && !["counter", "skip"].includes(field.kind) && field.name !== "res" && field.field !== "res";
    const is_key = (field) => keys.includes(field);
    const inputs = [...keys, ...content, ...more, ...closing].filter((field) => taken(field) && (api || adding || !is_key(field)))
      .map((field) => make_field(field, { on_input: typed, empty_choice: Boolean(api || adding), required: adding && is_key(field) }));
    const input_of = new Map(inputs.map((input) => [input.field.name, input]));
    const shown = pairs_part(content.filter((field) => !input_of.has(field.name)));
    const shown_more = pairs_part([...more, ...closing].filter((field) => !input_of.has(field.name)));
    let base = null; // the row as read
    let busy = null;
    let timer = 0;
    let check_run = null;

    const failure = failure_part(() => read());
    const send_failure = failure_part(null);
    const read_again = h("button", { type: "button", on: { click: () => read(true) } }, "Read again");
    const review_button = h("button", { type: "submit", class: "primary" }, "Show what will change");
    const discard = h("button", { type: "button", hidden: true, on: { click: () => { forget(); announce("The changes were dropped."); } } }, "Drop the changes");
    const note = h("p", { class: "quiet", hidden: true });
    const more_inputs = [...more, ...closing].map((field) => input_of.get(field.name)).filter(Boolean);
    const hidden_part = more.length + closing.length > 0 && h("details", { class: "more" }, h("summary", {}, "More fields"), more_inputs.map((input) => input.node), shown_more.node);
    const form = h("form", { novalidate: true, autocomplete: "off", on: { submit: (event) => { event.preventDefault(); review(); } } },
      inputs.filter((input) => !more_inputs.includes(input)).map((input) => input.node), hidden_part || null,
      editable ? h("div", { class: "bar buttons" }, review_button, discard, api || adding ? null : read_again) : h("div", { class: "bar buttons" }, read_again));
    const review_part = h("section", { class: "card review", hidden: true });
    const result_part = h("section", { class: "card result", hidden: true });
    const rights = !editable && table.operations.includes("set") && !table.may_change ? h("p", { class: "quiet" }, "You may read this table, not change it.") : null;
    const part = h("div", { class: "form" }, api ? h("h2", {}, api.name) : null, failure.node, rights, result_part, shown.node, note, form, review_part);

    const changes = () => Object.fromEntries(inputs.filter((input) => input.dirty()).map((input) => [input.field.name, input.text()]));
    const split = (all) => [Object.fromEntries(Object.entries(all).filter(([name]) => table.key_names.includes(name))),
      Object.fromEntries(Object.entries(all).filter(([name]) => !table.key_names.includes(name)))];

    function remember() {
      const kept = Object.fromEntries(inputs.filter((input) => input.dirty() && !input.field.secret).map((input) => [input.field.name, input.text()]));
      if (Object.keys(kept).length) drafts.set(place, kept);
      else drafts.delete(place);
      set(discard, "hidden", !inputs.some((input) => input.dirty()));
    }

    function forget() {
      drafts.delete(place);
      for (const input of inputs) input.reset();
      set(discard, "hidden", true);
      set(note, "hidden", true);
    }

    function typed() {
      remember();
      clearTimeout(timer);
      timer = setTimeout(check, check_after);
    }

    // Asks the gateway what is wrong; true where nothing is.
    async function check() {
      clearTimeout(timer);
      check_run?.abort();
      const own = new AbortController();
      check_run = own;
      const fields = { ...given, ...changes() };
      try {
        const found = await gateway.check(api ? { api: api.name } : { table: table.table }, fields, own.signal);
        if (check_run !== own) return false;
        for (const input of inputs) input.wrong((input.dirty() && found[input.field.name]) || null);
        return inputs.every((input) => !input.problem());
      } catch (problem) {
        if (problem.code === "stopped" || check_run !== own) return false;
        send_failure.update(problem);
        return null;
      }
    }

    async function review() {
      send_failure.update(null);
      if (!form.contains(send_failure.node)) form.append(send_failure.node);
      const missing = inputs.filter((input) => adding && table.key_names.includes(input.field.name) && input.text() === "");
      const fine = await check();
      for (const input of missing) input.wrong({ code: "no_key", message: "Expected what says which row it is." });
      const first = inputs.find((input) => input.problem());
      if (first) {
        if (more_inputs.includes(first)) hidden_part.open = true;
        first.control.focus();
        const mistakes = inputs.filter((input) => input.problem()).length;
        announce(`${mistakes} ${mistakes === 1 ? "field has" : "fields have"} a mistake.`);
        return;
      }
      if (!fine) return;
      if (!api && Object.keys(changes()).length === 0) {
        announce("Nothing was changed.");
        set(note, "hidden", false);
        say(note, "Nothing was changed yet.");
        return;
      }
      show_review();
    }

    function show_review() {
      const all = changes();
      const lines = inputs.filter((input) => input.dirty()).map(({ field, text }) => ({
        field,
        cells: [base ? (field.secret ? secret_text : shown_text(field, base[field.name])) : "–", field.secret ? "a new secret" : text() === "" ? "(empty)" : text()],
      }));
      const number = Object.keys(all).length;
      const title_node = h("h2", { tabindex: "-1" }, "What will change");
      const send = h("button", { type: "button", class: "primary", on: { click: () => transmit(send) } },
        api ? "Send" : number === 1 ? "Send this change" : `Send these ${number} changes`);
      review_part.replaceChildren(title_node,
        number ? difference_table("What will change", ["Field", "Before", "After"], lines) : h("p", {}, "The call carries no fields."),
        send_failure.node, h("div", { class: "bar buttons" }, send, h("button", { type: "button", on: { click: back } }, "Back to the form")));
      set(form, "hidden", true);
      set(result_part, "hidden", true);
      set(note, "hidden", true);
      set(review_part, "hidden", false);
      title_node.focus();
    }

    function back() {
      set(form, "hidden", false);
      set(review_part, "hidden", true);
      send_failure.update(null);
      review_button.focus();
    }

    async function transmit(button) {
      if (button.disabled) return;
      button.disabled = true;
      send_failure.update(null);
      const all = changes();
      const [new_key, others] = split(all);
      const body = api ? { api: api.name, fields: all }
        : adding ? { table: table.table, key: new_key, changes: others, add: true }
          : { table: table.table, key: given, changes: all, read: base };
      try {
        const answer = await gateway.change(body);
        drafts.delete(place);
        show_result(answer, adding ? new_key : given);
      } catch (problem) {
        button.disabled = false;
        if (problem.code === "changed_meanwhile") {
          await show_meanwhile(problem);
          return;
        }
        send_failure.update(problem);
        const input = problem.field && input_of.get(problem.field);
        if (input) input.wrong({ code: problem.code, message: problem.message });
        announce(plain(problem.message));
      }
    }

    // Somebody else changed the row between our reading and our sending.
    async function show_meanwhile(problem) {
      let row = problem.row;
      try {
        row ??= await gateway.row(table.table, given, { seconds: read_seconds });
      } catch (failed) {
        send_failure.update(failed);
        return;
      }
      const others = table.fields.filter((field) => field.kind !== "counter" && input_text(row[field.name]) !== input_text(base[field.name]));
      const title_node = h("h2", { tabindex: "-1" }, "Somebody else changed this row meanwhile");
      review_part.replaceChildren(title_node, h("p", {}, "Nothing of yours was sent."),
        difference_table("What somebody else changed", ["Field", "When you read it", "Now"],
          others.map((field) => ({ field, cells: [shown_text(field, base[field.name]), shown_text(field, row[field.name])] }))),
        h("div", { class: "bar buttons" },
          h("button", { type: "button", class: "primary", on: { click: () => { take(row); if (Object.keys(changes()).length) show_review(); else back(); } } }, "Take the row as it is now, keep my changes"),
          h("button", { type: "button", on: { click: () => { take(row); forget(); back(); } } }, "Take the row as it is now, drop my changes")));
      title_node.focus();
    }

    function show_result({ status, changed }, key) {
      const entries = Object.entries(changed ?? {}).map(([name, change]) => ({ field: table.by_name.get(name) ?? { name, title: name }, change }));
      const cell = (field, change, side) => (change?.secret ? "secret" : shown_text(field, change?.[side]));
      const title_node = h("h2", { tabindex: "-1" }, status === 0 || status === undefined ? "Changed" : `The daemon answered status ${status}`);
      result_part.replaceChildren(...[title_node,
        entries.length ? difference_table("What changed", ["Field", "Before", "After"], entries.map(({ field, change }) => ({ field, cells: [cell(field, change, "before"), cell(field, change, "after")] })))
          : h("p", {}, api ? "The daemon carried it out." : "The device holds these values."),
        adding ? h("p", {}, h("a", { href: to_row(table, key) }, "The new row")) : null].filter(Boolean));
      set(result_part, "hidden", false);
      set(review_part, "hidden", true);
      set(form, "hidden", false);
      forget();
      title_node.focus();
      if (!api && !adding) read();
    }

    function take(row) {
      base = row;
      for (const input of inputs) input.base(row[input.field.name]);
      shown.show(row);
      shown_more.show(row);
      remember();
    }

    async function read(told) {
      busy?.abort();
      const own = new AbortController();
      busy = own;
      try {
        const row = await gateway.row(table.table, given, { seconds: read_seconds, signal: own.signal });
        if (busy !== own) return;
        failure.update(null);
        const first = base === null;
        take(row);
        set(form, "hidden", !review_part.hidden);
        const draft = drafts.get(place);
        if (first && draft) {
          for (const [name, text] of Object.entries(draft)) input_of.get(name)?.put(text);
          remember();
          say(note, "What you typed before and did not send is still here.");
          set(note, "hidden", false);
          check();
        }
        if (told) announce("Read again.");
      } catch (problem) {
        if (problem.code === "stopped" || busy !== own) return;
        failure.update(problem);
        if (base === null) set(form, "hidden", true);
      }
    }

    const leaving = (event) => {
      if (inputs.some((input) => input.dirty())) event.preventDefault();
    };
    addEventListener("beforeunload", leaving);
    stops.push(() => {
      clearTimeout(timer);
      busy?.abort();
      check_run?.abort();
      removeEventListener("beforeunload", leaving);
    });

    if (api || adding) {
      for (const input of inputs) input.base(given[input.field.name] ?? "");
      if (inputs.length === 0) say(review_button, "Go on");
    } else {
      set(form, "hidden", true);
      read();
    }
    return part;
  }
}
