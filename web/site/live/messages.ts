// What the page and its worker tell each other.

import type { Description } from "@tarvo/web";

export interface Rect {
  left: number;
  top: number;
  width: number;
  height: number;
}

export interface NamedPicture {
  picture: string;
}

/** An argument as a page has it: pictures go by their names. */
export type Setting = number | boolean | string | null | number[] | number[][] | Rect | NamedPicture;
export type Settings = Readonly<Record<string, Setting>>;

export const isPicture = (setting: Setting): setting is NamedPicture => typeof setting === "object" && setting !== null && "picture" in setting;

/** An operation's name as people know it. */
export const shortName = (operation: string): string => operation.replace(/^TRV_/, "");

/** A call, made on what the call before has given. */
export interface Call {
  operation: string;
  settings: Settings;
}

/** Calls one after the other, the first on a picture or on none. */
export interface Work {
  source: string | null;
  calls: readonly Call[];
}

export interface Failure {
  message: string;
  code: number;
  argument: string;
  /** Which of the calls has failed; -1 for none of them. */
  call: number;
}

/** How often each level occurs: red, green, blue. */
export type Histogram = [Uint32Array, Uint32Array, Uint32Array];

/** A picture for looking at. Its sides are the picture's own, whatever those of the bitmap are. */
export interface View extends Sides {
  bitmap: ImageBitmap;
  histogram: Histogram;
}

/** Red, green, blue and alpha; null where there is no pixel. */
export type Pixel = [number, number, number, number] | null;

/** What work has told besides its picture. */
export interface Told {
  /** What calls answer that give no picture. */
  answers: string[];
  /** The sides of the pictures that the calls were made on. */
  inputs: Sides[];
}

export interface Sides {
  width: number;
  height: number;
}

export type ToWorker =
  | { kind: "begin"; module: WebAssembly.Module }
  | { kind: "open"; name: string; from: Blob | string }
  | { kind: "run"; id: number; work: Work }
  | { kind: "pixel"; id: number; x: number; y: number }
  | { kind: "save"; id: number };

export type FromWorker =
  | { kind: "begun"; description: Description }
  | { kind: "opened"; name: string; view: View }
  | { kind: "refused"; name: string; failure: Failure }
  | { kind: "drawn"; id: number; preview: boolean; view: View; told: Told }
  | { kind: "hashed"; id: number; sha256: string }
  | { kind: "failed"; id: number; failure: Failure }
  | { kind: "pixel"; id: number; before: Pixel; after: Pixel }
  | { kind: "saved"; id: number; file: Blob }
  /** It had better be ended: it has taken much memory, or has broken down. */
  | { kind: "grown" };
