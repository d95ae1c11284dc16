// One plot: a counter of several ports over time. The library is fetched when the
// first plot is wanted; without it the values stand in the tables all the same.
import { h, set } from "./dom.js";
import { short, time } from "./format.js";

let library = null;

export function plots() {
  library ??= new Promise((resolve, reject) => {
    const script = h("script", {
      src: "vendor/uPlot.iife.min.js",
      on: { load: () => resolve(globalThis.uPlot), error: () => reject(new Error("The plot library cannot be loaded.")) },
    });
    document.head.append(script);
  }).catch((problem) => {
    library = null;
    throw problem;
  });
  return library;
}

// Series are told apart by colour and by dashes.
export const colours = 6;
export const dashes = [[], [7, 4], [2, 3], [10, 3, 2, 3]];
export const colour_of = (place) => place % colours;
export const dash_of = (place) => dashes[(place + Math.floor(place / colours)) % dashes.length];

const variable = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

// `series`: [{ place }]; on_point(index or null) says where the pointer is.
export async function make_plot(holder, series, height, on_point) {
  const Plot = await plots();
  let plot = null;
  let data = [[], ...series.map(() => [])];
  let range = [0, 1];
  let own = false; // the pointer was put there by us

  function draw() {
    plot?.destroy();
    const ink = variable("--muted");
    const axis = { stroke: ink, grid: { stroke: variable("--line"), width: 1 }, ticks: { stroke: variable("--line"), width: 1 }, font: "12px system-ui, sans-serif" };
    plot = new Plot({
      width: Math.max(holder.clientWidth, 200),
      height,
      legend: { show: false },
      cursor: { drag: { x: false, y: false }, points: { size: 7 }, y: false },
      scales: { x: { range: () => range }, y: { range: (self, least, most) => (least === null ? [0, 1] : [Math.min(0, least), most > 0 ? most * 1.1 : 1]) } },
      axes: [
        { ...axis, values: (self, marks) => marks.map((mark) => time(new Date(mark * 1000))), space: 90, size: 30 },
        { ...axis, values: (self, marks) => marks.map((mark) => short(mark)), size: 64 },
      ],
      series: [{}, ...series.map(({ place }) => ({ stroke: variable(`--series-${colour_of(place)}`), dash: dash_of(place), width: 2, points: { show: false } }))],
      hooks: { setCursor: [(self) => { if (!own) on_point(self.cursor.left >= 0 ? self.cursor.idx : null); }] },
    }, data, holder);
    for (const canvas of holder.querySelectorAll("canvas")) set(canvas, "aria-hidden", "true");
  }

  draw();
  const sizes = new ResizeObserver(() => plot.setSize({ width: Math.max(holder.clientWidth, 200), height }));
  sizes.observe(holder);
  const theme = matchMedia("(prefers-color-scheme: dark)");
  theme.addEventListener("change", draw);
  return {
    show(next, span) {
      data = next;
      range = span;
      plot.setData(data, true);
    },
    point(index) {
      own = true;
      if (index === null || index === undefined) plot.setCursor({ left: -10, top: -10 });
      else plot.setCursor({ left: plot.valToPos(data[0][index], "x"), top: 10 });
      own = false;
    },
    stop() {
      sizes.disconnect();
      theme.removeEventListener("change", draw);
      plot.destroy();
    },
  };
}
