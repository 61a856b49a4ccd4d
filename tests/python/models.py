"""Operations by the formulas of their pages, on arrays of height x width x 3 or, with a mask, x 4."""

from __future__ import annotations

import numpy as np
import numpy.typing as npt

Array = npt.NDArray[np.uint8]
Color = tuple[int, int, int]
Rect = tuple[int, int, int, int] | None
Factors = tuple[float, float, float]


def wide(a: npt.ArrayLike) -> npt.NDArray[np.int64]:
    return np.asarray(a, dtype=np.int64)


def wrapped(a: npt.NDArray[np.int64]) -> npt.NDArray[np.int64]:
    """Sums and products wrap in 32 bits."""
    return wide(a.astype(np.uint32).astype(np.int32))


def cut(a: npt.NDArray[np.int64], b: npt.ArrayLike) -> npt.NDArray[np.int64]:
    """A division that cuts fractions off."""
    return np.trunc(a / np.asarray(b, np.float64)).astype(np.int64)


def clamped(a: npt.NDArray[np.int64]) -> Array:
    return np.clip(a, 0, 255).astype(np.uint8)


def in_256ths(factors: Factors) -> npt.NDArray[np.int64]:
    return np.trunc(np.asarray(factors) * 256).astype(np.int64)


def part(array: Array, rect: Rect) -> tuple[slice, slice]:
    height, width, _ = array.shape
    if rect is None:
        return slice(0, height), slice(0, width)
    left, top, w, h = rect
    return slice(max(top, 0), min(top + h, height)), slice(max(left, 0), min(left + w, width))


def in_rect(array: Array, rect: Rect, changed: Array) -> Array:
    """The changed pixels in a part, all others as they are."""
    made = array[..., :3].copy()
    where = part(array, rect)
    made[where] = changed[where]
    return made


def level(mask: Array) -> npt.NDArray[np.int64]:
    """A mask's low byte: its blue channel."""
    return wide(mask[..., 2:3])


def mixed_in_256ths(x: Array, y: Array, mask: Array) -> Array:
    w = level(mask) + (level(mask) > 127)
    return ((wide(x) * (256 - w) + wide(y) * w) >> 8).astype(np.uint8)


def mixed_in_255ths(x: Array, y: npt.ArrayLike, mask: Array) -> Array:
    m = level(mask)
    return clamped(cut(wide(x) * (255 - m) + wide(y) * m, 255))


# --- tone ---


