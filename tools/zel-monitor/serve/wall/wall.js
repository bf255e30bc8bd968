import { rank, Tile } from "./tile.js";

const byId = (id) => document.getElementById(id);
const everyMs = 1000;
const slowEveryMs = 5000; // while the page is hidden, or the service is away

const tiles = new Map(); // by the stream's name
let streams = [];
let toldAt = Date.now(); // by the service's clock

function wanted({ name, labels, ...stream }) {
  const words = byId("search").value.toLowerCase();
  const text = [name, ...Object.entries(labels).map(([key, value]) => `${key}=${value}`)].join("\n").toLowerCase();
  return text.includes(words) && (!byId("troubled").checked || rank({ ...stream }) < 3);
}

function showSummary() {
  const troubled = streams.filter((stream) => rank(stream) < 2).length;
  const down = streams.filter((stream) => rank(stream) === 2).length;
  const parts = [`${streams.length} stream${streams.length === 1 ? "" : "s"}`];
  parts.push(troubled > 0 ? `${troubled} with alarms` : "no alarm");
  if (down > 0) {
    parts.push(`${down} not up`);
  }
  byId("summary").textContent = parts.join(", ");
  document.title = troubled > 0 ? `(${troubled}) Streams` : "Streams";
}

function show() {
  const shown = streams
    .filter(wanted)
    .sort((a, b) => rank(a) - rank(b) || a.name.localeCompare(b.name, undefined, { numeric: true }));
  const names = new Set(shown.map(({ name }) => name));
  for (const [name, tile] of tiles) {
    if (!names.has(name)) {
      tile.element.remove();
      tiles.delete(name);
    }
  }
  shown.forEach((stream, i) => {
    if (!tiles.has(stream.name)) {
      tiles.set(stream.name, new Tile(stream.name));
    }
    const tile = tiles.get(stream.name);
    tile.show(stream, toldAt);
    if (byId("wall").children[i] !== tile.element) {
      byId("wall").insertBefore(tile.element, byId("wall").children[i] ?? null);
    }
  });
  byId("none").hidden = shown.length > 0;
  showSummary();
}

async function refresh() {
  let next = document.hidden ? slowEveryMs : everyMs;
  try {
    const answer = await fetch("api/streams", { signal: AbortSignal.timeout(10_000) });
    if (!answer.ok) {
      throw new Error(`it answered ${answer.status}`);
    }
    const told = await answer.json();
    streams = told.streams;
    toldAt = Date.parse(told.time);
    byId("lost").hidden = true;
    show();
    for (const tile of tiles.values()) {
      tile.look(Date.now());
    }
  } catch (error) {
    byId("lost").textContent = `The service does not answer (${error.message}); what you see is old.`;
    byId("lost").hidden = false;
    next = slowEveryMs;
  }
  setTimeout(refresh, next);
}

const prefersDark = matchMedia("(prefers-color-scheme: dark)");
const setTheme = (isDark) => (document.documentElement.dataset.theme = isDark ? "dark" : "light");
setTheme(prefersDark.matches);
prefersDark.addEventListener("change", () => setTheme(prefersDark.matches));
byId("theme").addEventListener("click", () => setTheme(document.documentElement.dataset.theme !== "dark"));
byId("search").addEventListener("input", show);
byId("troubled").addEventListener("change", show);
refresh();
