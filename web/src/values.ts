// Values on their way into calls and out of them.

import type { DescribedArgument } from "./description.js";
import { TarvoError } from "./error.js";
import type { Address, Engine, Scratch } from "./engine.js";
import { Picture, TarvoObject } from "./objects.js";
import { argumentSize, Type, valuePlace, valueSize } from "./records.js";
import type { Library } from "./library.js";

/** A rectangle for an argument that takes one. */
export interface Rectangle {
  left: number;
  top: number;
  width: number;
  height: number;
}

/** What an argument may be. Of a number its declaration says whether it is an integer, a double or a colour (0xRRGGBB). A
 *  colour may be "#rrggbb" or [red, green, blue], a rectangle its four numbers, a matrix its three rows, a convolution its
 *  weights. */
export type Argument =
  | number
  | boolean
  | string
  | Uint8Array
  | Picture
  | TarvoObject
  | Rectangle
  | readonly number[]
  | readonly (readonly number[])[]
  | null
  | undefined;

/** By their names, or in their order. */
export type Arguments = Readonly<Record<string, Argument>> | readonly Argument[];

/** What an operation gives. One that gives something back in arguments gives an object of these, by their names; what it
 *  returns besides is `value`. */
export type Result = Picture | TarvoObject | number | boolean | Uint8Array | number[] | null | { [name: string]: Result };

function wrong(name: string, expected: string): TarvoError {
  return new TarvoError("use", `${name} must be ${expected}`, 0, "", name);
}

function integer(value: number, name: string): number {
  if (!Number.isInteger(value) || value < -(2 ** 31) || value >= 2 ** 31) throw wrong(name, "an integer of 32 bits");
  return value;
}

