// What is set, in the page's link: a picture's name, where it is not the usual one, and calls, a line each, as in a recipe.
// Lines of calls that are off begin with "#".

import type { Forms } from "./forms.js";
import type { Call } from "./messages.js";

export interface Step extends Call {
  off?: boolean;
}

export interface Linked {
  source: string | undefined;
  steps: Step[];
}

// Browsers allow no more than some hundred changes in half a minute.
const pause = 300;
let timer: number | undefined;

export function writeLink(forms: Forms, { source, steps }: Linked, wait = pause): void {
  const lines = steps.map((step) => `${step.off ? "#" : ""}${forms.text(step).replaceAll(/\s*([,=])\s+/g, "$1")}`);
  const text = [...(source === undefined ? [] : [source]), ...lines].join("\n");
  window.clearTimeout(timer);
  timer = window.setTimeout(() => history.replaceState(history.state, "", `#${encodeURI(text).replaceAll("#", "%23")}`), wait);
}

/** Calls `follow` whenever another link is followed within the page. Returns what ends it, and forgets what was to be
 *  written: the page is left. */
export function followLinks(follow: () => void): () => void {
  window.addEventListener("hashchange", follow);
  return () => {
    window.removeEventListener("hashchange", follow);
    window.clearTimeout(timer);
  };
}

/** Undefined where the link is of something else, such as a heading. */
export function readLink(forms: Forms): Linked | undefined {
  let text;
  try {
    text = decodeURIComponent(location.hash.slice(1));
  } catch {
    return undefined;
  }
  return readSteps(forms, text);
}

/** What a link or a recipe has of calls. */
export function readSteps(forms: Forms, text: string): Linked | undefined {
  const lines = text.split("\n").map((line) => line.trim()).filter(Boolean);
  const steps: Step[] = [];
  let source: string | undefined;
  for (const [i, line] of lines.entries()) {
    const off = line.startsWith("#");
    const call = forms.read(off ? line.slice(1) : line);
    if (call) steps.push(off ? { ...call, off } : call);
    else if (i === 0 && !off && /\.\w+$/.test(line)) source = line;
    else if (!off) return undefined;
  }
  return steps.length > 0 || source !== undefined ? { source, steps } : undefined;
}
