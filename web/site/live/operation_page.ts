// The live part of an operation's page: work of one call.

import { type Controls, controlsFor } from "./controls.js";
import { element } from "./elements.js";
import { type Form, type Forms, rectangleOf } from "./forms.js";
import { followLinks, readLink, writeLink } from "./link.js";
import { type Rect, type Setting, shortName } from "./messages.js";
import type { Studio } from "./studio.js";
import { Workbench } from "./workbench.js";

/** Puts the operations of those names into the place, one at a time. Returns what ends it. */
export function showOperations(place: HTMLElement, names: readonly string[], studio: Studio, forms: Forms, own: string[]): () => void {
  const all = names.flatMap((name) => forms.of(name));
  const root = element("section", { class: "tarvo-live", "aria-label": "Try it" });
  place.replaceChildren(root);
  if (all.length === 0) {
    root.dataset.operation = names[0] ?? "";
    root.append(element("p", { class: "tarvo-hint" }, "A page has nothing to call this on."));
    return () => {};
  }

  let form: Form = all[0]!;
  let settings: Record<string, Setting> = {};
  let source: string | null = null;
  let controls: Controls | undefined;
  const panel = element("div", { class: "tarvo-arguments" });
  const rectangle = () => rectangleOf(form);

  const bench = new Workbench(studio, forms, own, {
    source(name) {
      source = name;
      change();
    },
    region(rect) {
      const name = rectangle();
      if (name !== undefined) set(name, rect);
    },
    refused(failure) {
      controls?.refused(failure?.argument);
    },
  });

  const set = (name: string, setting: Setting) => {
    settings = { ...settings, [name]: setting };
    change();
  };
  const change = () => {
    show();
    const usual = source === form.source || source === null || own.includes(source);
    writeLink(forms, { source: usual ? undefined : source!, steps: [{ operation: form.operation.name, settings }] });
  };
  const show = () => {
    controls?.show(settings);
    const name = rectangle();
    bench.region = name === undefined ? undefined : (settings[name] as Rect | null);
    void bench.show({ source, calls: [{ operation: form.operation.name, settings }] });
  };

  const choose = (chosen: Form, given = chosen.settings, on = chosen.source) => {
    form = chosen;
    settings = { ...given };
    // A picture of one's own stays from form to form.
    source = form.source === null ? null : source !== null && own.includes(source) ? source : on;
    root.dataset.operation = form.operation.name;
    controls = controlsFor(form.arguments, set, bench.shelf);
    panel.replaceChildren(...controls.elements);
    bench.choice.hidden = form.source === null;
    which.value = String(all.indexOf(form));
  };

  const which = element("select", { class: "tarvo-which", "aria-label": "Which call" });
  which.append(...all.map((each, i) => element("option", { value: String(i) }, `${shortName(each.operation.name)}(${each.arguments.map(({ name }) => name).join(", ")})`)));
  which.addEventListener("change", () => {
    choose(all[Number(which.value)]!);
    change();
  });
  const reset = element("button", { type: "button", class: "tarvo-button tarvo-reset" }, "As it was");
  reset.addEventListener("click", () => {
    source = null;
    choose(form);
    change();
  });

  const side = element("div", { class: "tarvo-side-panel" }, ...(all.length > 1 ? [which] : []), panel, reset);
  root.append(bench.choice, element("div", { class: "tarvo-two" }, bench.picture, side), bench.copies.element);
  bench.takeDrops(root);

  const followLink = () => {
    const linked = readLink(forms);
    const step = linked?.steps[0];
    const found = step && all.find((each) => each === forms.formOf(step));
    if (found) choose(found, step.settings, linked.source ?? found.source);
    else if (!controls) choose(form);
    else return;
    show();
  };
  followLink();
  return followLinks(followLink);
}
