import { clock, escape, percent, seconds } from "./format.js";
import { colourOf } from "./kinds.js";
import { drawTimeline } from "./timeline.js";

const { report, records } = JSON.parse(document.getElementById("data").textContent);
const kinds = Object.keys(report.settings.rules);
const noRecord = {
  luma: { step_s: 1, values: [] },
  audio_level: { step_s: 1, values: [] },
  voice_share: { step_s: 1, values: [] },
  thumbnails: [],
};

const byId = (id) => document.getElementById(id);
let current = 0;
let timeline;

const mark = (kind) => `<span class="mark" style="background:${colourOf(kind)}"></span>${escape(kind)}`;

function table(head, rows, attributes = () => "") {
  if (rows.length === 0) {
    return "<p>None.</p>";
  }
  const line = (cells, tag) => cells.map((cell) => `<${tag}>${cell}</${tag}>`).join("");
  const body = rows.map((cells, i) => `<tr ${attributes(i)}>${line(cells, "td")}</tr>`).join("");
  return `<table><thead><tr>${line(head, "th")}</tr></thead><tbody>${body}</tbody></table>`;
}

/// Runs `action(i)` when the i-th of `elements` is clicked, or chosen with the keyboard.
function onChoice(elements, action) {
  elements.forEach((element, i) => {
    element.addEventListener("click", () => action(i));
    element.addEventListener("keydown", (key) => key.key === "Enter" && action(i));
  });
}

function factsText({ stream }) {
  const { container, video, audio } = stream;
  const parts = [container];
  if (video) {
    const rate = video.frame_rate ? ` at ${Number(video.frame_rate.toPrecision(4))} fps` : "";
    parts.push(`${video.codec} ${video.width}\u00d7${video.height}${rate}`);
  }
  if (audio) {
    parts.push(`${audio.codec} ${audio.sample_rate} Hz, ${audio.channels} channel${audio.channels === 1 ? "" : "s"}`);
  }
  parts.push(`${clock(stream.analysed_duration_s ?? 0)} analysed`);
  if (stream.damaged > 0) {
    parts.push(`${stream.damaged} damaged packets or frames`);
  }
  return parts.filter(Boolean).join(" \u00b7 ");
}

function showVerdict({ verdict, violations, problem }) {
  const known = verdict ?? (problem ? "incomplete" : null);
  const words = {
    pass: "PASS",
    fail: `FAIL: ${violations.join("; ")}`,
    incomplete: [`Not analysed to its end: ${problem}`, ...violations].join("; "),
  };
  byId("verdict").hidden = known === null;
  byId("verdict").dataset.verdict = known ?? "";
  byId("verdict").textContent = words[known] ?? "";
}

/// The picture of each event, in the order of the events; some have none.
function imagesOf(events, thumbnails) {
  const found = new Map(thumbnails.map(({ kind, start_s, image }) => [`${kind} ${start_s}`, image]));
  return events.map(({ kind, start_s }) => found.get(`${kind} ${start_s}`));
}

function zoomTo({ start_s, end_s }) {
  const margin = Math.max((end_s - start_s) * 0.5, 1);
  timeline.show(start_s - margin, end_s + margin);
  byId("timeline").scrollIntoView({ block: "nearest", behavior: "smooth" });
}

function showGallery({ stream, events }, images) {
  const shown = events.map((event, i) => ({ event, image: images[i] })).filter(({ image }) => image);
  const lacking = stream.video ? events.length - shown.length : 0;
  byId("gallery-section").hidden = shown.length + lacking === 0;
  byId("lacking").hidden = lacking === 0;
  byId("lacking").textContent = `No picture was at hand for ${lacking} of ${events.length} events.`;
  byId("gallery").innerHTML = shown
    .map(
      ({ event, image }) =>
        `<figure tabindex="0"><img src="${image}" alt="first picture of ${escape(event.kind)}" loading="lazy">` +
        `<figcaption>${mark(event.kind)}<br><time>${clock(event.start_s)}</time>, ${seconds(event.duration_s)}` +
        `</figcaption></figure>`,
    )
    .join("");
  onChoice(byId("gallery").querySelectorAll("figure"), (i) => zoomTo(shown[i].event));
}

function showTables({ totals, events }) {
  const found = kinds.filter((kind) => totals[kind].events > 0);
  byId("totals").innerHTML = table(
    ["Kind", "Events", "Total", "Share of the stream", "Longest", "First at"],
    found.map((kind) => {
      const { events: count, total_s, share, longest_s, first_at_s } = totals[kind];
      return [mark(kind), count, seconds(total_s), percent(share), seconds(longest_s), clock(first_at_s)];
    }),
  );
  byId("events").innerHTML = table(
    ["Kind", "Start", "End", "Length", "Measured in"],
    events.map((event) => [
      mark(event.kind),
      clock(event.start_s),
      clock(event.end_s) + (event.open_at_end ? " (open)" : ""),
      seconds(event.duration_s),
      percent(event.share),
    ]),
    () => 'tabindex="0"',
  );
  onChoice(byId("events").querySelectorAll("tbody tr"), (i) => zoomTo(events[i]));
}

function showInput(index) {
  current = index;
  const input = report.inputs[index];
  const record = records[index] ?? noRecord;
  const images = imagesOf(input.events, record.thumbnails);
  document.title = `${input.input} - scan report`;
  byId("title").textContent = input.input;
  byId("facts").textContent = factsText(input);
  byId("inputs").value = String(index);
  showVerdict(input);
  timeline?.dispose();
  timeline = drawTimeline(byId("timeline"), { kinds, input, record, images, onEvent: zoomTo });
  byId("timeline").chart = timeline.chart; // for the console
  showGallery(input, images);
  showTables(input);
}

function showOverview() {
  const { inputs } = report;
  if (inputs.length < 2) {
    return;
  }
  byId("inputs").hidden = byId("overview-section").hidden = false;
  byId("inputs").innerHTML = inputs.map(({ input }, i) => `<option value="${i}">${escape(input)}</option>`).join("");
  byId("inputs").addEventListener("change", () => showInput(Number(byId("inputs").value)));
  byId("overview").innerHTML = table(
    ["Input", "Length", "Events", "Result"],
    inputs.map(({ input, stream, events, verdict, complete }) => [
      escape(input),
      clock(stream.analysed_duration_s ?? 0),
      events.length,
      escape(verdict ?? (complete ? "complete" : "incomplete")),
    ]),
    () => 'tabindex="0"',
  );
  onChoice(byId("overview").querySelectorAll("tbody tr"), (i) => {
    showInput(i);
    scrollTo({ top: 0 });
  });
}

function setTheme(theme) {
  document.documentElement.dataset.theme = theme;
  showInput(current);
}

const prefersDark = matchMedia("(prefers-color-scheme: dark)");
prefersDark.addEventListener("change", () => setTheme(prefersDark.matches ? "dark" : "light"));
byId("theme").addEventListener("click", () =>
  setTheme(document.documentElement.dataset.theme === "dark" ? "light" : "dark"),
);
byId("whole").addEventListener("click", () => timeline.showAll());
addEventListener("resize", () => timeline.resize());
byId("footer").textContent = `${report.tool.name} ${report.tool.version}, report version ${report.version}`;

showOverview();
setTheme(prefersDark.matches ? "dark" : "light");
