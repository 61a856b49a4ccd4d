// The library, loaded: what can be called in it.

import { type DescribedArgument, type Description, operationNamed } from "./description.js";
import { TarvoError } from "./error.js";
import type { Address, Engine, Scratch } from "./engine.js";
import { Picture, TarvoObject } from "./objects.js";
import { rgba32 } from "./records.js";
import { type Argument, type Arguments, ArgumentWriter, readValue, type Result } from "./values.js";

export class Library {
  /** @internal */
  readonly engine: Engine;
  #description: Description | undefined;

  /** @internal */
  constructor(engine: Engine) {
    this.engine = engine;
  }

  /** "1.0.0" */
  get version(): string {
    return this.engine.text(this.engine.address("tarvo_version"));
  }

  /** The bytes of memory that it has taken so far. They never get fewer: a worker that has taken many is ended, and begun
   *  anew. */
  get memoryBytes(): number {
    return this.engine.memoryBytes;
  }

  /** All operations, classes and errors. */
  description(): Description {
    if (!this.#description) {
      const text = this.engine.address("tarvo_description");
      if (text === 0) throw new TarvoError("memory", "not enough memory");
      this.#description = JSON.parse(this.engine.text(text)) as Description;
    }
    return this.#description;
  }

  /** Reads PNG, JPEG, PBM, PGM, PPM or PAM, told by the content. Colours are as they are stored. */
  decode(bytes: Uint8Array | ArrayBuffer): Picture {
    const file = bytes instanceof Uint8Array ? bytes : new Uint8Array(bytes);
    return this.#newPicture((scratch, place) =>
      this.engine.checked(scratch, "tarvo_picture_decode", scratch.put(file), file.length, 0, place),
    );
  }

  /** A picture of pixels, row by row from the top: red, green, blue and alpha, which colours are not multiplied by. */
  fromPixels(rgba: Uint8Array | Uint8ClampedArray, width: number, height: number): Picture {
    if (rgba.length !== 4 * width * height)
      throw new TarvoError("use", `${width} x ${height} pixels take ${4 * width * height} bytes, not ${rgba.length}`);
    const bytes = new Uint8Array(rgba.buffer, rgba.byteOffset, rgba.length);
    return this.#newPicture((scratch, place) =>
      this.engine.checked(
        scratch,
        "tarvo_picture_from_rows",
        scratch.put(bytes),
        4 * width,
        width,
        height,
        rgba32,
        place,
      ),
    );
  }

  /** An instance of a class: "TRV_Rectangle", "TRV_ColorMatrix", "TRV_Convolution". */
  object(className: string): TarvoObject {
    return this.engine.within((scratch) => {
      const place = scratch.room(4);
      this.engine.checked(scratch, "tarvo_object_new", scratch.text(className), place);
      return new TarvoObject(this, this.engine.view().getUint32(place, true), className);
    });
  }

  /** What a text says that needs no picture: "MakeGradient(300, 200, &c102040, &cFFD080)". */
  apply<T extends Result = Picture>(text: string): T {
    return this.applyTo(null, text) as T;
  }
  /** Calls an operation that needs no picture. One that is called on a string takes that as its first argument. */
  call<T extends Result = Picture>(name: string, args: Arguments = []): T {
    const onString = operationNamed(this.description(), name)?.self === "string" && Array.isArray(args);
    const [first, ...rest] = onString ? (args as readonly Argument[]) : [];
    return this.callOn(first ?? null, name, onString ? rest : args) as T;
  }

  /** @internal */
  applyTo(picture: Picture | null, text: string): Result {
    return this.#resultOf((scratch, place) => {
      const self = picture ? picture.addressIn(this) : 0;
      this.engine.checked(scratch, "tarvo_apply", scratch.text(text), self, 0, place);
    });
  }

  /** @internal */
  callOn(self: Argument, name: string, args: Arguments): Result {
    return this.#resultOf((scratch, place) => {
      const writer = new ArgumentWriter(this, scratch);
      try {
        const [records, count] = writer.put(args, this.#argumentsOf(name));
        const on = self === null ? 0 : writer.one(self);
        this.engine.checked(scratch, "tarvo_call", scratch.text(name), on, records, count, 0, place);
      } finally {
        writer.end();
      }
    });
  }

  #argumentsOf(name: string): readonly DescribedArgument[] {
    return operationNamed(this.description(), name)?.arguments ?? [];
  }

  #newPicture(make: (scratch: Scratch, place: Address) => void): Picture {
    return this.engine.within((scratch) => {
      const place = scratch.room(4);
      make(scratch, place);
      return new Picture(this, this.engine.view().getUint32(place, true));
    });
  }

  #resultOf(run: (scratch: Scratch, place: Address) => void): Result {
    return this.engine.within((scratch) => {
      const place = scratch.room(4);
      run(scratch, place);
      const result = this.engine.view().getUint32(place, true);
      try {
        const value = readValue(this, this.engine.address("tarvo_result_value", result));
        const outputs: Record<string, Result> = {};
        for (let place = 0; ; ++place) {
          const output = this.engine.address("tarvo_result_output_name", result, place);
          if (output === 0) break;
          outputs[this.engine.text(output)] = readValue(this, this.engine.address("tarvo_result_output", result, output));
        }
        if (Object.keys(outputs).length === 0) return value;
        return value === null ? outputs : { ...outputs, value };
      } finally {
        this.engine.call("tarvo_result_release", result);
      }
    });
  }
}
