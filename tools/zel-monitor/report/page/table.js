import { escape } from "./format.js";
import { kindOf } from "./data.js";

export const mark = (kind) =>
  `<span class="mark" style="background:${kindOf(kind).colour}"></span>${escape(kind)}`;

/// A table's rows; on a narrow screen each cell stands under the next, with its column's name before it.
export function table(head, rows, attributes = () => "") {
  if (rows.length === 0) {
    return "<p>None.</p>";
  }
  const titles = head.map((title) => `<th>${title}</th>`).join("");
  const cells = (row) => row.map((cell, i) => `<td data-title="${head[i]}">${cell}</td>`).join("");
  const body = rows.map((row, i) => `<tr ${attributes(i)}>${cells(row)}</tr>`).join("");
  return `<table><thead><tr>${titles}</tr></thead><tbody>${body}</tbody></table>`;
}

/// Shows many `items` in `element`, `size` at a time: `draw(some)` makes the HTML of those that are seen.
export class Pages {
  constructor(element, size, draw) {
    Object.assign(this, { element, size, draw, items: [], page: 0 });
    element.addEventListener("click", ({ target }) => {
      const step = Number(target.closest("[data-page]")?.dataset.page ?? 0);
      if (step !== 0) {
        this.page += step;
        this.show();
        element.querySelector(`[data-page="${step}"]:enabled, [data-page]:enabled`).focus();
      }
    });
  }

  /// Shows these items from the first one, or where the item at `index` is among them.
  set(items, index = 0) {
    this.items = items;
    this.page = Math.floor(Math.max(index, 0) / this.size);
    this.show();
  }

  show() {
    const { items, size, page } = this;
    const first = page * size;
    const past = Math.min(first + size, items.length);
    const button = (step, text, enabled) =>
      `<button type="button" data-page="${step}" ${enabled ? "" : "disabled"}>${text}</button>`;
    const pager =
      items.length > size
        ? `<p class="pager">${button(-1, "Previous", first > 0)}` +
          `<span>${first + 1} to ${past} of ${items.length}</span>${button(1, "Next", past < items.length)}</p>`
        : "";
    this.element.innerHTML = this.draw(items.slice(first, past)) + pager;
  }
}
