// One stream's tile. Elements stay as long as the stream does, so that nothing flickers.

const quietestDb = -60;
const fullScale = 32768;

function element(tag, className, ...children) {
  const made = document.createElement(tag);
  made.className = className;
  made.append(...children);
  return made;
}

/// "12 s", "3 min", "2 h": how long ago, or for how long.
export function span(seconds) {
  if (seconds < 100) {
    return `${Math.max(Math.round(seconds), 0)} s`;
  }
  return seconds < 6000 ? `${Math.round(seconds / 60)} min` : `${Math.round(seconds / 3600)} h`;
}

/// 0 alarms first, then what is not up, then the rest.
export function rank({ alarms, state }) {
  if (alarms.some(({ severity }) => severity === "critical")) {
    return 0;
  }
  return alarms.length > 0 ? 1 : state === "up" ? 3 : 2;
}

/// Share of the level bar.
function loudness(level) {
  const db = level > 0 ? 20 * Math.log10(level / fullScale) : quietestDb;
  return Math.min(Math.max(1 - db / quietestDb, 0), 1);
}

function alarmText({ kind, severity, began, detail, meaning }, now) {
  const badge = element("span", `alarm ${severity}`, `${kind} ${span((now - Date.parse(began)) / 1000)}`);
  badge.title = detail || meaning;
  return badge;
}

function factsText({ video, audio }) {
  const parts = [];
  if (video) {
    parts.push(`${video.width}\u00d7${video.height}`, video.codec);
  }
  if (audio) {
    parts.push(audio.codec);
  }
  return parts.join(" ");
}

export class Tile {
  constructor(name) {
    this.name = name;
    this.image = element("img", "");
    this.image.alt = "";
    this.image.hidden = true;
    this.image.addEventListener("load", () => (this.image.hidden = false));
    this.image.addEventListener("error", () => (this.image.hidden = true));
    this.word = element("span", "word");
    this.level = element("span", "level");
    this.meter = element("span", "meter", this.level);
    this.meter.title = "Audio level";
    this.alarms = element("div", "alarms");
    this.title = element("b", "name", name);
    this.facts = element("span", "dim");
    this.good = element("span", "dim");
    this.element = element(
      "a",
      "tile",
      element("div", "picture", this.image, this.word, this.meter),
      element("div", "line", this.title, this.facts),
      this.alarms,
      element("div", "line", this.good),
    );
    this.element.href = `streams/${encodeURIComponent(name)}/hour`;
  }

  /// Whether the tile is where one can see it, so that its picture is worth fetching.
  isSeen() {
    const { top, bottom } = this.element.getBoundingClientRect();
    return !document.hidden && bottom > 0 && top < innerHeight;
  }

  show(stream, now) {
    const { state, reason, level } = { ...stream, level: stream.audio_level };
    this.element.dataset.rank = rank(stream);
    this.element.dataset.state = state;
    this.word.textContent = state === "up" ? "" : state;
    this.word.title = reason;
    this.level.style.height = `${level === null || state !== "up" ? 0 : loudness(level) * 100}%`;
    this.meter.hidden = stream.audio === null;
    this.facts.textContent = factsText(stream);
    this.alarms.replaceChildren(...stream.alarms.map((alarm) => alarmText(alarm, now)));
    const troubled = rank(stream) < 3;
    const since = stream.last_good ? `good ${span((now - Date.parse(stream.last_good)) / 1000)} ago` : "never good yet";
    this.good.textContent = troubled ? [since, reason].filter(Boolean).join(" \u00b7 ") : "";
  }

  /// A fresh picture; the one before stays until it is there.
  look(now) {
    if (this.element.dataset.state === "up" && this.isSeen()) {
      this.image.src = `streams/${encodeURIComponent(this.name)}/thumbnail?${now}`;
    }
  }
}
