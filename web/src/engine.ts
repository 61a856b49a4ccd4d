// The compiled library and its memory.

import { statuses, TarvoError } from "./error.js";
import { importsOf } from "./system.js";

type Function = (...values: number[]) => number;

/** An address in the module's memory; 0 for none. */
export type Address = number;

export class Engine {
  readonly #memory: WebAssembly.Memory;
  readonly #functions: Record<string, Function>;
  #broken: unknown;

  private constructor(instance: WebAssembly.Instance) {
    this.#memory = instance.exports.memory as WebAssembly.Memory;
    this.#functions = instance.exports as Record<string, Function>;
  }

  static async start(module: WebAssembly.Module): Promise<Engine> {
    let engine: Engine | undefined;
    const instance = await WebAssembly.instantiate(
      module,
      importsOf(module, () => engine!.view()),
    );
    engine = new Engine(instance);
    engine.call("_initialize");
    return engine;
  }

  /** Whether it has broken down, and nothing can be called any more. */
  get broken(): boolean {
    return this.#broken !== undefined;
  }

  /** The bytes of memory that it has taken so far. They never get fewer. */
  get memoryBytes(): number {
    return this.#memory.buffer.byteLength;
  }

  // Memory that grows is another buffer from then on: these are asked for again after each call.
  view(): DataView {
    return new DataView(this.#memory.buffer);
  }
  bytes(address: Address, length: number): Uint8Array {
    return new Uint8Array(this.#memory.buffer, address, length);
  }

  call(name: string, ...values: number[]): number {
    if (this.#broken !== undefined) throw new TarvoError("ended", `the module has ended: ${String(this.#broken)}`);
    try {
      return this.#functions[name]!(...values);
    } catch (error) {
      this.#broken = error;
      throw new TarvoError("ended", `the module has ended: ${String(error)}`);
    }
  }
  address(name: string, ...values: number[]): Address {
    return this.call(name, ...values) >>> 0;
  }

  text(address: Address): string {
    const all = new Uint8Array(this.#memory.buffer);
    return new TextDecoder().decode(all.subarray(address, all.indexOf(0, address)));
  }

  /** Lets `work` use memory that lasts as long as it. */
  within<T>(work: (scratch: Scratch) => T): T {
    const scratch = new Scratch(this);
    try {
      return work(scratch);
    } finally {
      scratch.end();
    }
  }

  /** Calls a function that returns a status and takes an error's place last. */
  checked(scratch: Scratch, name: string, ...values: number[]): void {
    const place = scratch.room(4);
    const status = this.call(name, ...values, place);
    if (status === 0) return;
    const error = this.view().getUint32(place, true);
    const told = (what: string) => this.text(this.address(`tarvo_error_${what}`, error));
    const made = new TarvoError(
      statuses[status] ?? "operation",
      told("message"),
      this.call("tarvo_error_code", error),
      told("operation"),
      told("argument"),
    );
    this.call("tarvo_error_free", error);
    throw made;
  }
}

/** Memory for the length of a call. */
export class Scratch {
  readonly #engine: Engine;
  readonly #taken: Address[] = [];

  constructor(engine: Engine) {
    this.#engine = engine;
  }

  /** Cleared. */
  room(size: number): Address {
    const address = this.#engine.address("malloc", Math.max(size, 8));
    if (address === 0) throw new TarvoError("memory", "not enough memory");
    this.#taken.push(address);
    this.#engine.bytes(address, size).fill(0);
    return address;
  }
  put(bytes: Uint8Array): Address {
    const address = this.room(bytes.length);
    this.#engine.bytes(address, bytes.length).set(bytes);
    return address;
  }
  text(text: string): Address {
    return this.put(new TextEncoder().encode(`${text}\0`));
  }
  end(): void {
    if (!this.#engine.broken) for (const address of this.#taken) this.#engine.call("free", address);
  }
}
