import { init, use } from "echarts/core";
import { CustomChart, LineChart } from "echarts/charts";
import { AxisPointerComponent, DataZoomComponent, GridComponent, TooltipComponent } from "echarts/components";
import { SVGRenderer } from "echarts/renderers";

import { clock, percent, seconds, tick } from "./format.js";
import { timesOf } from "./data.js";
import { evidenceOf } from "./events.js";
import { laneSeries, momentSeries } from "./lanes.js";
import { mark } from "./table.js";

use([CustomChart, LineChart, AxisPointerComponent, DataZoomComponent, GridComponent, TooltipComponent, SVGRenderer]);

const lane = 22;
const curve = 84;
const space = 24;
const left = 96;
const right = 14;
const top = 8;
const slider = 70; // room for the axis and the zoom bar
const closest = 0.2; // seconds that fill the chart when zoomed in all the way

const fullScale = 32768;
const quietest = -96;
const decibels = (level) => (level > 0 ? Math.max(20 * Math.log10(level / fullScale), quietest) : quietest);

function css(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}

/// A curve as points of stream time; a step that holds nothing interrupts it.
function points({ step_s, values }, convert) {
  return values.map((value, i) => [(i + 0.5) * step_s, value === null ? null : convert(value)]);
}

function curvesOf(record) {
  return [
    { name: "mean luma", range: [0, 255], unit: "", digits: 1, data: points(record.luma, (v) => v) },
    { name: "audio level", range: [quietest, 0], unit: " dB", digits: 1, data: points(record.audio_level, decibels) },
    { name: "voice share", range: [0, 100], unit: "%", digits: 0, data: points(record.voice_share, (v) => v * 100) },
  ].filter(({ data }) => data.length > 0);
}

function eventTip(event, frame) {
  const end = event.open_at_end ? `${clock(event.end_s)}, open at the end` : clock(event.end_s);
  const image = frame ? `<img src="${frame}" alt="first frame">` : "";
  return (
    `<div class="tip"><b>${mark(event.kind)}</b><br>${clock(event.start_s)} to ${end}` +
    `<br>${seconds(event.duration_s)}, measured in ${percent(event.share)}${evidenceOf(event)}${image}</div>`
  );
}

/// What the curves say at one time; the linked axes bring in the lanes too, which have nothing to add.
function curveTip(hovered, curves) {
  const points = hovered.filter(({ seriesIndex }) => curves[seriesIndex]);
  if (points.length === 0) {
    return "";
  }
  const lines = points.map(({ seriesIndex, seriesName, value }) => {
    const { digits, unit } = curves[seriesIndex];
    return `<br>${seriesName} <b>${value[1] === null ? "none" : value[1].toFixed(digits) + unit}</b>`;
  });
  return `<div class="tip">${clock(points[0].value[0])}${lines.join("")}</div>`;
}

function axesOf(lanes, curves, [first, last]) {
  const text = { color: css("--dim"), fontSize: 12 };
  const split = { lineStyle: { color: css("--line") } };
  const xAxis = [lanes, ...curves].map((_, i) => {
    const show = i === curves.length; // the lowest has the times
    return {
      gridIndex: i,
      type: "value",
      min: first,
      max: last,
      axisLabel: { ...text, show, formatter: tick, hideOverlap: true, showMaxLabel: false },
      axisLine: { show, lineStyle: { color: css("--dim") } },
      axisTick: { show },
      splitLine: split,
      axisPointer: {
        show: true,
        lineStyle: { color: css("--accent") },
        label: {
          show,
          formatter: ({ value }) => clock(value),
          backgroundColor: css("--accent"),
          color: css("--card"),
        },
      },
    };
  });
  const yAxis = [
    {
      type: "category",
      data: lanes.length > 0 ? lanes.map(({ name }) => name) : ["no events"],
      inverse: true,
      axisLabel: { ...text, interval: 0 },
      axisLine: { show: false },
      axisTick: { show: false },
      splitArea: { show: true, areaStyle: { color: [css("--lane"), "transparent"] } },
    },
    ...curves.map(({ name, range }, i) => ({
      gridIndex: i + 1,
      type: "value",
      min: range[0],
      max: range[1],
      interval: (range[1] - range[0]) / 2,
      name,
      nameLocation: "middle",
      nameGap: 44,
      nameTextStyle: text,
      axisLabel: { ...text, formatter: (v) => v.toFixed(0) },
      splitLine: split,
    })),
  ];
  return { xAxis, yAxis };
}

const zoomBar = () => ({
  type: "slider",
  xAxisIndex: "all",
  filterMode: "none",
  left,
  right,
  bottom: 12,
  height: 22,
  showDetail: false,
  borderColor: css("--line"),
  fillerColor: `${css("--accent")}22`,
  handleStyle: { color: css("--card"), borderColor: css("--accent") },
  moveHandleStyle: { color: css("--accent") },
  dataBackground: { lineStyle: { opacity: 0 }, areaStyle: { opacity: 0 } },
  selectedDataBackground: { lineStyle: { opacity: 0 }, areaStyle: { opacity: 0 } },
  brushSelect: true,
});

