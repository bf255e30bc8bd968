/// Stream time as h:mm:ss.mmm, with a sign if it is before the stream's beginning.
export function clock(seconds) {
  const signed = Math.round(seconds * 1000);
  const ms = Math.abs(signed);
  const pad = (value, width) => String(value).padStart(width, "0");
  const whole = Math.floor(ms / 1000);
  return `${signed < 0 ? "-" : ""}${Math.floor(whole / 3600)}:${pad(Math.floor(whole / 60) % 60, 2)}:${pad(whole % 60, 2)}.${pad(ms % 1000, 3)}`;
}

/// The same for an axis: no more digits than the ticks need.
export function tick(seconds) {
  const text = clock(seconds).replace(/\.?0+$/, (zeros) => (zeros.startsWith(".") ? "" : zeros));
  return text.replace(/^(-?)0:/, "$1");
}

export const seconds = (value) => `${value.toFixed(3)} s`;

/// A measurement, to as many digits as tell something.
export const measure = (value) => (value === null ? "none" : String(Number(value.toPrecision(3))));

export const percent = (share) => `${(share * 100).toFixed(1)}%`;
export const count = (n, word) => `${n} ${word}${n === 1 ? "" : "s"}`;

const entities = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "'": "&#39;" };
export const escape = (text) => String(text).replace(/[&<>"']/g, (c) => entities[c]);
