"""Between arrays and pictures; the table of copies in docs/python.md."""

from __future__ import annotations

import gc
import re
import weakref
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import tarvo
from PIL import Image
from samples import picture_of, random_array

ROOT = Path(__file__).parents[2]


def rows_of_table() -> list[tuple[str, str, str]]:
    page = (ROOT / "docs/python.md").read_text()
    table = page.split("<!-- copies -->")[1].split("<!-- /copies -->")[0]
    return re.findall(r"^\| `(.*)` \| (.*) \| (.*) \|$", table, re.M)


def test_table_is_found() -> None:
    assert len(rows_of_table()) >= 20


class Interface:
    """What has nothing but the array interface of a picture."""

    def __init__(self, told: dict[str, Any], owner: tarvo.Picture) -> None:
        self.__array_interface__ = told
        self.owner = owner


@pytest.mark.parametrize(("asked", "without", "masked"), rows_of_table(), ids=[r[0] for r in rows_of_table()])
def test_table(asked: str, without: str, masked: str) -> None:
    for expected, mask in ((without, False), (masked, True)):
        picture = picture_of(7, 5, mask)
        if expected.endswith("Error"):
            error = {"ValueError": ValueError, "AttributeError": AttributeError, "BufferError": BufferError}[expected]
            with pytest.raises(error):
                eval(asked)
            continue
        answer = eval(asked)
        if isinstance(answer, dict):
            answer = Interface(answer, picture)
        array = np.asarray(answer)
        memory = picture.to_array("XRGB", copy=False)
        assert np.shares_memory(array, memory) == (expected == "view")
        assert array.flags.writeable == (expected == "copy, writable")
        if expected == "view":
            channels, first = (4, 0) if "XRGB" in asked else (3, 1)
            assert array.shape == (5, 7, channels)
            assert array.strides == (memory.strides[0], 4, 1)
            assert array.__array_interface__["data"][0] == memory.__array_interface__["data"][0] + first
            with pytest.raises(ValueError):
                array.flags.writeable = True
        else:
            assert array.flags.c_contiguous
        colors = random_array(7, 5, 4 if mask else 3)[..., :3]
        np.testing.assert_array_equal(array[..., -3:] if "XRGB" in asked else array[..., :3], colors)
        if array.shape[2] == 4 and "XRGB" not in asked:
            alpha = random_array(7, 5, 4)[..., 3] if mask else 255
            assert (array[..., 3] == alpha).all()


def test_views_keep_the_picture() -> None:
    made = [np.asarray, memoryview, np.from_dlpack, lambda p: p.to_array("XRGB"), lambda p: np.asarray(p)[1:3, ::2]]
    for make in made:
        picture = picture_of(7, 5)
        alive = weakref.ref(picture)
        expected = np.array(make(picture))
        view = make(picture)
        del picture
        gc.collect()
        assert alive() is not None
        np.testing.assert_array_equal(np.asarray(view), expected)
        del view
        gc.collect()
        assert alive() is None


@pytest.mark.parametrize("channels", [None, 1, 3, 4])
def test_layouts_of_arrays(channels: int | None) -> None:
    shape = (9, 11) if channels in (None, 1) else (9, 11, channels)
    a = np.random.default_rng(2).integers(0, 256, shape, np.uint8)
    read_only = a.copy()
    read_only.flags.writeable = False
    large = np.zeros((20, 30, *shape[2:]), np.uint8)
    large[3:12, 4:15] = a
    variants = {
        "as it is": a,
        "read-only": read_only,
        "Fortran": np.asfortranarray(a),
        "upside down": a[::-1].copy()[::-1],
        "mirrored": a[:, ::-1].copy()[:, ::-1],
        "part": large[3:12, 4:15],
        "every second": np.repeat(np.repeat(a, 2, 0), 2, 1)[::2, ::2],
    }
    expected = np.repeat(a[..., np.newaxis], 3, 2) if a.ndim == 2 else a
    for name, variant in variants.items():
        np.testing.assert_array_equal(np.asarray(tarvo.from_array(variant)), expected, err_msg=name)
    zero = np.broadcast_to(a[:1], a.shape)
    np.testing.assert_array_equal(np.asarray(tarvo.from_array(zero)), np.broadcast_to(expected[:1], expected.shape))
    zero = np.broadcast_to(a[:, :1], a.shape)
    np.testing.assert_array_equal(
        np.asarray(tarvo.from_array(zero)), np.broadcast_to(expected[:, :1], expected.shape)
    )


def test_what_is_copied() -> None:
    a = random_array(7, 5, 3)
    picture = tarvo.from_array(a)
    a[...] = 0
    assert np.asarray(picture).any()
    with pytest.raises(ValueError, match="copy"):
        tarvo.from_array(a, copy=False)


