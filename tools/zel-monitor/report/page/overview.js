import { clock, count, escape } from "./format.js";
import { addressOf } from "./address.js";
import { eventOfViolation, kinds, kindOf, limits, report, resultOf, sources, timesOf } from "./data.js";
import { mark, Pages, table } from "./table.js";

const byId = (id) => document.getElementById(id);
const marks = { pass: "\u2713", fail: "\u2717", incomplete: "!", analysed: "" };
const worstFirst = ["incomplete", "fail", "pass", "analysed"];

export const badge = (result) =>
  `<span class="badge" data-result="${result}">${`${marks[result]} ${result.toUpperCase()}`.trim()}</span>`;

/// Why an input has the result it has; a violation leads to its event.
export function reasons(index, hidden) {
  const { problem, violations, events } = report.inputs[index];
  const lines = problem ? [`Not analysed to its end: ${escape(problem)}`] : [];
  for (const line of violations) {
    const event = eventOfViolation(line, events);
    const text = escape(line);
    lines.push(event >= 0 ? `<a href="${escape(addressOf({ input: index, event, hidden }))}">${text}</a>` : text);
  }
  return lines.length > 0 ? `<ul class="reasons">${lines.map((line) => `<li>${line}</li>`).join("")}</ul>` : "";
}

/// All events of an input on one narrow strip, a row per source.
function strip(input) {
  const fine = 500; // widths are rounded up to that many parts, so that a short event is seen
  const [first, last] = timesOf(input);
  const x = (time) => ((time - first) / (last - first)) * fine;
  const rows = new Map(sources.flatMap((source, row) => source.kinds.map(({ name }) => [name, row])));
  const paths = new Map(kinds.map(({ name }) => [name, { d: "", to: -1 }]));
  for (const { kind, start_s, end_s } of input.events) {
    const path = paths.get(kind);
    const from = Math.max(Math.floor(x(start_s)), path.to);
    const to = Math.ceil(x(end_s));
    if (to > from) {
      path.d += `M${from} ${rows.get(kind) * 5}h${to - from}v4h${from - to}z`;
      path.to = to;
    }
  }
  const drawn = [...paths].filter(([, { d }]) => d !== "");
  const height = sources.length * 5 - 1;
  return (
    `<svg class="strip" viewBox="0 0 ${fine} ${height}" preserveAspectRatio="none" aria-hidden="true">` +
    `${drawn.map(([kind, { d }]) => `<path fill="${kindOf(kind).colour}" d="${d}"/>`).join("")}</svg>`
  );
}

function showVerdict() {
  const { inputs, exit_status: status } = report;
  const results = inputs.map(resultOf);
  const howMany = (result) => results.filter((other) => other === result).length;
  const words = { incomplete: "not analysed to the end", fail: "failed", pass: "passed", analysed: "analysed" };
  const found = worstFirst.filter((result) => howMany(result) > 0);
  const length = inputs.reduce((sum, { stream }) => sum + (stream.analysed_duration_s ?? 0), 0);
  const events = inputs.reduce((sum, input) => sum + input.events.length, 0);
  const parts = [
    inputs.length > 1 ? found.map((result) => `${howMany(result)} ${words[result]}`).join(", ") : "",
    `${count(events, "event")} in ${clock(length)}`,
    `exit status ${status}`,
  ];
  byId("verdict").dataset.result = found[0];
  byId("verdict").innerHTML =
    `${badge(found[0])} <span>${inputs.length > 1 ? `${inputs.length} inputs: ` : ""}` +
    `${parts.filter(Boolean).join(" \u00b7 ")}</span>`;
  const judged = Object.entries(limits);
  byId("limits").innerHTML =
    judged.length > 0
      ? "Limits: " +
        judged.map(([kind, limit]) => `<span>${mark(kind)} ${limit > 0 ? `from ${limit} s` : "any"}</span>`).join(" ")
      : "No limits were set with --fail-on, so nothing is judged.";
}

/// The verdict on all, and a table of several inputs, the worst first.
export class Overview {
  constructor() {
    showVerdict();
    this.order = report.inputs
      .map((input, index) => ({ index, rank: worstFirst.indexOf(resultOf(input)) }))
      .sort((a, b) => a.rank - b.rank || a.index - b.index)
      .map(({ index }) => index);
    byId("inputs").hidden = byId("choice").hidden = report.inputs.length < 2;
    byId("choice").innerHTML = report.inputs
      .map(({ input }, i) => `<option value="${i}">${escape(input)}</option>`)
      .join("");
    this.strips = new Map(); // by index; drawn when they are first seen
    this.pages = new Pages(byId("inputs"), 100, (indices) =>
      table(
        ["Result", "Input", "Events over time", "Length", "Events"],
        indices.map((index) => this.row(index)),
        (i) =>
          `data-go="${escape(addressOf({ input: indices[i], hidden: this.hidden }))}"` +
          (indices[i] === this.current ? ' aria-current="true"' : ""),
      ),
    );
  }

  show({ input, hidden }) {
    this.current = input;
    this.hidden = hidden;
    byId("choice").value = String(input);
    if (report.inputs.length > 1) {
      this.pages.set(this.order, this.order.indexOf(input));
    }
  }

  row(index) {
    const input = report.inputs[index];
    if (!this.strips.has(index)) {
      this.strips.set(index, strip(input));
    }
    return [
      badge(resultOf(input)),
      `<a href="${escape(addressOf({ input: index, hidden: this.hidden }))}">${escape(input.input)}</a>` +
        reasons(index, this.hidden),
      this.strips.get(index),
      clock(input.stream.analysed_duration_s ?? 0),
      input.events.length,
    ];
  }
}
