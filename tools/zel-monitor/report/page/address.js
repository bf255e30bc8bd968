// What the page shows is told by the fragment of its address, for links to an input, an event, a time:
//   #input=2&event=black@12&t=12,19&hide=freeze,mute
// The input counts from 1. An event is told by its kind and a time within it. What is seen is a span of time
// or the surroundings of one moment, in seconds or as h:mm:ss; by default the event, or else the whole stream.
import { kindOf, report } from "./data.js";

function timeOf(text) {
  const [, sign, digits] = /^(-?)([\d.]+(?::[\d.]+){0,2})$/.exec(text) ?? [];
  const time = digits?.split(":").reduce((sum, part) => sum * 60 + Number(part), 0);
  return sign === "-" ? -time : time;
}

function spanOf(text) {
  const times = text.split(",").map(timeOf);
  const isSpan = times.length < 3 && times.every(Number.isFinite) && times[0] <= (times[1] ?? Infinity);
  return isSpan ? times : [];
}

/// The first event of the kind at this time; its end counts too.
function eventAt(events, kind, time) {
  const near = 0.0005; // for times copied from the page, which shows milliseconds
  return events.findIndex(
    (event) => event.kind === kind && event.start_s - near <= time && time <= event.end_s + near,
  );
}

/// What a fragment names; what makes no sense counts as absent.
/// @return {input: index, event: index or -1, span: none, one or two times, hidden: set of names}
export function readAddress(fragment) {
  const given = new URLSearchParams(fragment.replace(/^#/, ""));
  const number = Number(given.get("input") ?? 1) - 1;
  const input = report.inputs[number] ? number : 0;
  const [kind, time] = (given.get("event") ?? "").split("@");
  return {
    input,
    event: eventAt(report.inputs[input].events, kind, timeOf(time ?? "")),
    span: spanOf(given.get("t") ?? ""),
    hidden: new Set((given.get("hide") ?? "").split(",").filter(kindOf)),
  };
}

/// The fragment for it, with times to the microsecond.
export function addressOf({ input, event = -1, span = [], hidden }) {
  const text = (time) => String(Number(time.toFixed(6)));
  const parts = [`input=${input + 1}`];
  if (event >= 0) {
    const { kind, start_s } = report.inputs[input].events[event];
    parts.push(`event=${encodeURIComponent(kind)}@${text(start_s)}`);
  }
  if (span.length > 0) {
    parts.push(`t=${span.map(text).join(",")}`);
  }
  if (hidden.size > 0) {
    parts.push(`hide=${[...hidden].map(encodeURIComponent).join(",")}`);
  }
  return `#${parts.join("&")}`;
}
