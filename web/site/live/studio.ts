// The page's side of the worker: pictures by their names, and work of which the latest counts.

import type { Description } from "@tarvo/web";
import wasm from "@tarvo/web/tarvo.wasm?url";

import type { Failure, FromWorker, Pixel, Told, ToWorker, View, Work } from "./messages.js";

/** What work comes to, told once or, after a preview, twice. */
export interface Answers {
  drawn(view: View, told: Told, preview: boolean): void;
  hashed(sha256: string): void;
  failed(failure: Failure): void;
}

// Work that has not ended so many milliseconds after newer work was asked for is not waited for.
const patience = 1500;

interface Waiting<T> {
  done(value: T): void;
  failed(failure: Failure): void;
}

const failureOf = (error: unknown): Failure => ({ message: error instanceof Error ? error.message : String(error), code: 0, argument: "", call: -1 });

// Not as it streams in: that wants a server that knows what kind of file it is.
async function compiled(): Promise<WebAssembly.Module> {
  const response = await fetch(wasm);
  if (!response.ok) throw new Error(`${wasm}: ${response.status}`);
  return WebAssembly.compile(await response.arrayBuffer());
}

export class Studio {
  readonly description: Promise<Description>;
  #described!: Waiting<Description>;
  #module: Promise<WebAssembly.Module> | undefined;
  #worker: Worker | undefined;
  readonly #files = new Map<string, Blob | string>();
  readonly #opened = new Map<string, Promise<View>>();
  readonly #opening = new Map<string, Waiting<View>>();
  readonly #asked = new Map<number, { question: ToWorker; done(message: FromWorker): void }>();
  /** The latest work, and since when it has been on the same picture. */
  #running: { id: number; since: number; work: Work; answers: Answers; settled: boolean } | undefined;
  #late: number | undefined;
  #last = 0;
  #tired = false;

  constructor() {
    this.description = new Promise((done, failed) => (this.#described = { done, failed }));
    this.#start();
  }

  /** Decodes a file, and keeps the picture under the name. */
  open(name: string, from: Blob | string): Promise<View> {
    this.#files.set(name, from);
    const opened = new Promise<View>((done, failed) => this.#opening.set(name, { done, failed }));
    this.#opened.set(name, opened);
    this.#tell({ kind: "open", name, from });
    opened.catch(() => {
      this.#files.delete(name);
      this.#opened.delete(name);
    });
    return opened;
  }

  /** The picture of an address, which is loaded once. */
  async sample(name: string, address: string): Promise<View> {
    return this.#opened.get(name) ?? this.open(name, new URL(address, document.baseURI).href);
  }

  /** The picture that has been opened under the name. */
  known(name: string): Promise<View> | undefined {
    return this.#opened.get(name);
  }

  run(work: Work, answers: Answers): void {
    const before = this.#running;
    const id = ++this.#last;
    this.#running = { id, since: before?.work.source === work.source ? before.since : id, work, answers, settled: false };
    if (this.#tired) return this.#renew();
    if (before?.settled === false) this.#late ??= window.setTimeout(() => this.#renew(), patience);
    this.#tell({ kind: "run", id, work });
  }

  /** The pixel of that place before and after, of what was drawn last. */
  async pixel(x: number, y: number): Promise<{ before: Pixel; after: Pixel }> {
    const answer = await this.#ask({ kind: "pixel", id: ++this.#last, x, y });
    return answer as FromWorker & { kind: "pixel" };
  }

  /** What was drawn last, as a PNG file. */
  async png(): Promise<Blob> {
    const answer = await this.#ask({ kind: "save", id: ++this.#last });
    return (answer as FromWorker & { kind: "saved" }).file;
  }

  #ask(question: ToWorker & { id: number }): Promise<FromWorker> {
    return new Promise((done) => {
      this.#asked.set(question.id, { question, done });
      this.#tell(question);
    });
  }

  #tell(message: ToWorker): void {
    this.#worker!.postMessage(message);
  }

  #start(): void {
    const worker = new Worker(new URL("./worker.ts", import.meta.url), { type: "module" });
    this.#worker = worker;
    worker.onmessage = ({ data }: MessageEvent<FromWorker>) => this.#take(data);
    worker.onerror = (event) => {
      const failure = failureOf(event.message || "the worker has ended");
      this.#described.failed(failure);
      this.#running?.answers.failed(failure);
      this.#tired = true;
    };
    this.#module ??= compiled();
    this.#module.then(
      (module) => worker.postMessage({ kind: "begin", module } satisfies ToWorker),
      (error: unknown) => this.#described.failed(failureOf(error)),
    );
  }

  // Ends the worker, whatever it does, and begins another with the same pictures and the latest work.
  #renew(): void {
    this.#worker?.terminate();
    this.#tired = false;
    this.#stopWaiting();
    this.#start();
    for (const [name, from] of this.#files) this.#tell({ kind: "open", name, from });
    if (this.#running?.settled === false) this.#tell({ kind: "run", id: this.#running.id, work: this.#running.work });
    for (const { question } of this.#asked.values()) this.#tell(question);
  }

  #stopWaiting(): void {
    window.clearTimeout(this.#late);
    this.#late = undefined;
  }

  #take(message: FromWorker): void {
    switch (message.kind) {
      case "begun":
        return this.#described.done(message.description);
      case "opened":
      case "refused": {
        const waiting = this.#opening.get(message.name);
        this.#opening.delete(message.name);
        if (message.kind === "refused") waiting?.failed(message.failure);
        else if (waiting) waiting.done(message.view);
        else message.view.bitmap.close();
        return;
      }
      case "pixel":
      case "saved":
        this.#asked.get(message.id)?.done(message);
        return void this.#asked.delete(message.id);
      case "grown":
        // What is seen is asked about as long as it is seen.
        this.#tired = true;
        return;
    }
    const running = this.#running;
    if (!running) return;
    // It gets on: what is waited for from now on is newer.
    this.#stopWaiting();
    const latest = message.id === running.id;
    if (message.kind === "drawn") {
      // What was set a moment ago is worth a look while what is set now is worked on.
      if (message.id >= running.since) running.answers.drawn(message.view, message.told, message.preview);
      else message.view.bitmap.close();
      if (latest && !message.preview) running.settled = true;
    } else if (latest && message.kind === "failed") {
      running.settled = true;
      running.answers.failed(message.failure);
    } else if (latest && message.kind === "hashed") {
      running.answers.hashed(message.sha256);
    }
    if (!running.settled && !latest) this.#late = window.setTimeout(() => this.#renew(), patience);
  }
}
