"""Shears and rotations against models of their pages' formulas, to the bit."""

from __future__ import annotations

import models
import numpy as np
import pytest
import rotation_models
import tarvo
from hypothesis import given
from hypothesis import strategies as st
from models import Array, Color
from rotation_models import Frame
from samples import SIZES, random_array
from test_operations import arrays, colors

frames = st.one_of(st.none(), colors)
shears = st.one_of(st.sampled_from([-1.0, 0.0, 1.0]), st.floats(-1, 1))
rotations = st.one_of(st.sampled_from([0.0, 45.0, 90.0, 315.0, 359.9]), st.floats(0, 360, exclude_max=True))


def pixels_of(picture: tarvo.Picture, frame: Frame) -> Array:
    """With the mask, which there is unless there is a frame."""
    assert picture.has_mask == (frame is None)
    return picture.to_array("RGB" if frame is not None else "RGBA")


@given(arrays(), st.integers(1, 60), st.integers(1, 60), shears, frames)
def test_shears(a: Array, width: int, height: int, by: float, frame: Frame) -> None:
    p, levels = tarvo.from_array(a), rotation_models.levels_of(a, frame)
    told = {} if frame is None else {"frame_color": frame}
    for shear, model in (
        (p.shear_horizontal, rotation_models.shear_rows),
        (p.shear_vertical, rotation_models.shear_columns),
    ):
        expected = rotation_models.shown(model(levels, width, height, by, frame))
        np.testing.assert_array_equal(pixels_of(shear(width, height, by, **told), frame), expected)


@given(arrays(), rotations, frames)
def test_free_rotation_by_shear(a: Array, degrees: float, frame: Frame) -> None:
    told = {} if frame is None else {"frame_color": frame}
    result = tarvo.from_array(a).free_rotate_by_shear(degrees, **told)
    np.testing.assert_array_equal(pixels_of(result, frame), rotation_models.rotate_by_shear(a, degrees, frame))


@given(arrays(), rotations.filter(lambda degrees: degrees % 90 != 0), colors)
def test_direct_free_rotation(a: Array, degrees: float, frame: Color) -> None:
    result = tarvo.from_array(a).free_rotate_direct(degrees, frame)
    np.testing.assert_array_equal(pixels_of(result, frame), rotation_models.rotate_direct(a, degrees, frame))


@pytest.mark.parametrize("size", SIZES)
def test_whole_quarter_turns(size: tuple[int, int]) -> None:
    a = random_array(*size, 4)
    p = tarvo.from_array(a)
    for quarters in range(4):
        expected = models.flip_rotate(a, False, False, quarters)
        np.testing.assert_array_equal(p.free_rotate_by_shear(90 * quarters).to_array("RGBA"), expected)
        np.testing.assert_array_equal(p.free_rotate_direct(90 * quarters, 0).to_array("RGBA"), expected)
