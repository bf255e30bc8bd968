import { clock, count } from "./format.js";
import { addressOf, readAddress } from "./address.js";
import { containers, kinds, recordOf, report, resultOf, timesOf } from "./data.js";
import { Events, framesOf } from "./events.js";
import { showFilter, watchFilter } from "./filter.js";
import { watchKeys } from "./keys.js";
import { badge, Overview, reasons } from "./overview.js";
import { drawTimeline, sparePageFromWheel } from "./timeline.js";

const byId = (id) => document.getElementById(id);
const around = 2; // seconds shown on either side of a moment

const overview = new Overview();
const events = new Events();
let state = readAddress(location.hash); // all that the address tells
let record;
let frames = [];
let shown = []; // indices of the events whose kinds are not hidden
let timeline;

const inputNow = () => report.inputs[state.input];

/// How loud the input is; silence has no loudness.
function loudnessText({ integrated_lufs: whole, short_term_max_lufs: most, true_peak_dbtp: peak }) {
  const text = (value, unit) => (value === null ? "none" : `${value.toFixed(1)} ${unit}`);
  return `loudness ${text(whole, "LUFS")}, short-term at most ${text(most, "LUFS")}, true peak ${text(peak, "dBTP")}`;
}

function factsText({ survey, stream, loudness }) {
  const { container, video, audio } = stream;
  const parts = [survey && `SURVEY of ${survey.key_frames} key frames`, containers[container]];
  if (video) {
    const rate = video.frame_rate ? ` at ${Number(video.frame_rate.toPrecision(4))} fps` : "";
    parts.push(`${video.codec} ${video.width}\u00d7${video.height}${rate}`);
  }
  if (audio) {
    parts.push(`${audio.codec} ${audio.sample_rate} Hz, ${count(audio.channels, "channel")}`);
  }
  if (loudness) {
    parts.push(loudnessText(loudness));
  }
  parts.push(`${clock(stream.analysed_duration_s ?? 0)} analysed`);
  if (stream.damaged > 0) {
    parts.push(`${stream.damaged} damaged packets or frames`);
  }
  return parts.filter(Boolean).join(" \u00b7 ");
}

/// Keeps the address at what is shown, without a step in the history. Not at every move of a drag, because
/// browsers refuse too many.
let later;
function noteAddress() {
  clearTimeout(later);
  later = setTimeout(() => history.replaceState(null, "", addressOf(state)), 200);
}

function showInput() {
  const input = inputNow();
  const result = resultOf(input);
  document.title = `${result.toUpperCase()}: ${input.input} - scan report`;
  byId("title").innerHTML = badge(result);
  byId("title").append(` ${input.input}`);
  byId("facts").textContent = factsText(input);
  byId("timeline").setAttribute("aria-label", `Timeline of ${input.input}, ${count(input.events.length, "event")}`);
  record = recordOf(state.input);
  frames = framesOf(input.events, record.thumbnails);
}

function showKinds() {
  const { input: index, hidden } = state;
  const input = inputNow();
  shown = [...input.events.keys()].filter((i) => !hidden.has(input.events[i].kind));
  overview.show(state);
  byId("reasons").innerHTML = reasons(index, hidden);
  showFilter(byId("filter"), input.events, hidden);
  events.show({ index, input, frames, shown, hidden });
}

/// What the chart is to show: a span as it is, the surroundings of a moment, an event with some room, or all.
function lookNow() {
  const [from, to] = state.span;
  const event = inputNow().events[state.event];
  const look = { chosen: state.event, time: undefined };
  if (to !== undefined) {
    return { ...look, from, to };
  }
  if (from !== undefined) {
    return { ...look, from: from - around, to: from + around, time: from };
  }
  if (event) {
    const room = Math.max((event.end_s - event.start_s) * 0.5, 1);
    return { ...look, from: event.start_s - room, to: event.end_s + room };
  }
  const [first, last] = timesOf(inputNow());
  return { ...look, from: first, to: last };
}

function drawChart() {
  const input = inputNow();
  const found = new Set(shown.map((i) => input.events[i].kind));
  timeline?.dispose();
  timeline = drawTimeline(byId("timeline"), {
    lanes: kinds.filter(({ name }) => found.has(name)),
    input,
    record,
    frames,
    shown,
    look: lookNow(),
    onEvent: (i) => go(events.address(i)),
    onMove(from, to) {
      state.span = timeline.isWhole() && state.event < 0 ? [] : [from, to];
      noteAddress();
    },
  });
  byId("timeline").chart = timeline.chart; // for the console
}