function colorOf(value: Argument, name: string): number {
  const kind = 'a colour: 0xRRGGBB, "#rrggbb" or [red, green, blue]';
  if (typeof value === "string" && /^#[0-9a-f]{6}$/i.test(value)) return Number.parseInt(value.slice(1), 16);
  if (typeof value === "number" && Number.isInteger(value) && value >= 0 && value <= 0xffffff) return value;
  if (Array.isArray(value) && value.length === 3 && value.every((c) => Number.isInteger(c) && c >= 0 && c <= 255))
    return (value[0] << 16) | (value[1] << 8) | value[2];
  throw wrong(name, kind);
}

function isRectangle(value: object): value is Rectangle {
  return ["left", "top", "width", "height"].every((side) => typeof (value as Record<string, unknown>)[side] === "number");
}

/** A name, or none where the order tells, and the value. */
type Given = [string | null, Argument];

/** How well a value fits a type: 0 for not at all. */
function fit(value: Argument, type: string): number {
  if (value === null || value === undefined) return ["integer", "double", "boolean", "color"].includes(type) ? 0 : 2;
  if (typeof value === "boolean") return type === "boolean" ? 2 : 0;
  if (typeof value === "number") {
    if (type === "integer") return Number.isInteger(value) ? 2 : 1;
    return type === "double" ? 2 : type === "color" ? 1 : 0;
  }
  if (typeof value === "string") return type === "string" || type === "color" ? 2 : 0;
  if (value instanceof Uint8Array) return type === "string" ? 2 : 0;
  if (value instanceof Picture) return type === "picture" ? 2 : 0;
  return ["integer", "double", "boolean", "string", "picture"].includes(type) ? 0 : 2;
}

/** The types of an operation's arguments in the form that the given ones fit best; undefined where that has none. Which form
 *  is called is the library's choice: this only tells what numbers and texts are meant to be. */
function typesOf(given: readonly Given[], told: readonly DescribedArgument[]): (string | undefined)[] {
  let best: (string | undefined)[] = given.map(() => undefined);
  let most = 0;
  for (const form of new Set(told.flatMap((each) => each.forms))) {
    const all = told.filter((each) => each.forms.includes(form));
    const ordered = all.filter((each) => !each.by_ref);
    const types = given.map(([name], i) =>
      name === null ? ordered[i]?.type : all.find((each) => each.name.toLowerCase() === name.toLowerCase())?.type,
    );
    const fits = types.map((type, i) => (type === undefined ? 0 : fit(given[i]![1], type)));
    const sum = fits.reduce((one, other) => one + other, 0);
    if (sum > most) [best, most] = [types, sum];
  }
  return best;
}

/** Puts arguments where the library reads them. Objects that it makes of plain values last as long as it. */
export class ArgumentWriter {
  readonly #library: Library;
  readonly #engine: Engine;
  readonly #scratch: Scratch;
  readonly #made: TarvoObject[] = [];

  constructor(library: Library, scratch: Scratch) {
    this.#library = library;
    this.#engine = library.engine;
    this.#scratch = scratch;
  }

  end(): void {
    for (const each of this.#made) each[Symbol.dispose]();
  }

  /** Returns where the arguments are, and how many. `told` is what is described of all that there may be. */
  put(given: Arguments, told: readonly DescribedArgument[]): [Address, number] {
    const list: Given[] = Array.isArray(given)
      ? (given as readonly Argument[]).map((value) => [null, value])
      : Object.entries(given).filter(([, value]) => value !== undefined);
    const types = typesOf(list, told);
    const records = this.#scratch.room(argumentSize * list.length);
    for (const [i, [name, value]] of list.entries()) {
      const named = name === null ? 0 : this.#scratch.text(name);
      this.#engine.view().setUint32(records + argumentSize * i, named, true);
      this.#put(records + argumentSize * i + valuePlace, value, types[i], name ?? `argument ${i + 1}`);
    }
    return [records, list.length];
  }

  /** Returns where a value is. */
  one(value: Argument): Address {
    const place = this.#scratch.room(valueSize);
    this.#put(place, value, undefined, "the value");
    return place;
  }

  #put(place: Address, value: Argument, type: string | undefined, name: string): void {
    const put = (kind: Type, word = 0, second = 0) => {
      const view = this.#engine.view();
      view.setUint32(place, kind, true);
      view.setInt32(place + valuePlace, word, true);
      view.setInt32(place + valuePlace + 4, second, true);
    };
    if (value === null || value === undefined) return put(Type.nil);
    if (type === "color") return put(Type.color, colorOf(value, name));
    if (typeof value === "boolean") return put(Type.boolean, value ? 1 : 0);
    if (typeof value === "number") {
      const real = type === undefined ? !Number.isInteger(value) : type === "double";
      if (!real) return put(Type.integer, integer(value, name));
      put(Type.real);
      return this.#engine.view().setFloat64(place + valuePlace, value, true);
    }
    if (typeof value === "string" || value instanceof Uint8Array) {
      const bytes = typeof value === "string" ? new TextEncoder().encode(value) : value;
      return put(Type.bytes, this.#scratch.put(bytes), bytes.length);
    }
    if (value instanceof Picture) return put(Type.picture, value.addressIn(this.#library));
    const made = this.#objectOf(value, type, name);
    if (made) return put(Type.object, made.addressIn(this.#library));
    const numbers = value as readonly number[];
    if (!Array.isArray(value) || !numbers.every((each) => typeof each === "number")) throw wrong(name, type ?? "a value");
    const words = Int32Array.from(numbers, (each) => integer(each, name));
    return put(Type.integers, this.#scratch.put(new Uint8Array(words.buffer)), numbers.length);
  }

  /** The object that a value is, or stands for; undefined where it is none. */
  #objectOf(value: Exclude<Argument, null | undefined>, type: string | undefined, name: string): TarvoObject | undefined {
    if (value instanceof TarvoObject) return value;
    if (typeof value !== "object") return undefined;
    if (type === "TRV_Rectangle" || (type === undefined && isRectangle(value))) {
      const sides = isRectangle(value) ? [value.left, value.top, value.width, value.height] : (value as number[]);
      if (!Array.isArray(sides) || sides.length !== 4) throw wrong(name, "a rectangle: left, top, width, height");
      const made = this.#make("TRV_Rectangle");
      for (const [i, side] of ["left", "top", "width", "height"].entries()) made.set(side, sides[i]!);
      return made;
    }
    if (type === "TRV_ColorMatrix") {
      const rows = value as readonly (readonly number[])[];
      if (!Array.isArray(value) || rows.length !== 3 || rows.some((row) => !Array.isArray(row) || row.length !== 3))
        throw wrong(name, "a matrix: three rows of three numbers");
      const made = this.#make("TRV_ColorMatrix");
      for (const [i, row] of rows.entries()) for (const [j, each] of row.entries()) made.call("Value", [i, j, each]);
      return made;
    }
    if (type === "TRV_Convolution") {
      const made = this.#make("TRV_Convolution");
      made.call("SetCoefficients", [value]);
      return made;
    }
    return undefined;
  }

  #make(className: string): TarvoObject {
    const made = this.#library.object(className);
    this.#made.push(made);
    return made;
  }
}

/** Reads a value that a result has: it does not last, so what is read of it is a copy, or is kept. */
export function readValue(library: Library, place: Address): Result {
  const { engine } = library;
  const view = engine.view();
  const at = place + valuePlace;
  const address = view.getUint32(at, true);
  const count = view.getUint32(at + 4, true);
  switch (view.getUint32(place, true) as Type) {
    case Type.integer:
      return view.getInt32(at, true);
    case Type.real:
      return view.getFloat64(at, true);
    case Type.boolean:
      return view.getInt32(at, true) !== 0;
    case Type.color:
      return address;
    case Type.bytes:
      return engine.bytes(address, count).slice();
    case Type.picture:
      return new Picture(library, engine.address("tarvo_picture_retain", address));
    case Type.object:
      return new TarvoObject(library, engine.address("tarvo_object_retain", address));
    case Type.integers:
      return Array.from(new Int32Array(engine.bytes(address, 4 * count).slice().buffer));
    default:
      return null;
  }
}
