// The picture before and after, under a divider; a region of it may be drawn, and pixels pointed at.

import { element } from "./elements.js";
import type { Rect, Sides, View } from "./messages.js";

export interface StageEvents {
  /** The region that has been drawn or moved; null for all of the picture. */
  region(rect: Rect | null): void;
  point(x: number, y: number): void;
}

interface Layer {
  box: HTMLElement;
  canvas: HTMLCanvasElement;
  view: Sides | undefined;
}

// Less is a click.
const leastDrag = 4;

const clamp = (value: number, low: number, high: number) => Math.min(Math.max(value, low), high);

function layer(name: string): Layer {
  const canvas = element("canvas", { role: "img", "aria-label": name });
  return { box: element("div", { class: `tarvo-layer tarvo-${name}` }, canvas), canvas, view: undefined };
}

export class Stage {
  readonly element: HTMLElement;
  readonly #sheet: HTMLElement;
  readonly #before = layer("before");
  readonly #after = layer("after");
  readonly #divider: HTMLInputElement;
  readonly #area: HTMLElement;
  readonly #box: HTMLButtonElement;
  readonly #badge = element("span", { class: "tarvo-badge", hidden: true }, "preview");
  readonly #events: StageEvents;
  #region: Rect | null | undefined;

  constructor(events: StageEvents) {
    this.#events = events;
    this.#divider = element("input", {
      class: "tarvo-divider",
      type: "range",
      value: 50,
      "aria-label": "Divider: the picture before is left of it, the picture after is right of it",
      input: () => this.#divide(),
    });
    this.#box = element("button", { class: "tarvo-region", type: "button", keydown: (event) => this.#key(event as KeyboardEvent) });
    this.#area = element("div", { class: "tarvo-area" }, this.#box);
    this.#sheet = element("div", { class: "tarvo-sheet" }, this.#before.box, this.#after.box, this.#area, element("div", { class: "tarvo-line" }), this.#divider);
    this.element = element("div", { class: "tarvo-stage" }, this.#sheet, this.#badge);
    this.#sheet.addEventListener("pointerdown", (event) => this.#press(event));
    this.#sheet.addEventListener("pointermove", (event) => this.#point(event));
    this.#divide();
    this.#place();
  }

  /** The picture that there is to begin with; none where there is none. */
  before(view: View | undefined): void {
    this.#draw(this.#before, view);
  }
  after(view: View, preview: boolean): void {
    this.#draw(this.#after, view);
    view.bitmap.close();
    this.#badge.hidden = !preview;
  }

  /** Where there is a region to be drawn; undefined for nowhere. */
  set region(rect: Rect | null | undefined) {
    this.#region = rect;
    this.#place();
  }

  #draw(on: Layer, view: View | undefined): void {
    on.view = view && { width: view.width, height: view.height };
    on.box.hidden = !view;
    if (view) {
      on.canvas.width = view.bitmap.width;
      on.canvas.height = view.bitmap.height;
      on.canvas.getContext("2d")!.drawImage(view.bitmap, 0, 0);
    }
    this.#divider.hidden = !this.#before.view || !this.#after.view;
    this.#divide();
    this.#place();
  }

  #divide(): void {
    const place = this.#divider.hidden ? (this.#after.view ? 0 : 1) : this.#divider.valueAsNumber / 100;
    this.#sheet.style.setProperty("--divider", String(place));
  }

  // Both in the middle of the sheet, at one scale.
  #place(): void {
    const views = [this.#before.view, this.#after.view].filter((each) => each !== undefined);
    const sheet = { width: Math.max(1, ...views.map((each) => each.width)), height: Math.max(1, ...views.map((each) => each.height)) };
    this.#sheet.style.setProperty("--width", String(sheet.width));
    this.#sheet.style.setProperty("--height", String(sheet.height));
    const put = (target: HTMLElement, { width, height }: Sides, left: number, top: number, of: Sides) => {
      target.style.left = `${(100 * left) / of.width}%`;
      target.style.top = `${(100 * top) / of.height}%`;
      target.style.width = `${(100 * width) / of.width}%`;
      target.style.height = `${(100 * height) / of.height}%`;
    };
    const middle = (target: HTMLElement, view: Sides | undefined) =>
      view && put(target, view, (sheet.width - view.width) / 2, (sheet.height - view.height) / 2, sheet);
    middle(this.#before.canvas, this.#before.view);
    middle(this.#after.canvas, this.#after.view);
    middle(this.#area, this.#before.view);

    const source = this.#before.view;
    const region = this.#region;
    this.#area.hidden = region === undefined || !source;
    this.#sheet.classList.toggle("tarvo-drawable", !this.#area.hidden);
    if (region === undefined || !source) return;
    const rect = region ?? { left: 0, top: 0, ...source };
    put(this.#box, rect, rect.left, rect.top, source);
    this.#box.classList.toggle("tarvo-all", region === null);
    const told = region ? `left ${rect.left}, top ${rect.top}, ${rect.width} by ${rect.height} pixels` : "all of the picture";
    this.#box.setAttribute("aria-label", `Region: ${told}. Arrows move it, with Shift they change its size, with Control by ten pixels`);
  }

  // --- the region -----------------------------------------------------------------------------------------------------

  #change(rect: Rect): void {
    this.region = rect;
    this.#events.region(rect);
  }

  #key(event: KeyboardEvent): void {
    const source = this.#before.view;
    const step = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] }[event.key];
    if (!step || !source || this.#region === undefined) return;
    event.preventDefault();
    const [x, y] = step.map((each) => each * (event.ctrlKey ? 10 : 1)) as [number, number];
    const quarter = { left: source.width >> 2, top: source.height >> 2, width: (source.width + 1) >> 1, height: (source.height + 1) >> 1 };
    const rect = this.#region ?? quarter;
    if (event.shiftKey) this.#change({ ...rect, width: Math.max(1, rect.width + x), height: Math.max(1, rect.height + y) });
    else this.#change({ ...rect, left: rect.left + x, top: rect.top + y });
  }

  /** Where in the picture of a box the pointer is, in its pixels. */
  #placeOf(event: PointerEvent, box: HTMLElement, { width, height }: Sides): [number, number] {
    const around = box.getBoundingClientRect();
    const x = Math.floor(((event.clientX - around.left) * width) / around.width);
    const y = Math.floor(((event.clientY - around.top) * height) / around.height);
    return [clamp(x, 0, width - 1), clamp(y, 0, height - 1)];
  }

  #press(event: PointerEvent): void {
    const source = this.#before.view;
    if (event.button !== 0 || event.target === this.#divider) return;
    if (this.#region === undefined || !source) return this.#point(event, true);
    event.preventDefault();
    this.#box.focus({ preventScroll: true });
    const [fromX, fromY] = this.#placeOf(event, this.#area, source);
    const ended = new AbortController();
    const move = (moved: PointerEvent) => {
      if (Math.hypot(moved.clientX - event.clientX, moved.clientY - event.clientY) < leastDrag) return;
      const [x, y] = this.#placeOf(moved, this.#area, source);
      this.#change({ left: Math.min(fromX, x), top: Math.min(fromY, y), width: Math.abs(x - fromX) + 1, height: Math.abs(y - fromY) + 1 });
    };
    window.addEventListener("pointermove", move, { signal: ended.signal });
    for (const name of ["pointerup", "pointercancel"]) window.addEventListener(name, () => ended.abort(), { signal: ended.signal });
  }

  #point(event: PointerEvent, pressed = false): void {
    if (!this.#after.view || (event.pointerType !== "mouse" && !pressed)) return;
    this.#events.point(...this.#placeOf(event, this.#after.canvas, this.#after.view));
  }
}
