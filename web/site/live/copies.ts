// Work as people write it elsewhere.

import { element } from "./elements.js";
import type { Form, Forms } from "./forms.js";
import { type Call, isPicture, type Setting, shortName, type Work } from "./messages.js";
import { numberText } from "./recipe.js";

const languages = { command: "Command", python: "Python", c: "C", cpp: "C++" } as const;
type Language = keyof typeof languages;

const quoted = (text: string) => JSON.stringify(text);
const inShell = (text: string) => `'${text.replaceAll("'", "'\\''")}'`;
const shellWord = (text: string) => (/^[\w./~-]+$/.test(text) ? text : inShell(text));

const givesPicture = ({ operation }: Form) => operation.result === "picture" || operation.changes_self;
const isOnString = (form: Form) => form.operation.self === "string";
const reads = (work: Work) => work.calls.some(({ settings }) => Object.values(settings).some(isPicture));

/** The names of what comes back; the operation's own stands for what it returns. */
function answersOf(form: Form): (string | null)[] {
  const returned = form.operation.result === "none" ? [] : [null];
  return [...returned, ...form.operation.arguments.filter((each) => each.by_ref).map((each) => each.name)];
}

/** A recipe: what `tarvo` reads behind @. What is off is a comment. */
export function recipeText(forms: Forms, source: string | null, steps: readonly (Call & { off?: boolean })[]): string {
  const input = source === null ? "" : `${shellWord(source)} `;
  const lines = steps.map((step) => `${step.off ? "# " : ""}${forms.text(step)}`);
  return `${[`# tarvo apply ${input}@recipe.txt -o out.png`, ...lines].join("\n")}\n`;
}

function command(forms: Forms, { source, calls }: Work): string {
  const on = source === null ? "" : ` ${shellWord(source)}`;
  if (calls.some((call) => isOnString(forms.formOf(call)))) return `tarvo convert${on} -o picture.trv\ntarvo convert picture.trv -o out.png`;
  const texts = calls.map((call) => ` ${inShell(forms.text(call))}`).join("");
  return `tarvo apply${on}${texts}${calls.some((call) => givesPicture(forms.formOf(call))) ? " -o out.png" : ""}`;
}

function pythonValue(setting: Setting, type: string): string {
  if (setting === null) return "None";
  if (typeof setting === "boolean") return setting ? "True" : "False";
  if (typeof setting === "string") return quoted(setting);
  if (typeof setting === "number") return numberText(setting, type);
  if (Array.isArray(setting)) return JSON.stringify(setting).replaceAll(",", ", ");
  if ("picture" in setting) return `tarvo.open(${quoted(setting.picture)})`;
  return `(${setting.left}, ${setting.top}, ${setting.width}, ${setting.height})`;
}

// AdjustRGB_InPlace: adjust_rgb_in_place.
function snakeCase(name: string): string {
  return shortName(name)
    .replace(/([a-z0-9])([A-Z])/g, "$1_$2")
    .replace(/([A-Z])([A-Z][a-z])/g, "$1_$2")
    .toLowerCase();
}

function python(forms: Forms, { source, calls }: Work): string {
  const lines = ["import tarvo", ""];
  if (source !== null) lines.push(`picture = tarvo.open(${quoted(source)})`);
  let made = false;
  for (const call of calls) {
    const form = forms.formOf(call);
    const given = form.arguments.map(({ name, type }) => `${name}=${pythonValue(call.settings[name] ?? null, type)}`);
    const on = form.operation.self === "picture" ? "picture" : "tarvo";
    const text = `${on}.${snakeCase(call.operation)}(${isOnString(form) ? "picture.convert_to_string()" : given.join(", ")})`;
    lines.push(givesPicture(form) ? `picture = ${text}` : `print(${text})`);
    made ||= givesPicture(form);
  }
  if (made) lines.push('picture.save("out.png")');
  return `${lines.join("\n")}\n`;
}

