// Pieces that several views are made of.
import { h, say, shape, set, plain } from "./dom.js";
import { model } from "./model.js";

// A shape and a word, which may change: state.update("good", "up").
export function state_mark(state, word) {
  const text = h("span", { class: "word" });
  const node = h("span", { class: "state" }, shape(state), text);
  let shown = state;
  const update = (next, next_word) => {
    if (next !== shown) {
      node.firstChild.replaceWith(shape(next));
      shown = next;
    }
    set(node, "data-state", next);
    say(text, next_word);
  };
  update(state, word);
  return { node, update };
}

// Why something failed, and a way to try again. update(null) hides it.
export function failure_part(retry, { small = false, label = "Try again" } = {}) {
  const sentence = h("span", { class: "sentence" });
  const button = retry && h("button", { type: "button", class: "small", on: { click: retry } }, label);
  const node = h(small ? "span" : "div", { class: small ? "failure small" : "failure notice bad", hidden: true },
    shape("bad"), " ", sentence, " ", button);
  return {
    node,
    update(failure) {
      set(node, "hidden", !failure);
      if (!failure) return;
      set(node, "title", model.codes[failure.code] ?? null);
      set(node, "data-code", failure.code ?? "failed");
      say(sentence, plain(failure.message ?? failure.code ?? "It failed."));
    },
  };
}

let numbers = 0;
export const new_id = (name) => `${name}-${(numbers += 1)}`;

// A heading that takes the focus when its view is opened.
export const heading = (text) => h("h1", { tabindex: "-1" }, text);

export function labelled(text, control, settings = {}) {
  const id = control.id || new_id("control");
  control.id = id;
  return h("span", { class: "labelled", ...settings }, h("label", { for: id }, text), control);
}

export function choice(options, chosen, on_change) {
  return h("select", { on: { change: (event) => on_change(event.target.value) } },
    options.map(([value, text]) => h("option", { value, selected: String(value) === String(chosen) }, text)));
}

// Boxes to tick, as many as wanted.
export function ticks(legend, options, chosen, on_change) {
  return h("fieldset", { class: "ticks" }, h("legend", {}, legend),
    options.map(([value, text]) => h("label", { class: "tick" },
      h("input", {
        type: "checkbox", value, checked: chosen.has(String(value)),
        on: { change: (event) => on_change(String(value), event.target.checked, event.target) },
      }), h("bdi", {}, text))));
}

// A place for a wide table that scrolls by keyboard, too.
export const scroller = (label, ...children) => h("div", { class: "scroller", tabindex: "0", role: "region", "aria-label": label }, children);
