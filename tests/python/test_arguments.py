"""Arguments: bounds by the description, wrong types, names, and what fails how."""

from __future__ import annotations

import math
import pickle
from collections.abc import Iterator
from typing import Any

import numpy as np
import pytest
import tarvo
from samples import ALL_FORMS, call, picture_of, usual_arguments


def bounds() -> Iterator[tuple[dict[str, Any], int, dict[str, Any], str]]:
    for operation, form in ALL_FORMS:
        for argument in operation["arguments"]:
            if form not in argument["forms"] or argument["by_ref"]:
                continue
            for bound in ("minimum", "maximum"):
                if isinstance(argument[bound], int | float):
                    yield operation, form, argument, bound


def beyond(argument: dict[str, Any], bound: str) -> Any:
    direction = -1 if bound == "minimum" else 1
    if argument["type"] == "integer":
        return int(argument[bound]) + direction
    return math.nextafter(argument[bound], direction * math.inf)


def within(argument: dict[str, Any], bound: str) -> Any:
    exclusive = argument["exclusiveMinimum" if bound == "minimum" else "exclusiveMaximum"]
    direction = 1 if bound == "minimum" else -1
    if argument["type"] == "integer":
        return int(argument[bound]) + (direction if exclusive else 0)
    return math.nextafter(argument[bound], direction * math.inf) if exclusive else float(argument[bound])


@pytest.mark.parametrize(
    ("operation", "form", "argument", "bound"),
    list(bounds()),
    ids=[f"{o['name']}-{f}-{a['name']}-{b}" for o, f, a, b in bounds()],
)
def test_bounds(operation: dict[str, Any], form: int, argument: dict[str, Any], bound: str) -> None:
    this = picture_of(7, 5)
    arguments = usual_arguments(operation, this, form)
    call(operation, this, arguments | {argument["name"]: within(argument, bound)})

    outside = arguments | {argument["name"]: beyond(argument, bound)}
    # Some give a result all the same.
    if any(e["argument"] == argument["name"] and e["result"] == "picture" for e in operation["errors"]):
        with pytest.warns(tarvo.ResultWarning, match=f"code {argument['code']}"):
            assert isinstance(call(operation, this, outside), tarvo.Picture)
        return
    with pytest.raises(tarvo.Error, match=argument["name"]) as caught:
        call(operation, this, outside)
    assert isinstance(caught.value, ValueError)
    assert caught.value.status == tarvo.Status.OPERATION
    assert (caught.value.code, caught.value.operation) == (argument["code"], operation["name"])
    assert caught.value.argument == argument["name"]
    assert argument["range"] in str(caught.value)
    assert repr(pickle.loads(pickle.dumps(caught.value))) == repr(caught.value)


WRONG = {
    "integer": ["1", 1.0, None, True, [1], b"1", 1j],
    "double": ["1", None, True, [1.0], 1j],
    "boolean": [0, 1, None, "yes"],
    "color": [1.5, None, True, (1, 2), (1.0, 2.0, 3.0), [1, 2, 3, 4], b"#000000", {1, 2, 3}],
    "string": [1, None, [1]],
    "picture": [1, "a.png", np.zeros((2, 2, 3), np.uint8), (0, 0, 1, 1)],
    "TRV_Rectangle": [1, "0123", (0, 0, 1.5, 1), 1.5],
    "TRV_ColorMatrix": [1j, "matrix", object()],
    "TRV_Convolution": [1, "1", [1.5], [[1], [2], [3]]],
}


@pytest.mark.parametrize(("operation", "form"), ALL_FORMS, ids=[f"{o['name']}-{f}" for o, f in ALL_FORMS])
def test_wrong_types(operation: dict[str, Any], form: int) -> None:
    this = picture_of(7, 5)
    arguments = usual_arguments(operation, this, form)
    for argument in operation["arguments"]:
        if argument["name"] not in arguments or form not in argument["forms"]:
            continue
        others = [f for o, f in ALL_FORMS if o is operation and f not in argument["forms"]]
        for wrong in WRONG[argument["type"]]:
            if wrong is None and others:
                continue  # left out
            with pytest.raises(TypeError) as caught:
                call(operation, this, arguments | {argument["name"]: wrong})
            assert argument["name"] in str(caught.value), wrong
        if argument["required"]:
            missing = {k: v for k, v in arguments.items() if k != argument["name"]}
            if not others:
                with pytest.raises(TypeError, match=argument["name"]):
                    call(operation, this, missing)
    with pytest.raises(TypeError, match="misspelt|fit none"):
        call(operation, this, arguments | {"misspelt": 1})


