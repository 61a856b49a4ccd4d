// What lives in the module's memory, and ends with `dispose`, or when nothing refers to it any more.

import { TarvoError } from "./error.js";
import type { Address, Engine } from "./engine.js";
import type { Library } from "./library.js";
import { rgba32 } from "./records.js";
import type { Argument, Arguments, Result } from "./values.js";

// Older systems have no name for it yet.
(Symbol as { dispose?: symbol }).dispose ??= Symbol.for("Symbol.dispose");

interface Held {
  engine: Engine;
  release: string;
  address: Address;
}
const forgotten = new FinalizationRegistry<Held>(({ engine, release, address }) => {
  if (!engine.broken) engine.call(release, address);
});

abstract class Handle {
  readonly #library: Library;
  readonly #held: Held;

  constructor(library: Library, release: string, address: Address) {
    this.#library = library;
    this.#held = { engine: library.engine, release, address };
    forgotten.register(this, this.#held, this);
  }

  /** @internal */
  get module(): Library {
    return this.#library;
  }
  /** @internal */
  addressIn(library: Library): Address {
    if (this.#held.address === 0) throw new TarvoError("use", "this is disposed of already");
    if (library !== this.#library) throw new TarvoError("use", "this belongs to another module");
    return this.#held.address;
  }

  /** Gives its memory back. It may be called again. */
  dispose(): void {
    const { engine, release, address } = this.#held;
    if (address === 0) return;
    this.#held.address = 0;
    forgotten.unregister(this);
    if (!engine.broken) engine.call(release, address);
  }
  [Symbol.dispose](): void {
    this.dispose();
  }
}

/** A picture. It never changes: operations make others. */
export class Picture extends Handle {
  /** @internal */
  constructor(library: Library, address: Address) {
    super(library, "tarvo_picture_release", address);
  }

  get width(): number {
    return this.#number("tarvo_picture_width");
  }
  get height(): number {
    return this.#number("tarvo_picture_height");
  }
  /** Whether it has transparency. */
  get hasMask(): boolean {
    return this.#number("tarvo_picture_has_mask") !== 0;
  }

  /** What a text of calls says, as the tool's `apply` takes it: "Stretch(fit(800, 600))". Most operations give a picture. */
  apply<T extends Result = Picture>(text: string): T {
    return this.module.applyTo(this, text) as T;
  }

  /** Calls an operation by its name: `picture.call("Stretch", { width: 80, height: 60 })`. */
  call<T extends Result = Picture>(name: string, args: Arguments = []): T {
    return this.module.callOn(this, name, args) as T;
  }

  /** Its pixels, row by row from the top: red, green, blue and alpha, which colours are not multiplied by. */
  pixels(): Uint8ClampedArray<ArrayBuffer> {
    const { engine } = this.module;
    const { width, height } = this;
    return engine.within((scratch) => {
      const size = 4 * width * height;
      const rows = scratch.room(size);
      engine.checked(scratch, "tarvo_picture_to_rows", this.addressIn(this.module), rows, 4 * width, rgba32);
      return new Uint8ClampedArray(engine.bytes(rows, size).slice().buffer);
    });
  }

  /** The bytes of a PNG file. */
  encodePng(): Uint8Array<ArrayBuffer> {
    return this.encode("png");
  }
  /** The bytes of a file of the format that an ending tells: png, jpg, pbm, pgm, ppm or pam. */
  encode(format: string): Uint8Array<ArrayBuffer> {
    const { engine } = this.module;
    return engine.within((scratch) => {
      const place = scratch.room(8);
      engine.checked(
        scratch,
        "tarvo_picture_encode",
        this.addressIn(this.module),
        scratch.text(format),
        0,
        place,
        place + 4,
      );
      const view = engine.view();
      const bytes = view.getUint32(place, true);
      const copy = engine.bytes(bytes, view.getUint32(place + 4, true)).slice();
      engine.call("tarvo_free", bytes);
      return copy;
    });
  }

  /** SHA-256 of its sides and pixels, as `tarvo_picture_sha256` of the C interface defines it. */
  sha256(): string {
    const { engine } = this.module;
    return engine.within((scratch) => {
      const text = scratch.room(65);
      const status = engine.call("tarvo_picture_sha256", this.addressIn(this.module), text);
      if (status !== 0) throw new TarvoError("memory", "not enough memory");
      return engine.text(text);
    });
  }

  #number(name: string): number {
    return this.module.engine.call(name, this.addressIn(this.module));
  }
}

/** An instance of a class: a rectangle, a matrix, a convolution. Its methods may change it. */
export class TarvoObject extends Handle {
  #className: string | undefined;

  /** @internal */
  constructor(library: Library, address: Address, className?: string) {
    super(library, "tarvo_object_release", address);
    this.#className = className;
  }

  /** Calls a method; one that can be assigned to takes the new value as one argument more. */
  call<T extends Result = Result>(name: string, args: Arguments = []): T {
    return this.module.callOn(this, this.#member(name), args) as T;
  }
  /** A property. */
  get<T extends Result = number>(name: string): T {
    return this.call<T>(name);
  }
  set(name: string, value: Argument): void {
    this.call(name, [value]);
  }

  #member(name: string): string {
    if (name.includes(".")) return name;
    if (this.#className === undefined) throw new TarvoError("use", `${name}: say of which class, as in "TRV_Rectangle.${name}"`);
    return `${this.#className}.${name}`;
  }
}
