import { escape } from "./format.js";
import { kinds, sources } from "./data.js";
import { mark } from "./table.js";

/// A chip per kind with its number of events, which shows or hides the kind; grouped by source, whose name
/// does the same for all of it.
export function showFilter(element, events, hidden) {
  const counts = new Map();
  for (const { kind } of events) {
    counts.set(kind, (counts.get(kind) ?? 0) + 1);
  }
  const chip = ({ name, meaning, unit }) => {
    const n = counts.get(name) ?? 0;
    return (
      `<button type="button" class="chip${n === 0 ? " none" : ""}" data-kinds="${escape(name)}"` +
      ` aria-pressed="${!hidden.has(name)}" title="${escape(meaning)}; measured: ${escape(unit)}">${mark(name)} <b>${n}</b></button>`
    );
  };
  const group = ({ name, kinds: members }) => {
    const names = escape(members.map((kind) => kind.name).join(" "));
    const shown = members.some((kind) => !hidden.has(kind.name));
    return (
      `<div class="chips"><button type="button" class="source" data-kinds="${names}" aria-pressed="${shown}"` +
      ` title="Show or hide all of ${escape(name)}">${escape(name)}</button>${members.map(chip).join("")}</div>`
    );
  };
  element.innerHTML = sources.map(group).join("");
}

/// Calls `onChange` with the new set of hidden kinds when a chip is pressed. `hidden()` is the present one.
export function watchFilter(element, hidden, onChange) {
  element.addEventListener("click", ({ target }) => {
    const button = target.closest("[data-kinds]");
    if (!button) {
      return;
    }
    const chosen = new Set(button.dataset.kinds.split(" "));
    const hide = button.getAttribute("aria-pressed") === "true";
    const after = kinds.map(({ name }) => name).filter((name) => (chosen.has(name) ? hide : hidden().has(name)));
    const position = [...element.querySelectorAll("button")].indexOf(button);
    onChange(new Set(after));
    element.querySelectorAll("button")[position].focus();
  });
}
