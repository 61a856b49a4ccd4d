// Calls as the tool reads them, in recipes and in links.

import { type Call, type Setting, shortName } from "./messages.js";

/** A call as it stands in a text, before anybody knows the operation. */
export interface WrittenCall {
  operation: string;
  /** By their names, or by their places: "0", "1", ... */
  arguments: Map<string, string>;
}

/** A file's name as a call has it. */
export function fileText(name: string): string {
  return /^[\w./~-]*\/[\w./~-]*$|^[A-Za-z][\w-]*\.\w+$/.test(name) ? name : `"${name.replaceAll('"', '""')}"`;
}

// Of a double it shows that it is one.
export function numberText(value: number, type: string): string {
  return type === "double" && Number.isInteger(value) ? value.toFixed(1) : String(value);
}

export function settingText(setting: Setting, type: string): string {
  if (setting === null) return "nil";
  if (typeof setting === "number") return numberText(setting, type);
  if (typeof setting === "boolean") return String(setting);
  if (typeof setting === "string") return `&c${setting.slice(1).toUpperCase()}`;
  if (Array.isArray(setting)) return `${type === "TRV_ColorMatrix" ? "matrix" : "convolution"}(${setting.flat().join(", ")})`;
  if ("picture" in setting) return fileText(setting.picture);
  return `rect(${setting.left}, ${setting.top}, ${setting.width}, ${setting.height})`;
}

export function callText({ operation, settings }: Call, typeOf: (name: string) => string): string {
  const given = Object.entries(settings).map(([name, setting]) => `${name} = ${settingText(setting, typeOf(name))}`);
  return `${shortName(operation)}(${given.join(", ")})`;
}

const word = /^\s*(?:"((?:[^"]|"")*)"|([\w.~/&-]+(?:\([^()]*\))?))\s*/;

/** Undefined where the text is no call, or has more in it than values. */
export function readCall(text: string): WrittenCall | undefined {
  const whole = /^\s*(?:\w+\.)?(\w+)\((.*)\)\s*$/s.exec(text);
  if (!whole) return undefined;
  const given = new Map<string, string>();
  let rest = whole[2]!.trim();
  for (let place = 0; rest !== ""; ++place) {
    const named = /^(\w+)\s*=\s*/.exec(rest);
    if (named) rest = rest.slice(named[0].length);
    const value = word.exec(rest);
    if (!value) return undefined;
    given.set(named?.[1] ?? String(place), value[1] === undefined ? value[2]! : `"${value[1]}"`);
    rest = rest.slice(value[0].length);
    if (rest === "") break;
    if (!rest.startsWith(",") || rest.length === 1) return undefined;
    rest = rest.slice(1).trim();
  }
  return { operation: whole[1]!, arguments: given };
}

function numbersIn(text: string, count?: number): number[] | undefined {
  const numbers = text.split(",").map((each) => (each.trim() === "" ? Number.NaN : Number(each)));
  return numbers.every(Number.isFinite) && (count === undefined || numbers.length === count) ? numbers : undefined;
}

/** What a value's text stands for, for an argument of the type; undefined where it does not fit. */
export function readSetting(text: string, type: string): Setting | undefined {
  const made = /^(\w+)\((.*)\)$/.exec(text);
  switch (type) {
    case "boolean":
      return text === "true" ? true : text === "false" ? false : undefined;
    case "color":
      return /^&c[0-9a-f]{6}$/i.test(text) ? `#${text.slice(2).toLowerCase()}` : undefined;
    case "integer":
    case "double": {
      const [number] = numbersIn(text, 1) ?? [];
      return type === "integer" && number !== undefined ? Math.trunc(number) : number;
    }
    case "TRV_Rectangle": {
      if (text === "nil") return null;
      const [left, top, width, height] = (made?.[1] === "rect" && numbersIn(made[2]!, 4)) || [];
      return height === undefined ? undefined : { left: left!, top: top!, width: width!, height };
    }
    case "TRV_ColorMatrix": {
      if (text === "nil") return null;
      const all = (made?.[1] === "matrix" && numbersIn(made[2]!, 9)) || undefined;
      return all && [all.slice(0, 3), all.slice(3, 6), all.slice(6)];
    }
    case "TRV_Convolution":
      if (text === "nil") return null;
      return (made?.[1] === "convolution" && numbersIn(made[2]!)) || undefined;
    case "picture": {
      if (text === "nil") return null;
      const name = /^"(.*)"$/.exec(text)?.[1]?.replaceAll('""', '"') ?? text;
      return /\.\w+$/.test(name) ? { picture: name } : undefined;
    }
    default:
      return undefined;
  }
}
