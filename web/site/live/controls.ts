// A control for each kind of argument, made of what is described of it.

import type { DescribedArgument } from "@tarvo/web";

import { element } from "./elements.js";
import type { Rect, Setting, Settings } from "./messages.js";

interface Control {
  element: HTMLElement;
  show(setting: Setting, all: Settings): void;
  /** Whether the operation refuses it. */
  refused(refused: boolean): void;
}

/** What a page has of pictures to choose from. */
export interface Shelf {
  names(): readonly string[];
  /** Asks for a file, and gives the name of its picture; nothing where it is none. */
  choose(): Promise<string | undefined>;
}

type Changed = (setting: Setting) => void;

const sides = ["left", "top", "width", "height"] as const;

let made = 0;
const newId = () => `tarvo-${++made}`;

function row(label: HTMLElement, ...controls: HTMLElement[]): HTMLElement {
  return element("div", { class: "tarvo-row" }, label, element("div", { class: "tarvo-controls" }, ...controls));
}

const unitOf = (about: DescribedArgument) => (about.unit && about.unit !== "pixels" ? element("span", { class: "tarvo-unit" }, ` ${about.unit}`) : "");

/** A row whose label names the control. */
function labelled(about: DescribedArgument, target: HTMLElement, ...others: HTMLElement[]): HTMLElement {
  target.id = newId();
  target.setAttribute("data-argument", about.name);
  target.title = about.text;
  return row(element("label", { class: "tarvo-name", for: target.id }, about.name, unitOf(about)), target, ...others);
}

/** A row whose label names a group of controls. */
function grouped(about: DescribedArgument, group: HTMLElement): HTMLElement {
  const label = element("span", { class: "tarvo-name", id: newId() }, about.name, unitOf(about));
  group.setAttribute("data-argument", about.name);
  group.setAttribute("role", "group");
  group.setAttribute("aria-labelledby", label.id);
  group.title = about.text;
  return row(label, group);
}

const marker = (...targets: HTMLElement[]) => (refused: boolean) => {
  for (const target of targets) target.setAttribute("aria-invalid", String(refused));
};

/** A switch, which arrows turn as the space bar does. */
export function switchBox(attributes: Record<string, string>, changed: (on: boolean) => void): HTMLInputElement {
  const box = element("input", { type: "checkbox", role: "switch", class: "tarvo-switch", ...attributes });
  box.addEventListener("change", () => changed(box.checked));
  box.addEventListener("keydown", ({ key }) => {
    const on = { ArrowRight: true, ArrowLeft: false }[key];
    if (on !== undefined && on !== box.checked) box.click();
  });
  return box;
}

/** Lets the arrows change the part of a text at the caret: what `stepped` makes of it. */
function steppedByArrows(field: HTMLInputElement, part: RegExp, stepped: (text: string, by: number) => string): void {
  field.addEventListener("keydown", (event) => {
    const by = { ArrowUp: 1, ArrowDown: -1 }[event.key];
    if (by === undefined) return;
    event.preventDefault();
    const caret = field.selectionStart ?? 0;
    const found = [...field.value.matchAll(part)].find((each) => caret <= each.index + each[0].length);
    if (!found) return;
    const text = stepped(found[0], by);
    field.value = field.value.slice(0, found.index) + text + field.value.slice(found.index + found[0].length);
    field.setSelectionRange(found.index, found.index + text.length);
    field.dispatchEvent(new Event("input"));
  });
}

/** The ends of a slider and its step: of the range that people use. The field beside it takes everything. */
function endsOf(about: DescribedArgument, value: number, all: Settings): { low: number; high: number; step: number } {
  const real = about.type === "double";
  const step = (range: number) => (!real || range > 100 ? 1 : range > 10 ? 0.1 : 0.01);
  const bound = (given: unknown): number | undefined => {
    if (typeof given === "number") return given;
    // So many times another argument.
    const { factor, argument } = (given ?? {}) as { factor?: number; argument?: string };
    const other = argument === undefined ? undefined : all[argument];
    return factor !== undefined && typeof other === "number" ? factor * other : undefined;
  };
  const [lowest, highest] = [bound(about.minimum), bound(about.maximum)];
  const usual = about.unit === "degrees" ? 360 : real ? 4 : about.unit === "pixels" ? Math.max(40, 4 * Math.abs(value)) : 255;
  const most = Math.max(usual, 2 * Math.abs(value));
  const high = Math.min(highest ?? most, most);
  const low = Math.max(lowest ?? -most, -most);
  const by = step(high - low);
  return { low: about.exclusiveMinimum && low === lowest ? low + by : low, high: about.exclusiveMaximum && high === highest ? high - by : high, step: by };
}

