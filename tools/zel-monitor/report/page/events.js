import { clock, escape, measure, percent, seconds } from "./format.js";
import { addressOf } from "./address.js";
import { isOverLimit, kindOf, kinds, limits } from "./data.js";
import { mark, Pages, table } from "./table.js";

const byId = (id) => document.getElementById(id);

/// The first frame of each event, in the order of the events; some have none.
export function framesOf(events, thumbnails) {
  const found = new Map(thumbnails.map(({ kind, start_s, image }) => [`${kind} ${start_s}`, image]));
  return events.map(({ kind, start_s }) => found.get(`${kind} ${start_s}`));
}

function lengthOf(event) {
  const length = seconds(event.duration_s);
  return isOverLimit(event) ? `<b class="over" title="not within the limit">${length}</b>` : length;
}

const endOf = ({ end_s, open_at_end }) => clock(end_s) + (open_at_end ? " (open)" : "");

/// What was measured against which limit.
export function evidenceOf({ evidence }) {
  return evidence
    ? `<br>${escape(evidence.unit)}: <b>${measure(evidence.value)}</b> (limit ${measure(evidence.limit)})`
    : "";
}

/// What is told of the events of one input: the chosen one, first frames, totals, table.
export class Events {
  constructor() {
    this.gallery = new Pages(
      byId("gallery"),
      48,
      (shown) => `<div class="frames">${shown.map((i) => this.frame(i)).join("")}</div>`,
    );
    this.rows = new Pages(byId("events"), 200, (shown) =>
      table(
        ["Kind", "Start", "End", "Length", "Measured in", "Measured", "Limit"],
        shown.map((i) => this.row(i)),
        (i) => `data-go="${escape(this.address(shown[i]))}"${shown[i] === this.chosen ? ' aria-current="true"' : ""}`,
      ),
    );
  }

  /// Shows an input anew; `shown` are the indices of the events whose kinds are not hidden.
  show({ index, input, frames, shown, hidden }) {
    Object.assign(this, { index, input, frames, shown, hidden });
    const withFrame = shown.filter((i) => frames[i]);
    const lacking = input.stream.video ? shown.length - withFrame.length : 0;
    byId("gallery-section").hidden = withFrame.length + lacking === 0;
    byId("lacking").hidden = lacking === 0;
    byId("lacking").textContent = `No frame was at hand for ${lacking} of ${shown.length} events.`;
    this.gallery.set(withFrame);
    this.showTotals();
  }

  /// Marks the event at this index as the chosen one; -1 is none.
  choose(chosen) {
    this.chosen = chosen;
    this.rows.set(this.shown, this.shown.indexOf(chosen));
    byId("event-text").innerHTML = chosen >= 0 ? this.describe(chosen) : "No event is chosen.";
    for (const id of ["previous", "next"]) {
      byId(id).disabled = this.shown.length === 0;
    }
    for (const id of ["to-start", "to-end", "copy"]) {
      byId(id).hidden = chosen < 0;
    }
    if (chosen >= 0) {
      const { start_s, end_s } = this.input.events[chosen];
      byId("to-start").setAttribute("href", this.address(chosen, [start_s]));
      byId("to-end").setAttribute("href", this.address(chosen, [end_s]));
      byId("copy").setAttribute("href", this.address(chosen));
    }
  }

  /// Of an event, or of a moment of it.
  address(event, span) {
    return addressOf({ input: this.index, hidden: this.hidden, event, span });
  }

  link(i, text, span) {
    return `<a href="${escape(this.address(i, span))}">${text}</a>`;
  }

  describe(i) {
    const event = this.input.events[i];
    const image = this.frames[i] ? `<img src="${this.frames[i]}" alt="first frame">` : "";
    const limit = isOverLimit(event) ? ` (limit ${limits[event.kind]} s)` : "";
    const end = event.open_at_end ? `${clock(event.end_s)}, open at the end` : clock(event.end_s);
    return (
      `${image}<div><b>${mark(event.kind)}</b> <span class="dim">${escape(kindOf(event.kind).meaning)}</span><br>` +
      `<time>${clock(event.start_s)}</time> to <time>${end}</time>, ${lengthOf(event)}${limit}, measured in ` +
      `${percent(event.share)} <span class="dim">(${this.shown.indexOf(i) + 1} of ${this.shown.length})</span>${evidenceOf(event)}</div>`
    );
  }

  frame(i) {
    const event = this.input.events[i];
    return (
      `<a class="frame" href="${escape(this.address(i))}"><img src="${this.frames[i]}" loading="lazy"` +
      ` alt="first frame of ${escape(event.kind)}"><span>${mark(event.kind)}<br>` +
      `<time>${clock(event.start_s)}</time>, ${seconds(event.duration_s)}</span></a>`
    );
  }

  row(i) {
    const event = this.input.events[i];
    return [
      this.link(i, mark(event.kind)),
      this.link(i, clock(event.start_s), [event.start_s]),
      this.link(i, endOf(event), [event.end_s]),
      lengthOf(event),
      percent(event.share),
      ...(event.evidence ? [measure(event.evidence.value), measure(event.evidence.limit)] : ["", ""]),
    ];
  }

  showTotals() {
    const { totals } = this.input;
    const found = kinds.filter(({ name }) => totals[name]?.events > 0);
    byId("totals").innerHTML = table(
      ["Kind", "Events", "Total", "Share of the stream", "Longest", "First at"],
      found.map(({ name }) => {
        const { events, total_s, share, longest_s, first_at_s } = totals[name];
        return [mark(name), events, seconds(total_s), percent(share), seconds(longest_s), clock(first_at_s)];
      }),
    );
  }
}