/// Shows what differs from `before`; all if there is none.
function show(before) {
  const isOther = state.input !== before?.input;
  const isFiltered = isOther || [...state.hidden].join() !== [...before.hidden].join();
  if (isOther) {
    showInput();
  }
  if (isFiltered) {
    showKinds();
  }
  if (!shown.includes(state.event)) {
    state.event = -1;
  }
  if (isFiltered) {
    drawChart();
  } else {
    timeline.show(lookNow());
  }
  events.choose(state.event);
}

function change(next) {
  const before = state;
  state = next;
  show(before);
}

/// Follows a link of the page.
function go(address) {
  clearTimeout(later);
  if (address !== location.hash) {
    history.pushState(null, "", address);
  }
  change(readAddress(address));
}

/// The same without a step in the history, for keys that may be held down.
function goOn(address) {
  change(readAddress(address));
  noteAddress();
}

/// To the event after the chosen one, or before it; or else to one from what is seen.
function goToNeighbour(step) {
  const all = inputNow().events;
  const [from] = timeline.view();
  const ahead = shown.filter((i) => all[i].start_s < from).length;
  const at = state.event >= 0 ? shown.indexOf(state.event) + step : step > 0 ? ahead : ahead - 1;
  const event = shown[Math.min(Math.max(at, 0), shown.length - 1)];
  if (event !== undefined) {
    goOn(events.address(event));
  }
}

function goToEdge(edge) {
  const event = inputNow().events[state.event];
  if (event) {
    goOn(events.address(state.event, [event[edge]]));
  }
}

async function copyLink(link) {
  try {
    await navigator.clipboard.writeText(link.href);
    link.textContent = "Copied";
    setTimeout(() => (link.textContent = "Copy link"), 1500);
  } catch {
    prompt("The link to this event:", link.href); // where pages may not write the clipboard
  }
}

const prefersStill = matchMedia("(prefers-reduced-motion: reduce)");
function followClick(click) {
  const link = click.target.closest("a[href^='#'], tr[data-go]");
  const isSelection = link?.matches("tr") && String(getSelection()) !== ""; // of the text of a row
  if (!link || isSelection || click.ctrlKey || click.metaKey || click.shiftKey || click.altKey) {
    return;
  }
  click.preventDefault();
  if (link.id === "copy") {
    copyLink(link);
    return;
  }
  const before = state.input;
  go(link.dataset.go ?? link.getAttribute("href"));
  const behavior = prefersStill.matches ? "auto" : "smooth";
  if (state.input === before) {
    byId("timeline").scrollIntoView({ behavior, block: "nearest" });
  } else {
    byId("input").scrollIntoView({ behavior });
  }
  byId("timeline").focus({ preventScroll: true });
}

const prefersDark = matchMedia("(prefers-color-scheme: dark)");
function setTheme(isDark) {
  document.documentElement.dataset.theme = isDark ? "dark" : "light";
  drawChart();
}

document.documentElement.dataset.theme = prefersDark.matches ? "dark" : "light";
show();

prefersDark.addEventListener("change", () => setTheme(prefersDark.matches));
byId("theme").addEventListener("click", () => setTheme(document.documentElement.dataset.theme !== "dark"));
byId("whole").addEventListener("click", () => go(addressOf({ input: state.input, hidden: state.hidden })));
byId("choice").addEventListener("change", ({ target }) =>
  go(addressOf({ input: Number(target.value), hidden: state.hidden })),
);
byId("previous").addEventListener("click", () => goToNeighbour(-1));
byId("next").addEventListener("click", () => goToNeighbour(1));
document.addEventListener("click", followClick);
addEventListener("hashchange", () => change(readAddress(location.hash)));
watchFilter(
  byId("filter"),
  () => state.hidden,
  (hidden) => {
    change({ ...state, hidden });
    noteAddress();
  },
);
sparePageFromWheel(byId("timeline"));
watchKeys(byId("timeline"), () => timeline, {
  next: () => goToNeighbour(1),
  previous: () => goToNeighbour(-1),
  start: () => goToEdge("start_s"),
  end: () => goToEdge("end_s"),
});
byId("footer").textContent = `${report.tool.name} ${report.tool.version}, report version ${report.version}`;
