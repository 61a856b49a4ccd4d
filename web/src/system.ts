// What the module asks a system for: it has no files, and no surroundings. Of all other questions it is told that they
// cannot be answered.

const success = 0;
const noSuchCall = 52;

// A module whose one function is a trap. The library would catch what is thrown here, but no trap.
const trap = Uint8Array.of(
  ...[0x00, 0x61, 0x73, 0x6d, 0x01, 0x00, 0x00, 0x00], // WebAssembly, version 1
  ...[0x01, 0x04, 0x01, 0x60, 0x00, 0x00], // a type: nothing to nothing
  ...[0x03, 0x02, 0x01, 0x00], // a function of it
  ...[0x07, 0x08, 0x01, 0x04, 0x74, 0x72, 0x61, 0x70, 0x00, 0x00], // its name is "trap"
  ...[0x0a, 0x05, 0x01, 0x03, 0x00, 0x00, 0x0b], // unreachable
);

/** The imports that a compiled module wants. `memory()` is its memory, once it has one. */
export function importsOf(module: WebAssembly.Module, memory: () => DataView): WebAssembly.Imports {
  let wide = 0;
  const known: Record<string, (...values: never[]) => number> = {
    clock_time_get: (_clock: number, _precision: bigint, place: number) => {
      memory().setBigUint64(place, BigInt(Math.round(performance.now() * 1e6)), true);
      return success;
    },
    environ_sizes_get: (count: number, size: number) => {
      memory().setUint32(count, 0, true);
      memory().setUint32(size, 0, true);
      return success;
    },
    environ_get: () => success,
    proc_exit: () => {
      const { exports } = new WebAssembly.Instance(new WebAssembly.Module(trap));
      return (exports.trap as () => number)();
    },
    emscripten_notify_memory_growth: () => success,
    // Half of a result that is too wide for one.
    setTempRet0: (value: number) => {
      wide = value;
      return success;
    },
    getTempRet0: () => wide,
  };
  const imports: Record<string, Record<string, (...values: never[]) => number>> = {};
  for (const { module: from, name, kind } of WebAssembly.Module.imports(module)) {
    if (kind === "function") (imports[from] ??= {})[name] = known[name] ?? (() => noSuchCall);
  }
  return imports;
}
