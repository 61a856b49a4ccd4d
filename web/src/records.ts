// The records of tarvo.h as they lie in memory; native/layout.cpp holds both to the same.

export const enum Type {
  nil,
  integer,
  real,
  boolean,
  color,
  bytes,
  picture,
  object,
  integers,
}

/** Of a value: its type, and at `valuePlace` what it is. */
export const valueSize = 16;
export const valuePlace = 8;
/** Of an argument: its name, and at `valuePlace` its value. */
export const argumentSize = 24;
/** How the bytes of a pixel follow each other. */
export const rgba32 = 3;
