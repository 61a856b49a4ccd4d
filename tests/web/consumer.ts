// A program that uses the package with its types. It is compiled only.

import { decode, description, load, type Picture, TarvoError } from "@tarvo/web";

export async function thumbnail(file: Uint8Array): Promise<Uint8Array> {
  await load();
  using photo: Picture = decode(file);
  using small = photo.apply("Stretch(fit(200))");
  const average = photo.call<{ red: number; green: number; blue: number }>("GetAverageRGB");
  const first: string | undefined = description().operations[0]?.summary;
  try {
    return small.call("AdjustContrast", { center: [average.red, average.green, average.blue], red_factor: 2 }).encodePng();
  } catch (error) {
    if (error instanceof TarvoError) console.error(error.status, error.code, error.operation, error.argument, first);
    throw error;
  }
}

// @ts-expect-error: an argument cannot be a function
export const wrong = (photo: Picture) => photo.call("Stretch", { width: () => 3 });