def test_numbers_beyond_their_type() -> None:
    this = picture_of(3, 3)
    for number in (2**31, -(2**31) - 1, 2**100):
        with pytest.raises(tarvo.OutOfRangeError, match="width is") as caught:
            this.stretch(number, 1)
        assert isinstance(caught.value, ValueError) and caught.value.argument == "width"
    with pytest.raises(tarvo.OutOfRangeError, match="shear"):
        this.shear_horizontal(3, 3, 10**400)


@pytest.mark.parametrize(
    "color", ["#12345", "123456", "#12345g", "", "#1234567", "é#12345", -1, 0x1000000, (0, 0, 256), (-1, 0, 0)]
)
def test_colors_that_are_none(color: Any) -> None:
    with pytest.raises(ValueError, match="frame_color") as caught:
        picture_of(3, 3).trim((0, 0, 9, 9), color)
    assert isinstance(caught.value, tarvo.Error)


@pytest.mark.parametrize(
    "color",
    [
        "#8040fF",
        0x8040FF,
        (128, 64, 255),
        [128, 64, 255],
        np.array([128, 64, 255], np.uint8),
        np.int64(0x8040FF),
    ],
)
def test_colors(color: Any) -> None:
    corner = picture_of(3, 3).trim((0, 0, 9, 9), color).to_array()[-1, -1]
    assert tuple(corner) == (128, 64, 255)


def test_numbers_of_numpy() -> None:
    this = picture_of(3, 3)
    assert this.stretch(np.int8(5), np.uint16(4)).size == (5, 4)
    assert this.composite(this, np.float32(0.5), 0, 0) == this.composite(this, 0.5, 0, 0)
    assert this.flip_rotate(np.bool_(True), False, 0) == this.flip_rotate(True, False, 0)


def test_places_and_names() -> None:
    this = picture_of(9, 7)
    by_name = this.adjust_contrast(rect=(1, 1, 4, 4), center=0, red_factor=2, green_factor=1, blue_factor=0)
    assert this.adjust_contrast((1, 1, 4, 4), 0, 2, 1, 0) == by_name
    assert this.TRV_AdjustContrast((1, 1, 4, 4), 0, 2, 1, blue_factor=0) == by_name
    assert this.adjust_contrast(tarvo.Rectangle(1, 1, 4, 4), 0, 2, 1, 0) == by_name
    with pytest.raises(TypeError):
        this.adjust_contrast((1, 1, 4, 4), 0, 2, 1, 0, 0)  # type: ignore[call-overload]
    assert tarvo.make_gradient(30, 20, "#000000", "#ffffff").size == (30, 20)
    assert this.free_rotate_by_shear(30).has_mask
    assert not this.free_rotate_by_shear(30, "#ffffff").has_mask


def test_forms_of_one_name() -> None:
    this, other = picture_of(9, 7), picture_of(3, 3)
    by_offsets = this.adjust_rgb(None, 1, 2, 3)
    assert this.adjust_rgb(red_delta=1, green_delta=2, blue_delta=3) == by_offsets
    assert this.adjust_rgb(None, 1, 2, blue_delta=3) == by_offsets
    assert this.adjust_rgb(cm=tarvo.ColorMatrix()) == this == this.adjust_rgb(None, np.eye(3))
    assert this.composite(other, 0.5, 0, 0) != this.composite((0, 0, 3, 3), "#000000", 0.5)
    for wrong in ({"red_delta": 1}, {"red_delta": 1, "cm": np.eye(3)}, {"green": 1}):
        with pytest.raises(TypeError, match="adjust_rgb"):
            this.adjust_rgb(**wrong)
    with pytest.raises(TypeError, match="fit none"):
        this.adjust_rgb(None, 1, 2, 3, red_delta=1)  # type: ignore[call-overload]


