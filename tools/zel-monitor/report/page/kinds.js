/// One colour per kind that holds on light and on dark ground; neighbours in the lanes differ clearly.
export const colours = {
  black: "#64748b",
  green: "#2e9e4f",
  block: "#d9772b",
  freeze: "#3b82d6",
  underexposed: "#7c6bd0",
  overexposed: "#d4a012",
  mute: "#a3487f",
  "low-voice": "#c77dba",
  "high-voice": "#e0527a",
  "no-voice": "#2aa3a3",
  stall: "#cf4436",
  short: "#96502c",
};

export const colourOf = (kind) => colours[kind] ?? "#808080";
