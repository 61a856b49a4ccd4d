// The live parts of the site, for whatever puts pages together: an element, and what is to be in it.

import { element } from "./elements.js";
import { Forms } from "./forms.js";
import type { Failure } from "./messages.js";
import { showOperations } from "./operation_page.js";
import { showPlayground } from "./playground.js";
import { Studio } from "./studio.js";

// Worker, pictures and files stay while people go from page to page.
let studio: Studio | undefined;
let forms: Promise<Forms> | undefined;
const own: string[] = [];

/** Makes the place live, with operations or, without names, with the playground. Returns what ends it. */
export async function mount(place: HTMLElement, names: readonly string[]): Promise<() => void> {
  studio ??= new Studio();
  forms ??= studio.description.then((description) => new Forms(description));
  try {
    const known = await forms;
    return names.length > 0 ? showOperations(place, names, studio, known, own) : showPlayground(place, studio, known, own);
  } catch (failure) {
    place.replaceChildren(element("p", { class: "tarvo-error", role: "alert", "data-error": "0" }, `This page cannot be live: ${(failure as Failure).message}`));
    return () => {};
  }
}