function number(about: DescribedArgument, changed: Changed): Control {
  const slider = element("input", { type: "range" });
  const field = element("input", { type: "number", step: about.type === "double" ? "any" : 1, class: "tarvo-number", "aria-label": `${about.name}, as a number` });
  slider.addEventListener("input", () => {
    field.value = slider.value;
    changed(slider.valueAsNumber);
  });
  field.addEventListener("input", () => {
    if (!Number.isFinite(field.valueAsNumber)) return;
    changed(about.type === "double" ? field.valueAsNumber : Math.trunc(field.valueAsNumber));
  });
  let ends: ReturnType<typeof endsOf> | undefined;
  return {
    element: labelled(about, slider, field),
    refused: marker(slider, field),
    show(setting, all) {
      const value = setting as number;
      // They stay while the value stays between them, so that a slider does not run from under the hand.
      if (!ends || value < ends.low || value > ends.high || typeof about.maximum === "object") ends = endsOf(about, value, all);
      Object.assign(slider, { min: String(ends.low), max: String(ends.high), step: String(ends.step) });
      slider.value = String(value);
      if (document.activeElement !== field) field.value = String(value);
    },
  };
}

function boolean(about: DescribedArgument, changed: Changed): Control {
  const box = switchBox({}, changed);
  return { element: labelled(about, box), refused: marker(box), show: (setting) => void (box.checked = setting === true) };
}

