// What has been, to go back to it and forth again.

// Changes of one thing that follow each other so closely are one.
const closely = 1000;

export class Past<State> {
  #now: State;
  readonly #before: State[] = [];
  readonly #behind: State[] = [];
  #last = { what: "", at: Number.NEGATIVE_INFINITY };

  constructor(state: State) {
    this.#now = state;
  }

  get now(): State {
    return this.#now;
  }
  get canUndo(): boolean {
    return this.#before.length > 0;
  }
  get canRedo(): boolean {
    return this.#behind.length > 0;
  }

  /** Changes to a state. `what` is changed, such as one slider. */
  change(state: State, what = ""): void {
    const at = performance.now();
    const same = what !== "" && what === this.#last.what && at - this.#last.at < closely;
    if (!same) this.#before.push(this.#now);
    this.#last = { what, at };
    this.#behind.length = 0;
    this.#now = state;
  }
  undo(): void {
    this.#go(this.#before, this.#behind);
  }
  redo(): void {
    this.#go(this.#behind, this.#before);
  }

  #go(from: State[], to: State[]): void {
    const state = from.pop();
    if (state === undefined) return;
    to.push(this.#now);
    this.#now = state;
    this.#last.what = "";
  }
}