function c(forms: Forms, work: Work): string {
  const made = work.calls.map((call) => forms.formOf(call));
  const onString = made.some(isOnString);
  const calls = onString ? [] : made;
  const source = onString ? "picture.trv" : work.source;
  const options = reads(work) ? "&options" : "NULL";
  const lines = ["tarvo_picture* picture = NULL;"];
  if (calls.length > 0) lines.push("tarvo_result* result = NULL;");
  if (reads(work)) lines.push("tarvo_call_options options = {0};", "options.size = sizeof options;", "options.read_files = 1;");
  if (source !== null) lines.push(`if (tarvo_picture_open(${quoted(source)}, NULL, &picture, NULL) != TARVO_OK) return 1;`);
  for (const [i, form] of calls.entries()) {
    lines.push("", `if (tarvo_apply(${quoted(forms.text(work.calls[i]!))}, picture, ${options}, &result, NULL) != TARVO_OK) return 1;`);
    if (givesPicture(form)) lines.push("tarvo_picture_release(picture);", "picture = tarvo_picture_retain(tarvo_result_value(result)->as.picture);");
    else
      for (const name of answersOf(form)) {
        const told = name ?? shortName(form.operation.name);
        lines.push(`char* ${told} = tarvo_result_text(result, ${name === null ? "NULL" : quoted(name)});`, `printf("${told} = %s\\n", ${told});`, `tarvo_free(${told});`);
      }
    lines.push("tarvo_result_release(result);");
  }
  lines.push("");
  if (onString || made.some(givesPicture)) lines.push('if (tarvo_picture_save(picture, "out.png", NULL, NULL) != TARVO_OK) return 1;');
  lines.push("tarvo_picture_release(picture);", "return 0;");
  const body = lines.map((line) => (line === "" ? "" : `    ${line}`)).join("\n");
  const answers = calls.some((form) => !givesPicture(form));
  return `${answers ? "#include <stdio.h>\n" : ""}#include <tarvo.h>\n\nint main(void) {\n${body}\n}\n`;
}

function cpp(forms: Forms, work: Work): string {
  const made = work.calls.map((call) => forms.formOf(call));
  const onString = made.some(isOnString);
  const source = onString ? "picture.trv" : work.source;
  const answers = !onString && made.some((form) => !givesPicture(form));
  const lines = [source === null ? "tarvo::Picture picture;" : `tarvo::Picture picture = tarvo::Picture::open(${quoted(source)});`];
  if (reads(work)) lines.push("tarvo::CallOptions options;", "options.read_files = true;");
  for (const [i, form] of onString ? [] : [...made.entries()]) {
    const call = `tarvo::apply(${quoted(forms.text(work.calls[i]!))}, picture${reads(work) ? ", options" : ""})`;
    if (givesPicture(form)) lines.push(`picture = ${call}.picture();`);
    else {
      lines.push("{", `    const tarvo::Result result = ${call};`);
      for (const name of answersOf(form)) lines.push(`    std::cout << "${name ?? shortName(form.operation.name)} = " << result.text(${name === null ? "" : quoted(name)}) << '\\n';`);
      lines.push("}");
    }
  }
  if (onString || made.some(givesPicture)) lines.push('picture.save("out.png");');
  return `${answers ? "#include <iostream>\n" : ""}#include <tarvo.hpp>\n\nint main() {\n${lines.map((line) => `    ${line}`).join("\n")}\n}\n`;
}

const writers: Record<Language, (forms: Forms, work: Work) => string> = { command, python, c, cpp };

/** A line for each language; pressing it copies the text, and shows all of it. */
export class Copies {
  readonly element: HTMLElement;
  readonly #blocks: [Language, HTMLButtonElement][];
  readonly #said = element("span", { class: "tarvo-said", role: "status" });

  constructor() {
    this.#blocks = (Object.keys(languages) as Language[]).map((language) => {
      const block = element("button", { type: "button", "data-copy": language, id: `tarvo-copy-${language}`, "aria-labelledby": `tarvo-as-${language} tarvo-copy-${language}` });
      block.addEventListener("click", () => void this.#copy(language, block));
      return [language, block];
    });
    const label = (language: Language) => element("span", { class: "tarvo-language", id: `tarvo-as-${language}` }, element("span", { class: "tarvo-unseen" }, "Copy as "), languages[language]);
    const rows = this.#blocks.map(([language, block]) => element("div", { class: "tarvo-copy" }, label(language), block));
    this.element = element("div", { class: "tarvo-copies" }, element("p", { class: "tarvo-title" }, "Copy as ", this.#said), ...rows);
  }

  show(forms: Forms, work: Work): void {
    for (const [language, block] of this.#blocks) block.textContent = writers[language](forms, work);
    this.#said.textContent = "";
  }

  async #copy(language: Language, block: HTMLButtonElement): Promise<void> {
    for (const [, each] of this.#blocks) each.classList.toggle("tarvo-open", each === block);
    try {
      await navigator.clipboard.writeText(block.textContent ?? "");
      this.#said.textContent = `${languages[language]} is on the clipboard`;
    } catch {
      getSelection()?.selectAllChildren(block);
      this.#said.textContent = "the browser keeps its clipboard to itself: the text is selected";
    }
  }
}
