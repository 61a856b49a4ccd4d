/** What kind of failure it is, as `tarvo_status` of the C interface tells it. */
export type Status = "operation" | "use" | "file" | "limit" | "memory" | "cancelled" | "ended";

/** By the numbers of `tarvo_status`. */
export const statuses: readonly Status[] = ["ended", "operation", "use", "file", "limit", "memory", "cancelled"];

/** The one error that this package throws. */
export class TarvoError extends Error {
  /** "operation": refused, and `code` tells why. "use": the call is wrong. "file": no picture can be read or written.
   *  "limit" and "memory": too large. "ended": the module has broken down; `load` makes a new one. */
  readonly status: Status;
  /** The operation's own code, of those that `description()` lists; 0 for none. */
  readonly code: number;
  /** As it is registered, "TRV_Stretch"; "" where it is not known. */
  readonly operation: string;
  /** The one that was wrong, "width"; "" where it is not known. */
  readonly argument: string;

  constructor(status: Status, message: string, code = 0, operation = "", argument = "") {
    super(message);
    this.name = "TarvoError";
    this.status = status;
    this.code = code;
    this.operation = operation;
    this.argument = argument;
  }
}
