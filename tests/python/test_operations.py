"""Operations against models of their pages' formulas, to the bit."""

from __future__ import annotations

import itertools

import models
import numpy as np
import pytest
import tarvo
from hypothesis import given
from hypothesis import strategies as st
from models import Array, Color, Factors, Rect
from samples import MASKS, SIZES, random_array

colors = st.tuples(*[st.integers(0, 255)] * 3)
factors = st.one_of(st.sampled_from([0.0, 1.0, 255.0, 0.00390625]), st.floats(0, 255))
three_factors = st.tuples(factors, factors, factors)
deltas = st.tuples(*[st.integers(-255, 255)] * 3)
sizes = st.sampled_from(SIZES)
seeds = st.integers(0, 1000)
fractions = st.one_of(st.sampled_from([0.0, 1.0, 0.3]), st.floats(0, 1))
# What is left of each in a picture of any size is at least its first pixel.
rects = st.one_of(
    st.none(),
    st.tuples(st.integers(-3, 0), st.integers(-3, 0), st.integers(4, 1100), st.integers(4, 1100)),
)


@st.composite
def arrays(draw: st.DrawFn) -> Array:
    width, height = draw(sizes)
    return random_array(width, height, 4 if draw(st.booleans()) else 3, draw(seeds))


def mask_for(array: Array, seed: int) -> tuple[Array, tarvo.Picture]:
    made = random_array(array.shape[1], array.shape[0], 3, seed)
    return made, tarvo.from_array(made)


def expect(result: tarvo.Picture, colors: Array, mask_of: Array | None = None) -> None:
    """Colours, and whether the mask is that of a source."""
    np.testing.assert_array_equal(result.to_array("RGB"), colors)
    kept = mask_of is not None and mask_of.shape[2] == 4
    assert result.has_mask == kept
    if kept and mask_of is not None:
        np.testing.assert_array_equal(result.to_array("RGBA")[..., 3], mask_of[..., 3])


@given(arrays(), rects, colors, three_factors, seeds)
def test_contrast(a: Array, rect: Rect, center: Color, f: Factors, seed: int) -> None:
    p = tarvo.from_array(a)
    changed = models.contrast(a, center, f)
    told = {"center": center, "red_factor": f[0], "green_factor": f[1], "blue_factor": f[2]}
    expect(p.adjust_contrast(rect, **told), models.in_rect(a, rect, changed), a)
    m, mask = mask_for(a, seed)
    expect(p.adjust_contrast_with_mask(mask, **told), models.mixed_in_256ths(a[..., :3], changed, m))


@given(arrays(), rects, colors, three_factors, seeds)
def test_gamma(a: Array, rect: Rect, center: Color, f: Factors, seed: int) -> None:
    p = tarvo.from_array(a)
    changed = models.gamma(a, center, f)
    told = {"center": center, "red_factor": f[0], "green_factor": f[1], "blue_factor": f[2]}
    expect(p.adjust_gamma(rect, **told), models.in_rect(a, rect, changed))
    m, mask = mask_for(a, seed)
    expect(p.adjust_gamma_with_mask(mask, **told), models.mixed_in_255ths(a[..., :3], changed, m))


@given(arrays(), rects, colors, three_factors, seeds)
def test_average_rgb(a: Array, rect: Rect, center: Color, w: Factors, seed: int) -> None:
    p = tarvo.from_array(a)
    changed = models.average(a, center, w)
    told = {"center": center, "red_weight": w[0], "green_weight": w[1], "blue_weight": w[2]}
    expect(p.average_rgb(rect, **told), models.in_rect(a, rect, changed), a)
    m, mask = mask_for(a, seed)
    expect(p.average_rgb_with_mask(mask, **told), models.mixed_in_255ths(a[..., :3], changed, m))


@given(arrays(), rects, deltas, seeds)
def test_rgb_offsets(a: Array, rect: Rect, d: tuple[int, int, int], seed: int) -> None:
    p = tarvo.from_array(a)
    changed = models.offsets(a, d)
    told = {"red_delta": d[0], "green_delta": d[1], "blue_delta": d[2]}
    expected = models.in_rect(a, rect, models.clamped(changed))
    expect(p.adjust_rgb(rect, **told), expected)
    np.testing.assert_array_equal(p.adjust_rgb_in_place(rect, **told).to_array("RGB"), expected)
    np.testing.assert_array_equal(p.to_array("RGB"), a[..., :3])
    m, mask = mask_for(a, seed)
    expect(p.adjust_rgb_with_mask(mask, **told), models.mixed_in_255ths(a[..., :3], changed, m))


