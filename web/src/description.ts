/** What `description()` gives: docs/operations.schema.json has all of it. */
export interface Description {
  version: string;
  operations: DescribedOperation[];
  classes: DescribedClass[];
  errors: DescribedError[];
}

export interface DescribedOperation {
  /** As it is registered: "TRV_Stretch". */
  name: string;
  family: string | null;
  summary: string;
  words: string[];
  /** What it is called on: "picture", "none", ... */
  self: string;
  result: string;
  yields: boolean;
  keeps_mask: boolean;
  changes_self: boolean;
  declarations: string[];
  arguments: DescribedArgument[];
  errors: DescribedFailure[];
  notes: string[];
  example: string | null;
}

export interface DescribedArgument {
  name: string;
  type: string;
  unit: string | null;
  minimum: number | string | null;
  exclusiveMinimum: boolean;
  maximum: number | string | null;
  exclusiveMaximum: boolean;
  code: number | null;
  default: string | null;
  required: boolean;
  by_ref: boolean;
  text: string;
  /** Of the operation's forms those that have it, by their places. */
  forms: number[];
}

export interface DescribedFailure {
  code: number;
  when: string;
  argument: string | null;
  result: string;
  forms: number[];
}

export interface DescribedClass {
  name: string;
  summary: string;
  words: string[];
  properties: { name: string; type: string; read_only: boolean; text: string }[];
  methods: DescribedOperation[];
}

export interface DescribedError {
  code: number;
  [fact: string]: unknown;
}

const withoutPrefix = (name: string) => name.toLowerCase().replace(/^trv_/, "");

/** The operation of a name ("Stretch", "TRV_Stretch"), or the method ("TRV_ColorMatrix.Invert"). */
export function operationNamed(description: Description, name: string): DescribedOperation | undefined {
  const [owner, member] = name.split(".");
  if (member === undefined)
    return description.operations.find((each) => withoutPrefix(each.name) === withoutPrefix(name));
  const found = description.classes.find((each) => each.name.toLowerCase() === owner!.toLowerCase());
  return found?.methods.find((each) => each.name.toLowerCase() === member.toLowerCase());
}
