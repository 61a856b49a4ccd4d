// How often each level of red, green and blue occurs, before and after.

import { element, svg } from "./elements.js";
import type { Histogram } from "./messages.js";

const height = 64;
const channels = ["red", "green", "blue"] as const;

function mean(levels: Uint32Array): number {
  let [sum, count] = [0, 0];
  for (const [level, times] of levels.entries()) {
    sum += level * times;
    count += times;
  }
  return count === 0 ? 0 : Math.round(sum / count);
}

// A single level that most pixels have must not flatten the others.
function top(histogram: Histogram): number {
  const all = histogram.flatMap((levels) => [...levels]).sort((one, other) => other - one);
  return Math.max(1, all[6] ?? 1);
}

function outline(levels: Uint32Array, most: number): string {
  const points = [...levels].map((times, level) => `${level},${(height - height * Math.min(1, Math.sqrt(times / most))).toFixed(1)}`);
  return `M0,${height}L${points.join("L")}L255,${height}Z`;
}

export class HistogramView {
  readonly element: HTMLElement;
  readonly #drawing = svg("svg", { viewBox: `0 0 255 ${height}`, preserveAspectRatio: "none", role: "img", "aria-label": "Histogram" });

  constructor() {
    this.element = element("div", { class: "tarvo-histogram" }, this.#drawing);
  }

  show(before: Histogram | undefined, after: Histogram): void {
    const lines = before ? channels.map((name, i) => svg("path", { class: `tarvo-${name} tarvo-was`, d: outline(before[i]!, top(before)) })) : [];
    const areas = channels.map((name, i) => svg("path", { class: `tarvo-${name}`, d: outline(after[i]!, top(after)) }));
    this.#drawing.replaceChildren(...lines, ...areas);
    const means = channels.map((name, i) => `${name} ${mean(after[i]!)}`).join(", ");
    this.#drawing.setAttribute("aria-label", `Histogram of the result. Means: ${means}`);
  }
}
