import { init, use } from "echarts/core";
import { CustomChart, LineChart } from "echarts/charts";
import { AxisPointerComponent, DataZoomComponent, GridComponent, TooltipComponent } from "echarts/components";
import { SVGRenderer } from "echarts/renderers";

import { clock, escape, percent, seconds, tick } from "./format.js";
import { colourOf } from "./kinds.js";

use([CustomChart, LineChart, AxisPointerComponent, DataZoomComponent, GridComponent, TooltipComponent, SVGRenderer]);

const lane = 22;
const curve = 90;
const space = 26;
const left = 104;
const right = 24;
const top = 8;
const slider = 70; // room for the axis and the zoom bar

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

function eventTip(event, image) {
  const name = `<span class="mark" style="background:${colourOf(event.kind)}"></span><b>${escape(event.kind)}</b>`;
  const end = event.open_at_end ? `${clock(event.end_s)}, open at the end` : clock(event.end_s);
  const picture = image ? `<img src="${image}" alt="first picture">` : "";
  return (
    `<div class="tip">${name}<br>${clock(event.start_s)} to ${end}` +
    `<br>${seconds(event.duration_s)}, measured in ${percent(event.share)}${picture}</div>`
  );
}

/// What the curves say at one time; the linked axes bring in the lanes too, which have nothing to add.
function curveTip(hovered, curves) {
  const points = hovered.filter(({ seriesIndex }) => seriesIndex > 0);
  if (points.length === 0) {
    return "";
  }
  const lines = points.map(({ seriesIndex, seriesName, value }) => {
    const { digits, unit } = curves[seriesIndex - 1];
    return `<br>${seriesName} <b>${value[1] === null ? "none" : value[1].toFixed(digits) + unit}</b>`;
  });
  return `<div class="tip">${clock(points[0].value[0])}${lines.join("")}</div>`;
}

/// Draws the events as bars in one lane per kind.
function laneSeries(kinds, events) {
  return {
    type: "custom",
    xAxisIndex: 0,
    yAxisIndex: 0,
    encode: { x: [0, 1], y: 2 },
    data: events.map((event) => ({
      value: [event.start_s, event.end_s, kinds.indexOf(event.kind)],
      itemStyle: { color: colourOf(event.kind) },
    })),
    renderItem(params, api) {
      const area = params.coordSys;
      const [start, y] = api.coord([api.value(0), api.value(2)]);
      const [end] = api.coord([api.value(1), api.value(2)]);
      const from = Math.max(start, area.x);
      const to = Math.min(Math.max(end, start + 2), area.x + area.width); // never thinner than can be seen
      const height = api.size([0, 1])[1] * 0.72;
      return to < area.x || from > area.x + area.width
        ? null
        : {
            type: "rect",
            shape: { x: from, y: y - height / 2, width: Math.max(to - from, 0), height, r: 2 },
            style: { fill: api.visual("color") },
          };
    },
  };
}

/// The timeline of one input; `show(start, end)` zooms it.
export function drawTimeline(element, { kinds, input, record, images, onEvent }) {
  const curves = curvesOf(record);
  const lanes = kinds.length * lane;
  const length = Math.max(
    input.stream.analysed_duration_s ?? 0,
    ...input.events.map((event) => event.end_s),
    0.001,
  );
  element.style.height = `${top + lanes + curves.length * (curve + space) + slider}px`;
  const chart = init(element, null, { renderer: "svg" });

  const gridTops = [top, ...curves.map((_, i) => top + lanes + space + i * (curve + space))];
  const text = { color: css("--dim"), fontSize: 12 };
  const split = { lineStyle: { color: css("--line") } };
  const last = curves.length;

  chart.setOption({
    animation: false,
    backgroundColor: "transparent",
    grid: gridTops.map((gridTop, i) => ({ left, right, top: gridTop, height: i === 0 ? lanes : curve })),
    xAxis: gridTops.map((_, i) => ({
      gridIndex: i,
      type: "value",
      min: 0,
      max: length,
      axisLabel: { ...text, show: i === last, formatter: tick, hideOverlap: true, showMaxLabel: false },
      axisLine: { show: i === last, lineStyle: { color: css("--dim") } },
      axisTick: { show: i === last },
      splitLine: split,
      axisPointer: {
        show: true,
        lineStyle: { color: css("--accent") },
        label: {
          show: i === last,
          formatter: ({ value }) => clock(value),
          backgroundColor: css("--accent"),
          color: css("--card"),
        },
      },
    })),
    yAxis: [
      {
        type: "category",
        data: kinds,
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
        nameGap: 48,
        nameTextStyle: text,
        axisLabel: { ...text, formatter: (v) => v.toFixed(0) },
        splitLine: split,
      })),
    ],
    axisPointer: { link: [{ xAxisIndex: "all" }] },
    dataZoom: [
      { type: "inside", xAxisIndex: "all", filterMode: "none" },
      {
        type: "slider",
        xAxisIndex: "all",
        filterMode: "none",
        bottom: 6,
        height: 22,
        labelFormatter: (value) => clock(value),
        textStyle: text,
        borderColor: css("--line"),
        fillerColor: `${css("--accent")}22`,
        handleStyle: { color: css("--card"), borderColor: css("--accent") },
        moveHandleStyle: { color: css("--accent") },
        dataBackground: { lineStyle: { opacity: 0 }, areaStyle: { opacity: 0 } },
        selectedDataBackground: { lineStyle: { opacity: 0 }, areaStyle: { opacity: 0 } },
        brushSelect: true,
      },
    ],
    tooltip: {
      trigger: "item",
      backgroundColor: css("--card"),
      borderColor: css("--line"),
      textStyle: { color: css("--text") },
      formatter: (hovered) =>
        Array.isArray(hovered)
          ? curveTip(hovered, curves)
          : eventTip(input.events[hovered.dataIndex], images[hovered.dataIndex]),
    },
    series: [
      laneSeries(kinds, input.events),
      ...curves.map(({ name, data }, i) => ({
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
      })),
    ],
  });
  chart.on("click", ({ seriesIndex, dataIndex }) => seriesIndex === 0 && onEvent(input.events[dataIndex]));

  return {
    chart,
    show(start, end) {
      chart.dispatchAction({ type: "dataZoom", startValue: Math.max(start, 0), endValue: Math.min(end, length) });
    },
    showAll: () => chart.dispatchAction({ type: "dataZoom", start: 0, end: 100 }),
    resize: () => chart.resize(),
    dispose: () => chart.dispose(),
  };
}
