// What the page of an operation and the playground have in common: a picture, work on it, and all that is shown of both.

import { pictureChoice, type Shelf } from "./controls.js";
import { Copies } from "./copies.js";
import { element } from "./elements.js";
import type { Forms } from "./forms.js";
import { HistogramView } from "./histogram.js";
import { type Failure, isPicture, type Pixel, type Rect, type Sides, type View, type Work } from "./messages.js";
import { photographNames, samples } from "./samples.js";
import { Stage } from "./stage.js";
import type { Studio } from "./studio.js";

export interface WorkbenchEvents {
  /** Another picture has been chosen. */
  source(name: string): void;
  region(rect: Rect | null): void;
  /** Which call has been refused, and for which argument; nothing when all are made. */
  refused(failure: Failure | undefined): void;
  /** Which sides the pictures have that the calls are made on. */
  sides?(inputs: readonly Sides[]): void;
}

const pixelText = (pixel: Pixel) => {
  if (!pixel) return "none";
  const [red, green, blue, alpha] = pixel;
  return `${red}, ${green}, ${blue}${alpha === 255 ? "" : `, alpha ${alpha}`}`;
};

export class Workbench {
  /** The picture, and what is told of it. */
  readonly picture: HTMLElement;
  readonly copies = new Copies();
  /** Where the picture is chosen. */
  readonly choice: HTMLElement;
  readonly shelf: Shelf;
  readonly #studio: Studio;
  readonly #forms: Forms;
  readonly #events: WorkbenchEvents;
  readonly #stage: Stage;
  readonly #histogram = new HistogramView();
  readonly #result: HTMLElement;
  readonly #facts = element("p", { class: "tarvo-facts" });
  readonly #answers = element("pre", { class: "tarvo-answers", hidden: true, tabindex: 0, "aria-label": "What the operation tells" });
  readonly #errors = element("div", { class: "tarvo-errors" });
  readonly #chosen: ReturnType<typeof pictureChoice>;
  readonly #own: string[];
  readonly #file = element("input", { type: "file", accept: "image/png,image/jpeg,.pbm,.pgm,.ppm,.pam", class: "tarvo-hidden", tabindex: -1, "aria-hidden": "true" });
  readonly #at = { x: element("input", { type: "number", min: 0, step: 1, value: 0, class: "tarvo-number" }), y: element("input", { type: "number", min: 0, step: 1, value: 0, class: "tarvo-number" }) };
  readonly #pixels = element("output", { class: "tarvo-pixels" });
  #source: View | undefined;
  #asking = false;
  #wanted = 0;

