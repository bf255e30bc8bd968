/// The events of an input as bars, one lane per kind. `look` is asked at every drawing: {chosen} is the index
/// of the event to set off, {outline} its colour.
export function laneSeries(lanes, events, shown, look) {
  const laneOf = new Map(lanes.map(({ name }, lane) => [name, lane]));
  return {
    type: "custom",
    xAxisIndex: 0,
    yAxisIndex: 0,
    encode: { x: [0, 1], y: 2 },
    data: shown.map((i) => [events[i].start_s, events[i].end_s, laneOf.get(events[i].kind)]),
    renderItem({ coordSys: area, context, dataIndex }, api) {
      const lane = api.value(2);
      const [start, y] = api.coord([api.value(0), lane]);
      const [end] = api.coord([api.value(1), lane]);
      const right = area.x + area.width;
      const from = Math.max(start, area.x);
      const to = Math.min(Math.max(end, start + 2), right); // never thinner than can be seen
      const isChosen = shown[dataIndex] === look.chosen;
      const drawn = (context.drawn ??= []); // how far each lane is filled: of many small bars few are seen
      if (to < area.x || from > right || (to < (drawn[lane] ?? -1) + 0.5 && !isChosen)) {
        return null;
      }
      drawn[lane] = to;
      const height = api.size([0, 1])[1] * 0.72;
      return {
        type: "rect",
        shape: { x: from, y: y - height / 2, width: Math.max(to - from, 0), height, r: 2 },
        style: { fill: lanes[lane].colour, ...(isChosen && { stroke: look.outline, lineWidth: 2 }) },
        z2: isChosen ? 2 : 1,
      };
    },
  };
}

/// A line through all grids at one moment: {time} of `look`, if any.
export function momentSeries(look, bottom) {
  return {
    type: "custom",
    xAxisIndex: 0,
    yAxisIndex: 0,
    silent: true,
    tooltip: { show: false },
    data: [[0, 0]],
    renderItem({ coordSys: area }, api) {
      const [x] = api.coord([look.time ?? NaN, 0]);
      return !(x >= area.x - 1 && x <= area.x + area.width + 1)
        ? null
        : {
            type: "line",
            shape: { x1: x, x2: x, y1: area.y, y2: bottom },
            style: { stroke: look.outline, lineWidth: 1.5, lineDash: [4, 3] },
          };
    },
  };
}