@given(arrays(), rects, st.lists(st.floats(-8, 8), min_size=9, max_size=9), seeds)
def test_rgb_matrix(a: Array, rect: Rect, numbers: list[float], seed: int) -> None:
    p = tarvo.from_array(a)
    matrix = np.array(numbers).reshape(3, 3)
    changed = models.by_matrix(a, matrix)
    expected = models.in_rect(a, rect, models.clamped(changed))
    expect(p.adjust_rgb(rect, matrix), expected)
    expect(p.adjust_rgb(rect=rect, cm=tarvo.ColorMatrix(matrix)), expected)
    m, mask = mask_for(a, seed)
    expect(p.adjust_rgb_with_mask(mask, cm=matrix), models.mixed_in_255ths(a[..., :3], changed, m))


@given(arrays(), rects, st.booleans(), st.booleans(), colors, colors, seeds)
def test_threshold(
    a: Array, rect: Rect, darker: bool, both: bool, threshold: Color, target: Color, seed: int
) -> None:
    p = tarvo.from_array(a)
    match = models.matches(a, darker, both, threshold)[..., np.newaxis]
    told = {"darker": darker, "and_threshold": both, "threshold": threshold, "target": target}
    changed = np.where(match, np.array(target, np.uint8), a[..., :3])
    expect(p.threshold(rect, **told), models.in_rect(a, rect, changed))
    m, mask = mask_for(a, seed)
    mixed = np.where(match, models.mixed_in_255ths(a[..., :3], target, m), a[..., :3])
    expect(p.threshold_with_mask(mask, **told), mixed)


degrees = st.one_of(st.sampled_from([0.0, 120.0, -359.9, 359.9]), st.floats(-359.9, 359.9))
scales = st.one_of(st.sampled_from([0.0, 1.0, 9.99]), st.floats(0, 9.99))


@given(arrays(), rects, degrees, scales, scales, st.booleans(), seeds)
def test_hsv(a: Array, rect: Rect, turn: float, s: float, v: float, negative: bool, seed: int) -> None:
    p = tarvo.from_array(a)
    changed = models.hsv(a, turn, s, v)
    told = {"hue_degrees": turn, "saturation_factor": s, "brightness_factor": v}
    expected = models.in_rect(a, rect, changed)
    expect(p.adjust_hsv(rect, **told, negative=negative), 255 - expected if negative else expected, a)
    m, mask = mask_for(a, seed)
    expect(p.adjust_hsv_with_mask(mask, **told), models.mixed_in_255ths(a[..., :3], changed, m))


