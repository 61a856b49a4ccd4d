// The playground: a chain of calls, made by searching, changed at will, and taken along as a recipe, a link or a file.

import { controlsFor, switchBox } from "./controls.js";
import { recipeText } from "./copies.js";
import { element } from "./elements.js";
import { anyPicture, type Form, type Forms, rectangleOf } from "./forms.js";
import { Past } from "./history.js";
import { followLinks, readLink, readSteps, type Step, writeLink } from "./link.js";
import { type Failure, type Rect, type Setting, shortName, type Sides } from "./messages.js";
import { Search } from "./search.js";
import type { Studio } from "./studio.js";
import { Workbench } from "./workbench.js";

/** A step keeps its number as long as it is there, whatever becomes of it. */
interface Numbered extends Step {
  number: number;
}

interface State {
  source: string;
  steps: readonly Numbered[];
}

interface Row {
  element: HTMLElement;
  show(step: Numbered, place: number, of: number): void;
  open(open: boolean): void;
  refused(failure: Failure | undefined): void;
}

/** A name that may go on in the next line where a word in it begins. */
function breakable(name: string): Node[] {
  return name.split(/(?=[A-Z][a-z])/).flatMap((part) => [element("wbr"), new Text(part)]);
}

function saved(file: Blob, name: string): void {
  const address = URL.createObjectURL(file);
  element("a", { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 60_000);
}

export function showPlayground(place: HTMLElement, studio: Studio, forms: Forms, own: string[]): () => void {
  const root = element("section", { class: "tarvo-live tarvo-playground", "aria-label": "Playground" });
  let numbers = 0;
  const numbered = (steps: readonly Step[]): Numbered[] => steps.map((step) => ({ ...step, number: ++numbers }));
  const linked = (): State | undefined => {
    const read = readLink(forms);
    return read && { source: read.source ?? anyPicture, steps: numbered(read.steps) };
  };
  const past = new Past<State>(linked() ?? { source: anyPicture, steps: [] });
  const rows = new Map<number, Row>();
  const list = element("ol", { class: "tarvo-steps" });
  const empty = element("p", { class: "tarvo-hint" }, "Each operation that you add is made on what the one before has given.");
  let selected = -1;
  /** The sides of the pictures that the calls are made on. */
  let inputs: readonly Sides[] = [];

  const bench = new Workbench(studio, forms, own, {
    source: (source) => change({ ...past.now, source }),
    region(rect) {
      const step = past.now.steps.find(({ number }) => number === selected);
      const name = step && rectangleOf(forms.formOf(step));
      if (step && name !== undefined) set(step.number, name, rect);
    },
    refused(failure) {
      const made = past.now.steps.filter((step) => !step.off);
      for (const [number, row] of rows) row.refused(failure && made[failure.call]?.number === number ? failure : undefined);
    },
    sides(sides) {
      inputs = sides;
      showRegion();
    },
  });

  // A region is drawn on the picture to begin with, so only where the call's own has the same sides.
  function showRegion(): void {
    const made = past.now.steps.filter((step) => !step.off);
    const at = made.findIndex(({ number }) => number === selected);
    const name = at < 0 ? undefined : rectangleOf(forms.formOf(made[at]!));
    const fits = at >= 0 && inputs[at]?.width === bench.sides?.width && inputs[at]?.height === bench.sides?.height;
    bench.region = name === undefined || !fits ? undefined : (made[at]!.settings[name] as Rect | null);
  }

  // --- changes --------------------------------------------------------------------------------------------------------

  function change(state: State, what?: string): void {
    past.change(state, what);
    show();
    link();
  }
  function link(wait?: number): void {
    const { source, steps } = past.now;
    writeLink(forms, { source: source === anyPicture || own.includes(source) ? undefined : source, steps: [...steps] }, wait);
  }
  function changeSteps(steps: readonly Numbered[], what?: string): void {
    change({ ...past.now, steps }, what);
  }
  function set(number: number, name: string, setting: Setting): void {
    const changed = past.now.steps.map((step) => (step.number === number ? { ...step, settings: { ...step.settings, [name]: setting } } : step));
    changeSteps(changed, `${number} ${name}`);
  }
  function add(form: Form): void {
    const step = { number: ++numbers, operation: form.operation.name, settings: form.settings };
    selected = step.number;
    changeSteps([...past.now.steps, step]);
  }
  function move(number: number, by: number): void {
    const steps = [...past.now.steps];
    const from = steps.findIndex((step) => step.number === number);
    const [step] = steps.splice(from, 1);
    steps.splice(from + by, 0, step!);
    changeSteps(steps);
  }

  // --- the steps ------------------------------------------------------------------------------------------------------

  function rowOf(step: Numbered): Row {
    const { number } = step;
    const form = forms.formOf(step);
    const name = shortName(step.operation);
    const controls = controlsFor(form.arguments, (argument, setting) => set(number, argument, setting), bench.shelf);
    const icon = (label: string, text: string, act: () => void) => element("button", { type: "button", class: "tarvo-icon", "aria-label": `${label} ${name}`, title: label, click: act }, text);
    const turn = (on: boolean) => changeSteps(past.now.steps.map((each) => (each.number === number ? { ...each, off: !on } : each)));
    const switched = switchBox({ "aria-label": `${name}: on` }, turn);
    const up = icon("Earlier:", "↑", () => (move(number, -1), (up.disabled ? down : up).focus()));
    const down = icon("Later:", "↓", () => (move(number, 1), (down.disabled ? up : down).focus()));
    const away = icon("Remove", "×", () => {
      changeSteps(past.now.steps.filter((each) => each.number !== number));
      search.focus();
    });
    const body = element("div", { class: "tarvo-arguments" }, ...controls.elements);
    const title = element("button", { type: "button", class: "tarvo-step-name", "aria-expanded": "false" }, ...breakable(name));
    title.addEventListener("click", () => {
      selected = selected === number ? -1 : number;
      show();
    });
    const item = element("li", { class: "tarvo-step", "data-operation": step.operation }, element("div", { class: "tarvo-step-head" }, switched, title, up, down, away), body);
    return {
      element: item,
      show(now, at, of) {
        switched.checked = !now.off;
        item.classList.toggle("tarvo-off-step", now.off === true);
        up.disabled = at === 0;
        down.disabled = at === of - 1;
        controls.show(now.settings);
      },
      open(open) {
        body.hidden = !open || form.arguments.length === 0;
        title.setAttribute("aria-expanded", String(open));
      },
      refused(failure) {
        item.classList.toggle("tarvo-refused", failure !== undefined);
        controls.refused(failure?.argument);
      },
    };
  }

  function showSteps(steps: readonly Numbered[]): void {
    for (const step of steps) if (!rows.has(step.number)) rows.set(step.number, rowOf(step));
    const wanted = steps.map(({ number }) => rows.get(number)!.element);
    // What stays where it is keeps the focus.
    if (wanted.length !== list.children.length || wanted.some((each, i) => each !== list.children[i])) list.replaceChildren(...wanted);
    for (const [at, step] of steps.entries()) {
      rows.get(step.number)!.show(step, at, steps.length);
      rows.get(step.number)!.open(step.number === selected);
    }
    empty.hidden = steps.length > 0;
  }

  function show(): void {
    const { source, steps } = past.now;
    showSteps(steps);
    showRegion();
    undo.disabled = !past.canUndo;
    redo.disabled = !past.canRedo;
    void bench.show({ source, calls: steps.filter((step) => !step.off).map(({ operation, settings }) => ({ operation, settings })) });
  }

  // --- what is taken along --------------------------------------------------------------------------------------------

  const said = element("span", { class: "tarvo-said", role: "status" });
  const button = (text: string, act: () => void) => element("button", { type: "button", class: "tarvo-button", click: act }, text);
  const back = (go: () => void) => () => {
    go();
    show();
    link();
  };
  const undo = button("Undo", back(() => past.undo()));
  const redo = button("Redo", back(() => past.redo()));
  const recipeFile = element("input", { type: "file", accept: ".txt,text/plain", class: "tarvo-hidden", tabindex: -1, "aria-hidden": "true" });
  recipeFile.addEventListener("change", async () => {
    const text = await recipeFile.files?.[0]?.text();
    recipeFile.value = "";
    const read = text === undefined ? undefined : readSteps(forms, text);
    if (read) changeSteps(numbered(read.steps));
    said.textContent = read ? "" : "That is no recipe of calls with plain values";
  });
  const actions = element(
    "div",
    { class: "tarvo-actions", role: "group", "aria-label": "The chain" },
    undo,
    redo,
    button("Save recipe", () => saved(new Blob([recipeText(forms, past.now.source, past.now.steps)], { type: "text/plain" }), "recipe.txt")),
    button("Open recipe", () => recipeFile.click()),
    button("Save picture", async () => {
      const file = await bench.png();
      if (file.size > 0) saved(file, "out.png");
      said.textContent = file.size > 0 ? "" : "There is no result to be saved";
    }),
    button("Copy link", async () => {
      link(0);
      await new Promise((done) => setTimeout(done));
      said.textContent = await navigator.clipboard.writeText(location.href).then(
        () => "the link is on the clipboard",
        () => "the link is in the address bar",
      );
    }),
    said,
    recipeFile,
  );
  const search = new Search(forms, add);

  root.addEventListener("keydown", (event) => {
    const typing = event.target instanceof HTMLInputElement && ["text", "number"].includes(event.target.type);
    if (typing || !(event.ctrlKey || event.metaKey) || event.key.toLowerCase() !== "z") return;
    event.preventDefault();
    back(() => (event.shiftKey ? past.redo() : past.undo()))();
  });
  root.append(
    bench.choice,
    actions,
    element("div", { class: "tarvo-two" }, bench.picture, element("div", { class: "tarvo-side-panel" }, search.element, empty, list)),
    bench.copies.element,
  );
  bench.takeDrops(root);
  place.replaceChildren(root);

  const followLink = () => {
    const state = linked();
    if (!state) return;
    past.change(state);
    show();
  };
  show();
  return followLinks(followLink);
}