def test_what_is_asked_while_it_works() -> None:
    this = picture_of(700, 700)
    asked = []
    assert this.stretch(900, 900, progress=lambda: asked.append(1)).size == (900, 900)
    assert len(asked) > 3
    asked.clear()

    def twice() -> bool:
        asked.append(1)
        return len(asked) < 2

    with pytest.raises(tarvo.Error, match="stopped") as caught:
        this.stretch(900, 900, progress=twice)
    assert caught.value.status == tarvo.Status.CANCELLED and len(asked) == 2
    with pytest.raises(ZeroDivisionError):
        this.stretch(900, 900, progress=lambda: 1 / 0)
    with pytest.raises(TypeError, match="progress"):
        this.stretch(900, 900, progress=5)  # type: ignore[call-overload]
    # It may call the library.
    assert this.stretch(900, 900, progress=lambda: this.stretch(2, 2)) == this.stretch(900, 900)


def test_limits_and_missing_pictures() -> None:
    this = picture_of(3, 3)
    with pytest.raises(tarvo.Error, match="32767") as caught:
        this.stretch(40000, 1)
    assert caught.value.status == tarvo.Status.LIMIT
    with pytest.raises(tarvo.Error) as caught:
        this.add(None)  # type: ignore[arg-type]
    assert caught.value.code == 18


def test_rectangles() -> None:
    r = tarvo.Rectangle(1, 2, 3, 4)
    assert tuple(r) == (1, 2, 3, 4) and r == (1, 2, 3, 4) and r != (1, 2, 3, 5) and len(r) == 4
    assert (r.right, r.bottom, r.area()) == (3, 5, 12)
    r.left = 10
    r.union_with((0, 0, 1, 1))
    assert r == tarvo.Rectangle(0, 0, 13, 6)
    assert r.contains((1, 1, 2, 2)) and not r.equals((1, 1, 2, 2))
    assert repr(r) == "tarvo.Rectangle(0, 0, 13, 6)"
    assert "valid" in (r.message_box() or "")
    assert pickle.loads(pickle.dumps(r)) == r
    with pytest.raises(tarvo.OutOfRangeError):
        tarvo.Rectangle(2**40)
    with pytest.raises(TypeError):
        hash(r)
    with pytest.raises(ValueError, match="trim_rect"):
        picture_of(3, 3).trim((1, 2, 3), 0)


def test_matrices() -> None:
    m = tarvo.ColorMatrix()
    np.testing.assert_array_equal(np.asarray(m), np.eye(3))
    m[0, 2] = 0.5
    assert m[0, 2] == m.value(0, 2) == 0.5
    assert pickle.loads(pickle.dumps(m)) == m == tarvo.ColorMatrix(m) != tarvo.ColorMatrix()
    copy = tarvo.ColorMatrix()
    copy.copy_from(m)
    assert copy == m
    with pytest.raises(IndexError):
        m[3, 0]
    for wrong in ([[1, 2], [3, 4]], [1] * 9, 5):
        with pytest.raises(ValueError, match="3 x 3"):
            tarvo.ColorMatrix(wrong)  # type: ignore[arg-type]


def test_convolutions() -> None:
    c = tarvo.Convolution([1, 2, 1])
    assert (c.width, len(c), c.coefficients) == (3, 3, (1, 2, 1))
    assert pickle.loads(pickle.dumps(c)) == c == tarvo.Convolution(np.array([1, 2, 1])) != tarvo.Convolution()
    for wrong in ([1, 2], [1] * 23):
        with pytest.raises(ValueError, match="coeffs"):
            c.set_coefficients(wrong)
    assert c.coefficients == (1, 2, 1) and c.width == 3


def test_calls_by_text() -> None:
    this = picture_of(30, 20)
    assert this.apply("Stretch(fit(60))", "Downsample(4)") == this.stretch(60, 40).downsample(4)
    assert this.apply("Stretch(fit(60))", "RowBytes()") == 240
    assert this.apply("GetAverageRGB(nil, r, g, b)") == this.get_average_rgb()
    assert this.apply("RowBytes()", "Downsample(4)") == this.downsample(4)
    assert this.apply() is this
    assert tarvo.apply("MakeGradient(30, 20, &c000000, &cFFFFFF)", "Stretch(fit(60))").size == (60, 40)
    for wrong in ("Bogus()", "Stretch(", "Add(/etc/passwd)", "Stretch(1, 2, 3, 4, 5)"):
        with pytest.raises(tarvo.Error) as caught:
            this.apply(wrong)
        assert caught.value.status == tarvo.Status.USE
    with pytest.raises(tarvo.OutOfRangeError, match="width"):
        this.apply("Stretch(0, 1)")