@given(arrays(), rects)
def test_average_hsv(a: Array, rect: Rect) -> None:
    pixels = models.wide(a[models.part(a, rect)][..., :3]).reshape(-1, 3)
    most, least = pixels.max(axis=1), pixels.min(axis=1)
    measured = tarvo.from_array(a).get_average_hsv(rect)
    saturation = np.where(most == 0, 0, (most - least) / np.where(most == 0, 1, most))
    # The order of a sum of doubles is not told.
    assert measured.saturation == pytest.approx(saturation.mean(), rel=1e-12)
    assert measured.brightness == pytest.approx((most / 256).mean(), rel=1e-12)
    r, g, b = (int(c) for c in pixels.sum(axis=0) // len(pixels))
    high, delta = max(r, g, b), max(r, g, b) - min(r, g, b)
    if delta == 0:
        return
    sixths = (g - b) / delta if high == r else 2 + (b - r) / delta if high == g else 4 + (r - g) / delta
    assert measured.hue_degrees == pytest.approx(sixths * 60 % 360, abs=1e-9)


@pytest.mark.parametrize(("size", "mask", "bits"), list(itertools.product(SIZES, MASKS, range(1, 9))))
def test_downsample(size: tuple[int, int], mask: bool, bits: int) -> None:
    a = random_array(*size, 4 if mask else 3)
    expect(tarvo.from_array(a).downsample(bits), models.downsample(a, bits))


@given(arrays(), seeds)
def test_add_and_subtract(a: Array, seed: int) -> None:
    b, other = mask_for(a, seed)
    p = tarvo.from_array(a)
    expect(p.add(other), a[..., :3] + b)
    expect(p.subtract(other), a[..., :3] - b)


@given(arrays(), arrays(), rects)
def test_compare_and_difference(a: Array, b: Array, rect: Rect) -> None:
    p, other = tarvo.from_array(a), tarvo.from_array(b)
    expect(p.difference(other), models.difference(a, b))
    where = models.part(a, rect)
    same = a.shape[:2] == b.shape[:2] and np.array_equal(a[where][..., :3], b[where][..., :3])
    assert p.compare(other, rect) == same
    assert p.compare(p, rect)


@given(arrays(), st.integers(1, 40), st.integers(1, 9), st.integers(-30, 900), st.integers(-8, 4), fractions, colors)
def test_composites(a: Array, w: int, h: int, left: int, top: int, fraction: float, color: Color) -> None:
    p = tarvo.from_array(a)
    b, mask = random_array(w, h, 3, 8), random_array(w, h, 3, 9)
    left, top = max(min(left, a.shape[1] - 1), 1 - w), max(min(top, a.shape[0] - 1), 1 - h)
    overlay = tarvo.from_array(b)
    expect(p.composite(overlay, fraction, left, top), models.composite(a, b, fraction, left, top), a)
    expect(
        p.composite_with_mask(overlay, tarvo.from_array(mask), left, top),
        models.composite_with_mask(a, b, mask, left, top),
    )
    expect(p.composite(overlay_color=color, overlay_fraction=fraction), models.composite_color(a, color, fraction))


@given(arrays(), fractions)
def test_transition(a: Array, fraction: float) -> None:
    b, first = mask_for(a, 5)
    c, second = mask_for(a, 6)
    expect(tarvo.from_array(a).transition(first, second, fraction), models.transition(a, b, c, fraction))


@pytest.mark.parametrize(("size", "mask"), list(itertools.product(SIZES, MASKS)))
def test_flip_rotate(size: tuple[int, int], mask: bool) -> None:
    a = random_array(*size, 4 if mask else 3)
    for flip_h, flip_v, rotation in itertools.product([False, True], [False, True], range(4)):
        made = models.flip_rotate(a, flip_h, flip_v, rotation)
        expect(tarvo.from_array(a).flip_rotate(flip_h, flip_v, rotation), made[..., :3], made)


@given(sizes, st.integers(-9, 1100), st.integers(-9, 9), st.integers(1, 1200), st.integers(1, 9), colors)
def test_trim(size: tuple[int, int], left: int, top: int, width: int, height: int, color: Color) -> None:
    a = random_array(*size, 3)
    rect = (left, top, width, height)
    expect(tarvo.from_array(a).trim(rect, color), models.trim(a, rect, color))


@given(st.integers(1, 1025), st.integers(2, 40), colors, colors)
def test_make_gradient(width: int, height: int, first: Color, last: Color) -> None:
    expect(tarvo.make_gradient(width, height, first, last), models.gradient(width, height, first, last))


@given(arrays(), rects, st.integers(1, 40))
def test_pixelate(a: Array, rect: Rect, size: int) -> None:
    expect(tarvo.from_array(a).pixelate(rect, size), models.pixelate(a, rect, size))


@given(st.integers(1, 1025), st.integers(4, 40), colors, colors, colors)
def test_make_double_gradient(width: int, height: int, first: Color, middle: Color, last: Color) -> None:
    expected = models.double_gradient(width, height, first, middle, last)
    expect(tarvo.make_double_gradient(width, height, first, middle, last), expected)


@given(st.sampled_from(SIZES[1:]), colors, colors, st.integers(1, 9), st.data())
def test_crawling_ants(size: tuple[int, int], color: Color, shadow: Color, ant: int, data: st.DataObject) -> None:
    a = random_array(*size, 3)
    left, top = data.draw(st.integers(0, size[0] - 2)), data.draw(st.integers(0, size[1] - 2))
    width, height = data.draw(st.integers(2, size[0] - left)), data.draw(st.integers(2, size[1] - top))
    state = data.draw(st.integers(0, 2 * ant - 1))
    rect = (left, top, width, height)
    expected = models.ants(a, rect, color, shadow, ant, state)
    expect(tarvo.from_array(a).crawling_ants(rect, color, shadow, ant, state), expected)


@given(arrays(), rects)
def test_measures(a: Array, rect: Rect) -> None:
    p = tarvo.from_array(a)
    pixels = models.wide(a[models.part(a, rect)][..., :3]).reshape(-1, 3)
    assert p.get_average_rgb(rect) == tuple(pixels.sum(axis=0) // len(pixels))
    distances = abs(pixels - (128, 64, 32))
    assert p.get_average_contrast(rect, (128, 64, 32)) == tuple(distances.sum(axis=0) // len(pixels))
    block = p.make_memory_block(rect, mask_to_alpha=False)
    rows, columns = models.part(a, rect)
    assert block == (models.memory_block(a, rect), 4 * (columns.stop - columns.start))
    assert p.row_bytes() == 4 * a.shape[1]
    assert f"width: {a.shape[1]}, height: {a.shape[0]}" in p.info()


@given(arrays())
def test_strings(a: Array) -> None:
    p = tarvo.from_array(a)
    assert tarvo.convert_to_picture(p.convert_to_string()) == p


kernels = st.lists(st.integers(-9, 9), min_size=1, max_size=21).filter(lambda k: len(k) % 2 == 1)


@given(arrays(), rects, kernels, kernels)
def test_convolute(a: Array, rect: Rect, horizontal: list[int], vertical: list[int]) -> None:
    p = tarvo.from_array(a)
    expected = models.convolute(a, rect, horizontal, vertical)
    expect(p.convolute(rect, horizontal, np.array(vertical)), expected)
    expect(p.convolute(rect, tarvo.Convolution(horizontal), tarvo.Convolution(vertical)), expected)


@given(arrays(), st.integers(1, 60), st.integers(1, 60))
def test_stretch(a: Array, width: int, height: int) -> None:
    made = models.stretch(a, width, height)
    expect(tarvo.from_array(a).stretch(width, height), made[..., :3], made)
