const step = 0.1; // of what is seen
const zoom = 1.5;

/// Lets the keyboard move `timeline()`; `events` has next, previous, start and end.
export function watchKeys(element, timeline, events) {
  const actions = {
    ArrowLeft: () => timeline().move(-step),
    ArrowRight: () => timeline().move(step),
    "+": () => timeline().zoom(1 / zoom),
    "=": () => timeline().zoom(1 / zoom), // the key of + without shift
    "-": () => timeline().zoom(zoom),
    0: () => timeline().zoom(Infinity),
    Home: () => timeline().move(-Infinity),
    End: () => timeline().move(Infinity),
    n: events.next,
    p: events.previous,
    s: events.start,
    e: events.end,
  };
  element.addEventListener("keydown", (key) => {
    const action = actions[key.key];
    if (action && !key.ctrlKey && !key.altKey && !key.metaKey) {
      key.preventDefault();
      action();
    }
  });
}