  constructor(studio: Studio, forms: Forms, own: string[], events: WorkbenchEvents) {
    this.#studio = studio;
    this.#forms = forms;
    this.#own = own;
    this.#events = events;
    this.#stage = new Stage({ region: (rect) => events.region(rect), point: (x, y) => this.#point(x, y) });
    this.shelf = { names: () => [...new Set([...forms.pictures, ...photographNames, ...own])], choose: () => this.#choose() };
    this.#chosen = pictureChoice("picture", this.shelf, (name) => events.source(name));
    this.#chosen.select.setAttribute("aria-label", "picture");
    this.#chosen.select.setAttribute("data-source", "");
    const hint = element("span", { class: "tarvo-hint" }, "or drop one here; it stays on this machine");
    this.choice = element("div", { class: "tarvo-choice" }, element("span", { class: "tarvo-name", "aria-hidden": "true" }, "picture"), this.#chosen.select, this.#chosen.button, hint, this.#file);
    this.#result = element("div", { class: "tarvo-result", "data-result": "" }, this.#stage.element, this.#answers);
    for (const field of Object.values(this.#at)) field.addEventListener("input", () => void this.#ask());
    const pixel = element(
      "div",
      { class: "tarvo-pixel", role: "group", "aria-label": "A pixel, before and after" },
      element("label", {}, "x ", this.#at.x),
      element("label", {}, "y ", this.#at.y),
      this.#pixels,
    );
    this.picture = element("div", { class: "tarvo-picture" }, this.#result, this.#errors, this.#facts, this.#histogram.element, pixel);
  }

  /** Takes files that are dropped on the element. */
  takeDrops(target: HTMLElement): void {
    for (const name of ["dragenter", "dragover"])
      target.addEventListener(name, (event) => {
        event.preventDefault();
        target.classList.add("tarvo-dropping");
      });
    target.addEventListener("dragleave", (event) => {
      if (!target.contains(event.relatedTarget as Node | null)) target.classList.remove("tarvo-dropping");
    });
    target.addEventListener("drop", async (event) => {
      event.preventDefault();
      target.classList.remove("tarvo-dropping");
      const file = event.dataTransfer?.files[0];
      const name = file && (await this.#take(file));
      if (name !== undefined) this.#events.source(name);
    });
  }

  /** Where a region may be drawn; undefined for nowhere. */
  set region(rect: Rect | null | undefined) {
    this.#stage.region = rect;
  }

  /** The picture's sides, once it is there. */
  get sides(): Sides | undefined {
    return this.#source;
  }

  /** Makes the calls, and shows what comes of them. */
  async show(work: Work): Promise<void> {
    const wanted = ++this.#wanted;
    delete this.#result.dataset.sha256;
    this.#result.setAttribute("aria-busy", "true");
    this.copies.show(this.#forms, work);
    if (work.source !== null) this.#chosen.show(work.source);
    try {
      const needed = work.calls.flatMap(({ settings }) => Object.values(settings)).filter(isPicture).map((each) => each.picture);
      await Promise.all([...new Set(needed)].map((name) => this.#load(name)));
      const source = work.source === null ? undefined : await this.#load(work.source);
      if (wanted !== this.#wanted) return;
      if (source !== this.#source || !source) this.#stage.before(source);
      this.#source = source;
    } catch (failure) {
      if (wanted === this.#wanted) this.#fail(failure as Failure);
      return;
    }
    this.#studio.run(work, {
      drawn: (view, { answers, inputs }, preview) => {
        this.#stage.after(view, preview);
        this.#histogram.show(this.#source?.histogram, view.histogram);
        this.#answers.textContent = answers.join("\n");
        this.#answers.hidden = answers.length === 0;
        this.#tell(undefined);
        const before = this.#source && (this.#source.width !== view.width || this.#source.height !== view.height) ? `${this.#source.width} × ${this.#source.height} → ` : "";
        this.#facts.textContent = preview ? "preview" : `${before}${view.width} × ${view.height} pixels`;
        if (preview) return;
        this.#events.sides?.(inputs);
        void this.#ask();
      },
      hashed: (sha256) => {
        this.#result.dataset.sha256 = sha256;
        this.#result.setAttribute("aria-busy", "false");
      },
      failed: (failure) => this.#fail(failure),
    });
  }

  /** What is seen, as a PNG file. */
  png(): Promise<Blob> {
    return this.#studio.png();
  }

  async #load(name: string): Promise<View> {
    const address = samples.get(name);
    if (address !== undefined) return this.#studio.sample(name, address);
    const known = this.#studio.known(name);
    if (known) return known;
    throw { message: `the picture ${name} is not here: choose it`, code: 0, argument: "", call: -1 } satisfies Failure;
  }

  #fail(failure: Failure): void {
    this.#result.setAttribute("aria-busy", "false");
    this.#facts.textContent = "";
    this.#tell(failure);
  }

  #tell(failure: Failure | undefined): void {
    const told = failure && element("p", { class: "tarvo-error", role: "alert", "data-error": String(failure.code) }, failure.code === 0 ? "" : element("strong", {}, `Error ${failure.code}. `), failure.message);
    this.#errors.replaceChildren(...(told ? [told] : []));
    this.#result.classList.toggle("tarvo-stale", failure !== undefined);
    this.#events.refused(failure);
  }

  // --- files ----------------------------------------------------------------------------------------------------------

  async #take(file: File): Promise<string | undefined> {
    try {
      await this.#studio.open(file.name, file);
      if (!this.#own.includes(file.name)) this.#own.push(file.name);
      return file.name;
    } catch (failure) {
      this.#tell({ ...(failure as Failure), message: `${file.name}: ${(failure as Failure).message}` });
      return undefined;
    }
  }

  #choose(): Promise<string | undefined> {
    return new Promise((done) => {
      this.#file.value = "";
      this.#file.onchange = async () => {
        const file = this.#file.files?.[0];
        done(file && (await this.#take(file)));
      };
      this.#file.click();
    });
  }

  // --- pixels ---------------------------------------------------------------------------------------------------------

  #point(x: number, y: number): void {
    this.#at.x.value = String(x);
    this.#at.y.value = String(y);
    void this.#ask();
  }

  // One question at a time; the last place is asked for in the end.
  async #ask(): Promise<void> {
    if (this.#asking) return;
    this.#asking = true;
    for (let asked = ""; asked !== this.#place(); ) {
      asked = this.#place();
      const { before, after } = await this.#studio.pixel(this.#at.x.valueAsNumber, this.#at.y.valueAsNumber);
      const told = (name: string, pixel: Pixel) =>
        element(
          "span",
          { class: "tarvo-told", [`data-pixel-${name}`]: pixel ? pixel.join() : "" },
          element("span", { class: "tarvo-swatch", style: pixel ? `background: rgba(${pixel.slice(0, 3).join()}, ${pixel[3] / 255})` : "" }),
          `${name} ${pixelText(pixel)}`,
        );
      const shown = [...(this.#source ? [told("before", before)] : []), told("after", after)];
      this.#pixels.replaceChildren(...shown);
    }
    this.#asking = false;
  }

  #place(): string {
    return `${this.#at.x.value},${this.#at.y.value}`;
  }
}
