// What a page can ask of operations: the forms that are called on a picture or on nothing, with settings to begin with.
// All of it is made of the description.

import type { DescribedArgument, DescribedOperation, Description } from "@tarvo/web";

import { type Call, isPicture, type Setting, type Settings, shortName } from "./messages.js";
import { callText, readCall, readSetting, type WrittenCall } from "./recipe.js";

export interface Form {
  operation: DescribedOperation;
  arguments: DescribedArgument[];
  /** Those of the example, where it shows this form, or likely ones. */
  settings: Settings;
  /** The picture that it is shown on; null for an operation that needs none. */
  source: string | null;
}

interface Example {
  input: string | null;
  call: string;
}

/** The picture to begin with where nothing tells of another. */
export const anyPicture = "docs/pictures/coffee.png";
const anyMask = "docs/pictures/fade.png";

// What only programs with a host of their own need.
const untold = new Set(["yield", "as_picture"]);

/** The argument that is drawn on the picture, if there is one. */
export const rectangleOf = (form: Form): string | undefined => form.arguments.find((each) => each.type === "TRV_Rectangle")?.name;

/** The names of a declaration's parameters, but for the one that it extends. */
function parametersOf(declaration: string): string[] {
  const inside = /\((.*)\)/.exec(declaration)![1]!;
  const parameters = inside.split(",").map((each) => each.trim()).filter(Boolean);
  return parameters.filter((each) => !each.startsWith("extends ")).map((each) => each.replace(/^ByRef /, "").split(/[ (]/)[0]!);
}

/** What an argument is set to where no example tells. */
function likely(about: DescribedArgument): Setting {
  const given = about.default === null ? undefined : readSetting(about.default, about.type);
  if (given !== undefined) return given;
  switch (about.type) {
    case "boolean":
      return false;
    case "color":
      return "#808080";
    case "TRV_ColorMatrix":
      return [[0.393, 0.349, 0.272], [0.769, 0.686, 0.534], [0.189, 0.168, 0.131]]; // sepia
    case "TRV_Convolution":
      return [1, 2, 1];
    case "TRV_Rectangle":
      return { left: 40, top: 30, width: 120, height: 90 };
    case "picture":
      return { picture: about.name.includes("mask") ? anyMask : "docs/pictures/chelsea.png" };
    default: {
      if (about.unit === "pixels" && about.type === "integer") return about.minimum === null ? 0 : 200;
      const [low, high] = [about.minimum, about.maximum].map((each) => (typeof each === "number" ? each : 0));
      return about.type === "double" && high! > 1 ? 1 : Math.max(low!, high! / 2);
    }
  }
}

/** The settings that a written call has for a form; undefined where it does not fit. */
function settingsIn(written: WrittenCall, parameters: readonly string[], asked: readonly DescribedArgument[]): Settings | undefined {
  const known = new Set([...parameters, ...parameters.map((_, place) => String(place))]);
  if ([...written.arguments.keys()].some((each) => !known.has(each))) return undefined;
  const settings: Record<string, Setting> = {};
  for (const about of asked) {
    const text = written.arguments.get(about.name) ?? written.arguments.get(String(parameters.indexOf(about.name)));
    const setting = text === undefined ? (about.required ? undefined : likely(about)) : readSetting(text, about.type);
    if (setting === undefined) return undefined;
    settings[about.name] = setting;
  }
  return settings;
}

export class Forms {
  readonly #forms = new Map<string, { parameters: string[]; form: Form }[]>();
  readonly #named = new Map<string, string>();
  /** The pictures that examples are shown on, and those that they need besides. */
  readonly pictures: readonly string[];

  constructor({ operations }: Description) {
    const pictures = new Set<string>();
    for (const operation of operations) {
      const forms = this.#formsOf(operation);
      if (forms.length > 0) this.#forms.set(operation.name, forms);
      for (const name of [operation.name, shortName(operation.name)]) this.#named.set(name.toLowerCase(), operation.name);
      for (const { form } of forms)
        for (const each of [form.source, ...Object.values(form.settings)]) {
          if (typeof each === "string" && each.includes("/")) pictures.add(each);
          if (isPicture(each)) pictures.add(each.picture);
        }
    }
    this.pictures = [...pictures].sort();
  }

  #formsOf(operation: DescribedOperation): { parameters: string[]; form: Form }[] {
    const example = operation.example as Example | null;
    const written = example ? readCall(example.call) : undefined;
    const forms = [];
    for (const [place, declaration] of operation.declarations.entries()) {
      const all = operation.arguments.filter((each) => each.forms.includes(place));
      if (declaration.includes("TRV_ClientPicture") || operation.self === "screen") continue;
      const parameters = parametersOf(declaration);
      const asked = parameters.flatMap((name) => all.filter((each) => each.name === name && !each.by_ref && !untold.has(name)));
      const shown = written && settingsIn(written, parameters, asked);
      const settings = shown ?? Object.fromEntries(asked.map((about) => [about.name, likely(about)]));
      const source = operation.self === "none" ? null : (example?.input ?? anyPicture);
      forms.push({ parameters, form: { operation, arguments: asked, settings, source }, shown: shown !== undefined });
    }
    return forms.sort((one, other) => Number(other.shown) - Number(one.shown));
  }

  /** All forms of an operation, the one that its example shows first. */
  of(operation: string): Form[] {
    return (this.#forms.get(operation) ?? []).map(({ form }) => form);
  }

  all(): Form[] {
    return [...this.#forms.values()].flat().map(({ form }) => form);
  }

  /** The form that has just these settings. */
  formOf({ operation, settings }: Call): Form {
    const names = Object.keys(settings).join();
    const forms = this.of(operation);
    return forms.find((form) => form.arguments.map((each) => each.name).join() === names) ?? forms[0]!;
  }

  text(call: Call): string {
    const about = this.formOf(call).arguments;
    return callText(call, (name) => about.find((each) => each.name === name)?.type ?? "");
  }

  /** The call that a text is; undefined for any other text, and where values are to be computed. */
  read(text: string): Call | undefined {
    const written = readCall(text);
    const operation = written && this.#named.get(written.operation.toLowerCase());
    if (!written || !operation) return undefined;
    for (const { parameters, form } of this.#forms.get(operation) ?? []) {
      const settings = settingsIn(written, parameters, form.arguments);
      if (settings) return { operation, settings };
    }
    return undefined;
  }
}