function color(about: DescribedArgument, changed: Changed): Control {
  const well = element("input", { type: "color" });
  const field = element("input", { type: "text", class: "tarvo-hex", "aria-label": `${about.name}, in hexadecimal digits`, spellcheck: "false" });
  well.addEventListener("input", () => {
    field.value = well.value;
    changed(well.value);
  });
  field.addEventListener("input", () => {
    const digits = /^(?:&c|#)?([0-9a-f]{6})$/i.exec(field.value.trim())?.[1]?.toLowerCase();
    field.setAttribute("aria-invalid", String(!digits));
    if (!digits) return;
    well.value = `#${digits}`;
    changed(well.value);
  });
  const level = (text: string, by: number) => Math.min(255, Math.max(0, Number.parseInt(text, 16) + by)).toString(16).padStart(2, "0");
  steppedByArrows(field, /[0-9a-f]{2}/gi, level);
  return {
    element: labelled(about, well, field),
    refused: marker(well, field),
    show(setting) {
      well.value = setting as string;
      if (document.activeElement !== field) field.value = well.value;
    },
  };
}

/** Four numbers, or all of the picture; drawn on the picture besides. */
function rectangle(about: DescribedArgument, changed: Changed): Control {
  const whole = switchBox({ "aria-label": `${about.name}: all of the picture` }, (on) => (on ? changed(null) : tell()));
  const fields = sides.map((side) => element("input", { type: "number", step: 1, class: "tarvo-number" , "aria-label": `${about.name}: ${side}`, placeholder: side }));
  const tell = () => {
    const values = fields.map((field) => Math.trunc(field.valueAsNumber) || 0);
    changed(Object.fromEntries(sides.map((side, i) => [side, values[i]!])) as unknown as Rect);
  };
  for (const field of fields) field.addEventListener("input", tell);
  const optional = about.default === "nil" ? [element("label", { class: "tarvo-all-of-it" }, whole, "all of the picture")] : [];
  const named = fields.map((field, i) => element("span", { class: "tarvo-side" }, element("span", { "aria-hidden": "true" }, sides[i]!), field));
  const group = element("div", { class: "tarvo-group" }, ...optional, element("div", { class: "tarvo-sides" }, ...named));
  return {
    element: grouped(about, group),
    refused: marker(...fields),
    show(setting) {
      const rect = setting as Rect | null;
      whole.checked = rect === null;
      for (const [i, side] of sides.entries()) {
        if (rect && document.activeElement !== fields[i]) fields[i]!.value = String(rect[side]);
        if (!rect && fields[i]!.value === "") fields[i]!.value = String({ left: 20, top: 20, width: 120, height: 80 }[side]);
      }
      group.classList.toggle("tarvo-off", rect === null);
      for (const field of fields) field.disabled = rect === null;
    },
  };
}

function matrix(about: DescribedArgument, changed: Changed): Control {
  const rows = [0, 1, 2];
  const name = (i: number, j: number) => `${about.name}: row ${i + 1}, column ${j + 1}`;
  const fields = rows.map((i) => rows.map((j) => element("input", { type: "number", step: 0.05, class: "tarvo-number", "aria-label": name(i, j) })));
  const tell = () => {
    const values = fields.map((each) => each.map((field) => field.valueAsNumber));
    if (values.flat().every(Number.isFinite)) changed(values);
  };
  for (const field of fields.flat()) field.addEventListener("input", tell);
  const group = element("div", { class: "tarvo-matrix" }, ...fields.flat());
  return {
    element: grouped(about, group),
    refused: marker(...fields.flat()),
    show(setting) {
      const values = (setting ?? [[1, 0, 0], [0, 1, 0], [0, 0, 1]]) as number[][];
      for (const i of rows) for (const j of rows) if (document.activeElement !== fields[i]![j]) fields[i]![j]!.value = String(values[i]![j]!);
    },
  };
}

function weights(about: DescribedArgument, changed: Changed): Control {
  const field = element("input", { type: "text", inputmode: "decimal", placeholder: "none" });
  field.addEventListener("input", () => {
    const list = field.value.split(/[\s,;]+/).filter(Boolean).map(Number);
    const numbers = list.every(Number.isFinite);
    field.setAttribute("aria-invalid", String(!numbers));
    if (numbers) changed(list.length === 0 ? null : list);
  });
  steppedByArrows(field, /-?[\d.]+/g, (text, by) => String(Number(text) + by));
  return {
    element: labelled(about, field),
    refused: marker(field),
    show(setting) {
      if (document.activeElement !== field) field.value = ((setting ?? []) as number[]).join(", ");
    },
  };
}

const fileName = (name: string) => name.replace(/^.*\//, "");

/** A choice of pictures, and a button for a file. */
export function pictureChoice(label: string, shelf: Shelf, changed: (name: string) => void): { select: HTMLSelectElement; button: HTMLButtonElement; show(name: string): void } {
  const select = element("select", { change: () => changed(select.value) });
  const button = element("button", { type: "button", class: "tarvo-button", "aria-label": `${label}: a file of yours` }, "File…");
  button.addEventListener("click", async () => {
    const name = await shelf.choose();
    if (name !== undefined) changed(name);
  });
  return {
    select,
    button,
    show(name) {
      const groups = new Map<string, HTMLOptionElement[]>();
      for (const each of new Set([...shelf.names(), name])) {
        const group = each.startsWith("docs/") ? "small" : each.startsWith("examples/") ? "photographs" : "yours";
        groups.set(group, [...(groups.get(group) ?? []), element("option", { value: each }, fileName(each))]);
      }
      select.replaceChildren(...[...groups].map(([group, options]) => element("optgroup", { label: group }, ...options)));
      select.value = name;
    },
  };
}

function picture(about: DescribedArgument, changed: Changed, shelf: Shelf): Control {
  const choice = pictureChoice(about.name, shelf, (name) => changed({ picture: name }));
  return {
    element: labelled(about, choice.select, choice.button),
    refused: marker(choice.select),
    show: (setting) => choice.show((setting as { picture: string } | null)?.picture ?? ""),
  };
}

function controlFor(about: DescribedArgument, changed: Changed, shelf: Shelf): Control {
  switch (about.type) {
    case "boolean":
      return boolean(about, changed);
    case "color":
      return color(about, changed);
    case "TRV_Rectangle":
      return rectangle(about, changed);
    case "TRV_ColorMatrix":
      return matrix(about, changed);
    case "TRV_Convolution":
      return weights(about, changed);
    case "picture":
      return picture(about, changed, shelf);
    default:
      return number(about, changed);
  }
}

/** The controls of a call. */
export interface Controls {
  elements: HTMLElement[];
  show(settings: Settings): void;
  /** Marks the argument that the operation refuses; none when it is undefined. */
  refused(argument: string | undefined): void;
}

export function controlsFor(asked: readonly DescribedArgument[], changed: (name: string, setting: Setting) => void, shelf: Shelf): Controls {
  const controls = asked.map((about) => ({ name: about.name, ...controlFor(about, (setting) => changed(about.name, setting), shelf) }));
  return {
    elements: controls.map((each) => each.element),
    show(settings) {
      for (const each of controls) each.show(settings[each.name]!, settings);
    },
    refused(argument) {
      for (const each of controls) each.refused(each.name === argument);
    },
  };
}
