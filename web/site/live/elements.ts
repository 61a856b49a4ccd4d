// Elements with their attributes and children in one expression.

type Attributes = Record<string, string | number | boolean | ((event: Event) => void)>;
type Child = Node | string;

export function element<K extends keyof HTMLElementTagNameMap>(tag: K, attributes: Attributes = {}, ...children: Child[]): HTMLElementTagNameMap[K] {
  const made = document.createElement(tag);
  give(made, attributes);
  made.append(...children);
  return made;
}

export function svg<K extends keyof SVGElementTagNameMap>(tag: K, attributes: Attributes = {}, ...children: Child[]): SVGElementTagNameMap[K] {
  const made = document.createElementNS("http://www.w3.org/2000/svg", tag);
  give(made, attributes);
  made.append(...children);
  return made;
}

function give(made: Element, attributes: Attributes): void {
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") made.addEventListener(name, value);
    else if (value === true) made.setAttribute(name, "");
    else if (value !== false) made.setAttribute(name, String(value));
  }
}