def test_what_is_shared() -> None:
    picture = picture_of(20, 10)
    view = np.asarray(picture)
    assert tarvo.from_array(view) is picture
    assert tarvo.from_array(picture, copy=False) is picture
    assert tarvo.from_array(picture, copy=True) == picture is not tarvo.from_array(picture, copy=True)
    parts = [view[2:7, 3:9], view[::3, 1:], view[4:5, 5:6], view[9:, 19:]]
    for part in parts:
        made = tarvo.from_array(part, copy=False)
        assert np.shares_memory(np.asarray(made), view)
        assert made == tarvo.from_array(part.copy())
        assert made.downsample(3) == tarvo.from_array(part.copy()).downsample(3)
    for copied in (view[:, ::2], view[::-1], view[:, :, ::-1], picture.to_array("XRGB")[..., :3]):
        with pytest.raises(ValueError):
            tarvo.from_array(copied, copy=False)
        np.testing.assert_array_equal(np.asarray(tarvo.from_array(copied)), copied)
    # The colours of a picture with a mask are a picture without.
    masked = picture_of(20, 10, mask=True)
    colors = tarvo.from_array(masked.to_array("RGB"), copy=False)
    assert not colors.has_mask and np.shares_memory(np.asarray(colors), masked.to_array("RGB"))


def test_a_shared_part_outlives_its_picture() -> None:
    picture = picture_of(20, 10)
    expected = np.array(picture)[2:5]
    part = tarvo.from_array(np.asarray(picture)[2:5], copy=False)
    del picture
    gc.collect()
    np.testing.assert_array_equal(np.asarray(part), expected)


@pytest.mark.parametrize(
    "array",
    [*(np.zeros((2, 2), kind) for kind in (np.float64, np.int8, bool, object)), "picture", None],
)
def test_types_that_are_refused(array: Any) -> None:
    with pytest.raises(TypeError, match="uint8"):
        tarvo.from_array(array)


@pytest.mark.parametrize("shape", [(), (3,), (0, 3), (3, 0, 3), (2, 2, 2), (2, 2, 5), (2, 2, 0), (1, 2, 3, 4)])
def test_shapes_that_are_refused(shape: tuple[int, ...]) -> None:
    with pytest.raises(ValueError, match="height x width"):
        tarvo.from_array(np.zeros(shape, np.uint8))


def test_sides_beyond_the_longest() -> None:
    with pytest.raises(tarvo.Error, match="32767") as caught:
        tarvo.from_array(np.zeros((1, 32768), np.uint8))
    assert caught.value.status == tarvo.Status.LIMIT


def test_pillow() -> None:
    a = random_array(7, 5, 4)
    rgba = Image.fromarray(a)
    modes = {"RGBA": "RGBA", "RGB": "RGB", "L": "L", "P": "RGB", "1": "RGB", "CMYK": "RGB", "LA": "RGBA"}
    for mode, plain_mode in modes.items():
        image = (rgba if plain_mode == "RGBA" else rgba.convert("RGB")).convert(mode)
        plain = image.convert(plain_mode)
        made = tarvo.from_array(image)
        expected = np.asarray(plain)
        expected = np.repeat(expected[..., np.newaxis], 3, 2) if expected.ndim == 2 else expected
        np.testing.assert_array_equal(np.asarray(made), expected, err_msg=mode)
    assert Image.fromarray(np.asarray(tarvo.from_array(rgba))).tobytes() == rgba.tobytes()


def test_other_modes() -> None:
    with pytest.raises(ValueError, match="'BGR'"):
        picture_of(2, 2).to_array("BGR")  # type: ignore[arg-type]
    as_float = np.asarray(picture_of(2, 2), dtype=np.float32)
    assert as_float.dtype == np.float32 and as_float.flags.writeable


@pytest.mark.parametrize("mask", [False, True])
@pytest.mark.parametrize("depth", [16, 24])
def test_pictures_of_fewer_bits(depth: int, mask: bool) -> None:
    """They come from picture strings alone; their pixels are always copied."""
    string = bytearray(picture_of(7, 5, mask).convert_to_string())
    string[8:10] = depth.to_bytes(2, "big")
    picture = tarvo.convert_to_picture(string)
    assert picture.has_mask == mask and f"depth: {depth}" in picture.info()
    colors = picture.to_array(copy=True)
    given = random_array(7, 5, 4 if mask else 3)[..., :3]
    # Five bits, of which the upper ones are repeated below.
    np.testing.assert_array_equal(colors, given & 0xF8 | given >> 5 if depth == 16 else given)
    array = np.asarray(picture)
    assert array.shape == (5, 7, 4 if mask else 3) and array.flags.c_contiguous and not array.flags.writeable
    np.testing.assert_array_equal(array[..., :3], colors)
    np.testing.assert_array_equal(picture.to_array("XRGB")[..., 1:], colors)
    assert tarvo.from_array(array) == picture
    with pytest.raises(ValueError, match="copy"):
        picture.to_array(copy=False)
    with pytest.raises(BufferError):
        memoryview(picture)
