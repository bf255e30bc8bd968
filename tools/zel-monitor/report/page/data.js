/// What the program wrote into the page. A record is large and is taken apart when its input is shown.
const json = (id) => JSON.parse(document.getElementById(id).textContent);

export const { report, kinds, containers } = json("data");
export const limits = report.settings.fail_on;

const noCurve = { step_s: 1, values: [] };
const noRecord = { luma: noCurve, audio_level: noCurve, voice_share: noCurve, thumbnails: [] };
export const recordOf = (index) => json(`record-${index}`) ?? noRecord;

const byName = new Map(kinds.map((kind) => [kind.name, kind]));
export const kindOf = (name) => byName.get(name);

/// The sources in the order of the kinds, each with its kinds.
export const sources = [...new Set(kinds.map(({ source }) => source))].map((name) => ({
  name,
  kinds: kinds.filter(({ source }) => source === name),
}));

const slack = 1e-6; // times are given to the microsecond
export const isOverLimit = ({ kind, duration_s }) => duration_s + slack >= (limits[kind] ?? Infinity);

/// "pass", "fail" or "incomplete"; without a policy, an input that was analysed to its end is none of them.
export const resultOf = ({ verdict, complete }) => verdict ?? (complete ? "analysed" : "incomplete");

/// Begin and end of the stream's time.
export function timesOf({ stream, events }) {
  return events.reduce(([first, last], { start_s, end_s }) => [Math.min(first, start_s), Math.max(last, end_s)], [
    0,
    stream.analysed_duration_s || 1, // something to draw, if nothing was analysed
  ]);
}

/// Index of the event that a line of `violations` is about: it begins with the kind, and is about the longest.
export function eventOfViolation(line, events) {
  const { name } = kinds.find((kind) => line.startsWith(`${kind.name} `)) ?? {};
  const length = (i) => events[i]?.duration_s ?? -1;
  return events.reduce((longest, { kind }, i) => (kind === name && length(i) > length(longest) ? i : longest), -1);
}