const curveSeries = ({ name, data }, i) => ({
  type: "line",
  name,
  xAxisIndex: i + 1,
  yAxisIndex: i + 1,
  data,
  showSymbol: false,
  sampling: "lttb",
  lineStyle: { width: 1.2, color: css("--accent") },
  itemStyle: { color: css("--accent") },
  areaStyle: { color: css("--accent"), opacity: 0.12, origin: "start" },
  tooltip: { trigger: "axis" },
});

/// Leaves the wheel alone to the page; else a chart that fills the window could not be scrolled past.
export function sparePageFromWheel(element) {
  for (const name of ["wheel", "mousewheel"]) {
    element.addEventListener(name, (event) => event.ctrlKey || event.stopPropagation(), {
      capture: true,
      passive: true,
    });
  }
}

/// The timeline of one input with a lane for each of `lanes`. `shown` are the indices of the events to draw.
/// `look` is {from, to, chosen, time}: what is seen, and the index of an event and a moment to set off, if any.
/// Calls `onEvent(index)` for a bar that is clicked and `onMove(from, to)` when the user moves or zooms.
export function drawTimeline(element, { lanes, input, record, frames, shown, look, onEvent, onMove }) {
  const curves = curvesOf(record);
  const [first, last] = timesOf(input);
  const laneHeight = Math.max(lanes.length, 1) * lane;
  const bottom = top + laneHeight + curves.length * (curve + space);
  element.style.height = `${bottom + slider}px`;
  const chart = init(element, null, { renderer: "svg" });
  const drawn = { ...look, outline: css("--text") };
  let view;

  /// Sets the view, within the stream, and gives it as the chart takes it.
  function zoomOf(from, to) {
    const width = Math.min(Math.max(to - from, closest), last - first);
    const begin = Math.min(Math.max(from, first), last - width);
    view = [begin, begin + width];
    const [start, end] = view.map((time) => ((time - first) / (last - first)) * 100);
    return { start, end };
  }

  const zoom = zoomOf(look.from, look.to);
  const bars = curves.length; // the curves come first, so that each has the index of its series
  chart.setOption({
    animation: false,
    backgroundColor: "transparent",
    grid: [
      { left, right, top, height: laneHeight },
      ...curves.map((_, i) => ({ left, right, top: top + laneHeight + space + i * (curve + space), height: curve })),
    ],
    ...axesOf(lanes, curves, [first, last]),
    axisPointer: { link: [{ xAxisIndex: "all" }] },
    dataZoom: [
      {
        ...zoom,
        type: "inside",
        xAxisIndex: "all",
        filterMode: "none",
        preventDefaultMouseMove: false, // a finger that moves up or down scrolls the page
        minValueSpan: Math.min(closest, last - first),
      },
      { ...zoom, ...zoomBar() },
    ],
    tooltip: {
      trigger: "item",
      confine: true,
      backgroundColor: css("--card"),
      borderColor: css("--line"),
      textStyle: { color: css("--text") },
      formatter: (hovered) =>
        Array.isArray(hovered)
          ? curveTip(hovered, curves)
          : eventTip(input.events[shown[hovered.dataIndex]], frames[shown[hovered.dataIndex]]),
    },
    series: [
      ...curves.map(curveSeries),
      laneSeries(lanes, input.events, shown, drawn),
      momentSeries(drawn, bottom),
    ],
  });

  const zoomTo = (from, to) => chart.dispatchAction({ type: "dataZoom", ...zoomOf(from, to) });
  function moveTo(from, to) {
    zoomTo(from, to);
    onMove(...view);
  }
  chart.on("click", ({ seriesIndex, dataIndex }) => seriesIndex === bars && onEvent(shown[dataIndex]));
  chart.on("datazoom", (event) => {
    const { start, end } = event.batch?.[0] ?? event;
    const seen = [start, end].map((share) => first + (share / 100) * (last - first));
    if (seen.some((time, i) => Math.abs(time - view[i]) > 1e-6)) {
      // else it comes from zoomTo()
      view = seen;
      onMove(...view);
    }
  });
  const watcher = new ResizeObserver(() => element.clientWidth === chart.getWidth() || chart.resize());
  watcher.observe(element);

  return {
    chart,
    show(look) {
      Object.assign(drawn, look);
      zoomTo(look.from, look.to);
    },
    view: () => view,
    isWhole: () => view[1] - view[0] > last - first - 1e-6,
    /// By a share of what is seen.
    move(share) {
      const [from, to] = view;
      const by = Number.isFinite(share) ? share * (to - from) : Math.sign(share) * (last - first);
      moveTo(from + by, to + by);
    },
    /// Around the middle of what is seen.
    zoom(factor) {
      const [from, to] = view;
      const half = Math.min(factor * (to - from), last - first) / 2;
      moveTo((from + to) / 2 - half, (from + to) / 2 + half);
    },
    dispose() {
      watcher.disconnect();
      chart.dispose();
    },
  };
}