def contrast(x: Array, center: Color, factors: Factors) -> Array:
    c = wide(center)
    return clamped(c + (in_256ths(factors) * (wide(x[..., :3]) - c) // 256))


def gamma(x: Array, center: Color, factors: Factors) -> Array:
    c, f, x3 = wide(center), in_256ths(factors), wide(x[..., :3])
    d = 65280 - 256 * c
    safe = np.where(d == 0, 1, d)
    a = cut(wrapped(65280 * wrapped(c * (f - 256))), safe)
    b = cut(wrapped(wrapped(65280 - c * f) * 256), safe)
    return clamped(np.where(x3 <= c, cut(f * x3, 256), cut(wrapped(a + wrapped(b * x3)), 256)))


def average(x: Array, center: Color, weights: Factors) -> Array:
    w = in_256ths(weights)
    return clamped(cut(w * wide(center) + 256 * wide(x[..., :3]), w + 256))


def offsets(x: Array, deltas: tuple[int, int, int]) -> npt.NDArray[np.int64]:
    return wide(x[..., :3]) + wide(deltas)


def by_matrix(x: Array, matrix: npt.NDArray[np.float64]) -> npt.NDArray[np.int64]:
    k = np.trunc(matrix * 1024).astype(np.int64)
    return cut(wrapped(wide(x[..., :3]) @ k), 1024)


def matches(x: Array, darker: bool, and_threshold: bool, threshold: Color) -> npt.NDArray[np.bool_]:
    passed = x[..., :3] <= threshold if darker else x[..., :3] >= np.asarray(threshold)
    return np.asarray(passed.all(axis=-1) if and_threshold else passed.any(axis=-1))


def downsample(x: Array, bits: int) -> Array:
    step = 2 ** (8 - bits)
    return np.minimum(step * ((wide(x[..., :3]) * 2 + step) // (2 * step)), 255).astype(np.uint8)


def to_hsv(x: Array) -> tuple[npt.NDArray[np.int64], npt.NDArray[np.int64], npt.NDArray[np.int64]]:
    """Hue in 1024ths of 60 degrees (-1 for greys), saturation in 1024ths, value."""
    r, g, b = np.moveaxis(wide(x[..., :3]), -1, 0)
    value = np.maximum(np.maximum(r, g), b)
    delta = value - np.minimum(np.minimum(r, g), b)
    grey = delta == 0
    by = np.where(grey, 1, delta)
    hue = np.where(
        value == r,
        cut((g - b) * 1024, by),
        np.where(value == g, cut((b - r) * 1024, by) + 2048, cut((r - g) * 1024, by) + 4096),
    )
    hue = np.where(grey, -1, np.where(hue < 0, hue + 6144, hue))
    return hue, np.where(grey, 0, delta * 1024 // np.where(grey, 1, value)), value


def from_hsv(h: npt.NDArray[np.int64], s: npt.NDArray[np.int64], v: npt.NDArray[np.int64]) -> Array:
    sector, f = h // 1024, h % 1024
    p = (1024 - s) * v // 1024
    q = v * (1048576 - s * f) // 1048576
    t = v * (1048576 - s * (1024 - f)) // 1048576
    colors = [np.stack(c, -1) for c in ((v, t, p), (q, v, p), (p, v, t), (p, q, v), (t, p, v), (v, p, q))]
    made = np.choose(sector[..., np.newaxis], colors)
    return np.where((s == 0)[..., np.newaxis], v[..., np.newaxis], made).astype(np.uint8)


def hsv(x: Array, degrees: float, saturation: float, brightness: float) -> Array:
    h, s, v = to_hsv(x)
    h = h + int(np.floor(degrees * 1024 / 60))
    h = np.where(h < 0, h + 6144, h)
    h = np.where(h > 6143, h - 6144, h)
    s = np.clip(int(saturation * 1024) * s // 1024, 0, 1023)
    v = np.clip(int(brightness * 1024) * v // 1024, 0, 255)
    return from_hsv(h, s, v)


# --- combine ---


def difference(a: Array, b: Array) -> Array:
    height, width = max(a.shape[0], b.shape[0]), max(a.shape[1], b.shape[1])
    made = np.full((height, width, 3), (0xDD, 0xDD, 0xFF), np.uint8)
    made[: a.shape[0], : a.shape[1]] = (0xDD, 0xFF, 0xDD)
    h, w = min(a.shape[0], b.shape[0]), min(a.shape[1], b.shape[1])
    same = (a[:h, :w, :3] == b[:h, :w, :3]).all(axis=-1, keepdims=True)
    made[:h, :w] = np.where(same, (255, 255, 255), (255, 0, 0))
    return made


def laid_over(source: Array, overlay: Array, left: int, top: int) -> tuple[tuple[slice, slice], tuple[slice, slice]]:
    """Where the overlay lies in the source, and which part of it does."""
    height, width = source.shape[:2]
    h, w = overlay.shape[:2]
    y0, y1, x0, x1 = max(top, 0), min(top + h, height), max(left, 0), min(left + w, width)
    return (slice(y0, y1), slice(x0, x1)), (slice(y0 - top, y1 - top), slice(x0 - left, x1 - left))


def composite(source: Array, overlay: Array, fraction: float, left: int, top: int) -> Array:
    made = source[..., :3].copy()
    there, here = laid_over(source, overlay, left, top)
    a = int(fraction * 256)
    made[there] = (wide(made[there]) * (256 - a) + wide(overlay[here][..., :3]) * a) >> 8
    return made


def composite_color(source: Array, color: Color, fraction: float) -> Array:
    a, b = int(fraction * 256), int((1 - fraction) * 256)
    return ((wide(source[..., :3]) * b + wide(color) * a) >> 8).astype(np.uint8)


def composite_with_mask(source: Array, overlay: Array, mask: Array, left: int, top: int) -> Array:
    made = source[..., :3].copy()
    there, here = laid_over(source, overlay, left, top)
    made[there] = mixed_in_256ths(made[there], overlay[here][..., :3], mask[here])
    return made


def transition(s: Array, a: Array, b: Array, fraction: float) -> Array:
    wa, wb = int(fraction * 256), int((1 - fraction) * 256)
    near_a = (wide(a[..., :3]) * wa + wide(s[..., :3]) * wb) >> 8
    near_b = (wide(b[..., :3]) * wb + wide(s[..., :3]) * wa) >> 8
    return ((near_a * wa + near_b * wb) >> 8).astype(np.uint8)


# --- geometry, filters ---


def flip_rotate(x: Array, flip_h: bool, flip_v: bool, rotation: int) -> Array:
    flipped = x[:: -1 if flip_v else 1, :: -1 if flip_h else 1]
    return np.ascontiguousarray(np.rot90(flipped, -rotation))


def trim(x: Array, rect: tuple[int, int, int, int], color: Color) -> Array:
    left, top, width, height = rect
    made = np.full((height, width, 3), color, np.uint8)
    there, here = laid_over(made, x, -left, -top)
    if there[0].start < there[0].stop and there[1].start < there[1].stop:
        made[there] = x[here][..., :3]
    return made


def gradient(width: int, height: int, first: Color, last: Color) -> Array:
    d = height - 1
    rows = [np.asarray(first) * ((d - j) / d) + np.asarray(last) * (j / d) for j in range(height)]
    return np.repeat(np.trunc(rows).astype(np.uint8)[:, np.newaxis], width, axis=1)


def double_gradient(width: int, height: int, first: Color, middle: Color, last: Color) -> Array:
    upper = height // 2
    return np.concatenate([gradient(width, upper, first, middle), gradient(width, height - upper, middle, last)])


def pixelate(x: Array, rect: Rect, size: int) -> Array:
    """No block begins on a region's last row or column; blocks end where the picture does."""
    made = x[..., :3].copy()
    rows, columns = part(x, rect)
    for top in range(rows.start, rows.stop - 1, size):
        for left in range(columns.start, columns.stop - 1, size):
            block = made[top : top + size, left : left + size]
            block[...] = wide(block).sum(axis=(0, 1)) // (block.shape[0] * block.shape[1])
    return made


def ants(x: Array, rect: tuple[int, int, int, int], color: Color, shadow: Color, size: int, state: int) -> Array:
    """Two halves from the top left corner: along the top and down the right, down the left and along the bottom. The
    corner between is passed twice."""
    made = x[..., :3].copy()
    left, top, width, height = rect
    right, bottom = left + width - 1, top + height - 1
    over = [(top, c) for c in range(left, right + 1)] + [(r, right) for r in range(top, bottom + 1)]
    under = [(r, left) for r in range(top, bottom + 1)] + [(bottom, c) for c in range(left, right + 1)]
    for half in (over, under):
        for i, place in enumerate(half):
            made[place] = shadow if (state - i) % (2 * size) >= size else color
    return made


def memory_block(x: Array, rect: Rect) -> bytes:
    pixels = x[part(x, rect)][..., 2::-1]
    return np.concatenate([pixels, np.zeros_like(pixels[..., :1])], axis=-1).tobytes()


def along_rows(x: Array, kernel: list[int]) -> Array:
    total = sum(kernel)
    if total == 0:
        return x
    reach = len(kernel) // 2
    padded = np.pad(wide(x), ((0, 0), (reach, reach), (0, 0)), mode="edge")
    sums = sum(c * padded[:, k : k + x.shape[1]] for k, c in enumerate(kernel))
    return clamped(cut(wide(sums), total))


def convolute(x: Array, rect: Rect, horizontal: list[int], vertical: list[int]) -> Array:
    """Taps reach beyond the rectangle, and see there what the pass before has left."""
    across = in_rect(x, rect, along_rows(x[..., :3], horizontal))
    return in_rect(across, rect, along_rows(across.swapaxes(0, 1), vertical).swapaxes(0, 1))


def stretched_rows(x: Array, width: int) -> Array:
    """Source pixels give their weights, and result pixels collect theirs, in order."""
    length = x.shape[1]
    step = width * 32768 // length
    total = length * step // width
    given, taken = np.arange(length) * step, np.arange(width)[:, np.newaxis] * total
    weights = np.clip(np.minimum(given + step, taken + total) - np.maximum(given, taken), 0, None)
    return (np.einsum("ds,hsc->hdc", weights, wide(x)) // total).astype(np.uint8)


def stretch(x: Array, width: int, height: int) -> Array:
    """All channels alike: the mask, which is what a clear pixel has least of, is stretched as a picture."""
    if x.shape[2] == 4:
        x = np.concatenate([x[..., :3], 255 - x[..., 3:]], axis=-1)
    made = stretched_rows(stretched_rows(x, width).swapaxes(0, 1), height).swapaxes(0, 1)
    made[..., 3:] = 255 - made[..., 3:]
    return made
