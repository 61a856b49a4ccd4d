// A field that finds operations by their names, by the words that people look for them by, and by what is told of them.

import { element } from "./elements.js";
import type { Form, Forms } from "./forms.js";
import { shortName } from "./messages.js";

const most = 8;

/** How well an operation fits what was typed: 0 for not at all. */
export function fitOf({ operation }: Form, typed: readonly string[]): number {
  const name = shortName(operation.name).toLowerCase();
  const fits = typed.map((part): number => {
    if (name === part) return 8;
    if (name.startsWith(part)) return 5;
    if (operation.words.some((word) => word === part)) return 4;
    if (name.includes(part) || operation.words.some((word) => word.startsWith(part))) return 3;
    return operation.summary.toLowerCase().includes(part) ? 1 : 0;
  });
  return fits.includes(0) ? 0 : fits.reduce((one, other) => one + other, 0);
}

export class Search {
  readonly element: HTMLElement;
  readonly #forms: readonly Form[];
  readonly #chosen: (form: Form) => void;
  readonly #field: HTMLInputElement;
  readonly #list: HTMLElement;
  #found: Form[] = [];
  #active = 0;

  constructor(forms: Forms, chosen: (form: Form) => void) {
    // What is called on something else than a picture has no place in a chain.
    this.#forms = forms.all().filter(({ operation }) => ["picture", "none"].includes(operation.self) && operation.family !== "errors");
    this.#chosen = chosen;
    this.#list = element("div", { id: "tarvo-found", class: "tarvo-found", role: "listbox", "aria-label": "Operations", hidden: true });
    this.#field = element("input", {
      type: "text",
      role: "combobox",
      placeholder: "Add an operation: blur, crop, brighten…",
      "aria-label": "Add an operation",
      "aria-autocomplete": "list",
      "aria-controls": "tarvo-found",
      "aria-expanded": "false",
      autocomplete: "off",
      input: () => this.#find(),
      focus: () => this.#find(),
      blur: () => this.#close(),
      keydown: (event) => this.#key(event as KeyboardEvent),
    });
    this.element = element("div", { class: "tarvo-search" }, this.#field, this.#list);
  }

  focus(): void {
    this.#field.focus();
    this.#close();
  }

  #find(): void {
    const typed = this.#field.value.toLowerCase().split(/\s+/).filter(Boolean);
    const fits = this.#forms.map((form) => [form, typed.length === 0 ? 1 : fitOf(form, typed)] as const).filter(([, fit]) => fit > 0);
    this.#found = fits.sort(([, one], [, other]) => other - one).map(([form]) => form);
    if (typed.length > 0) this.#found.splice(most);
    this.#active = 0;
    this.#list.replaceChildren(...this.#found.map((form, i) => this.#option(form, i)));
    this.#list.hidden = this.#found.length === 0;
    this.#mark();
  }

  #option(form: Form, i: number): HTMLElement {
    const several = this.#found.filter((each) => each.operation === form.operation).length > 1;
    const told = several ? `with ${form.arguments.map((each) => each.name).join(", ")}` : form.operation.summary;
    return element(
      "div",
      // Pressing it must not take the focus from the field.
      { role: "option", id: `tarvo-found-${i}`, pointerdown: (event) => event.preventDefault(), click: () => this.#choose(i) },
      element("strong", {}, shortName(form.operation.name)),
      element("span", {}, ` ${told}`),
    );
  }

  #mark(): void {
    for (const [i, option] of [...this.#list.children].entries()) option.setAttribute("aria-selected", String(i === this.#active));
    const open = !this.#list.hidden;
    this.#field.setAttribute("aria-expanded", String(open));
    if (!open) return this.#field.removeAttribute("aria-activedescendant");
    this.#field.setAttribute("aria-activedescendant", `tarvo-found-${this.#active}`);
    this.#list.children[this.#active]?.scrollIntoView({ block: "nearest" });
  }

  #close(): void {
    this.#list.hidden = true;
    this.#mark();
  }

  #choose(i: number): void {
    const form = this.#found[i];
    if (!form) return;
    this.#field.value = "";
    this.#close();
    this.#chosen(form);
  }

  #key(event: KeyboardEvent): void {
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (event.key === "Enter" && !this.#list.hidden) this.#choose(this.#active);
    else if (event.key === "Escape") this.#close();
    else if (step) {
      if (this.#list.hidden) this.#find();
      else this.#active = (this.#active + step + this.#found.length) % this.#found.length;
      this.#mark();
    } else return;
    event.preventDefault();
  }
}
