"""Files, values, and what pictures are."""

from __future__ import annotations

import copy
import hashlib
import os
import pickle
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import tarvo
from samples import picture_of

PHOTO = Path(__file__).parents[2] / "examples/photos/coffee.png"


def test_first_page(tmp_path: Path) -> None:
    photo = tarvo.open(PHOTO)
    warm = photo.adjust_contrast(center="#808080", red_factor=1.6, green_factor=1.4, blue_factor=1.2)
    warm.save(tmp_path / "out.png")
    assert tarvo.open(tmp_path / "out.png") == warm
    assert np.asarray(warm).shape == (400, 600, 3)
    assert photo.size == (photo.width, photo.height) == (600, 400)
    assert not photo.has_mask
    assert repr(photo) == "<tarvo.Picture 600 x 400>"


@pytest.mark.parametrize("mask", [False, True])
@pytest.mark.parametrize("name", ["png", "tif", "webp", "pam", "ppm", "jpg"])
def test_formats(tmp_path: Path, name: str, mask: bool) -> None:
    picture = picture_of(33, 21, mask)
    path = tmp_path / f"picture.{name}"
    for told in (path, str(path), os.fsencode(path)):
        picture.save(told)
        assert path.read_bytes() == picture.encode(name) == picture.encode(f".{name}")
        assert tarvo.open(told) == tarvo.decode(path.read_bytes()) == tarvo.decode(bytearray(path.read_bytes()))
    if name in ("png", "tif", "webp", "pam"):
        assert tarvo.open(path) == picture
    if name == "ppm":
        np.testing.assert_array_equal(np.asarray(tarvo.open(path)), picture.to_array("RGB"))


def test_quality(tmp_path: Path) -> None:
    picture = tarvo.open(PHOTO)
    assert len(picture.encode("jpg", quality=10)) < len(picture.encode("jpg")) < len(picture.encode("jpg", 100))
    picture.save(tmp_path / "a.jpg", quality=92)
    assert (tmp_path / "a.jpg").read_bytes() == picture.encode("jpg")
    for wrong in (0, 101, -1):
        with pytest.raises(ValueError, match="1 to 100") as caught:
            picture.save(tmp_path / "a.jpg", quality=wrong)
        assert isinstance(caught.value, tarvo.Error) and caught.value.argument == "quality"


def test_files_that_the_system_refuses(tmp_path: Path) -> None:
    picture = picture_of(2, 2)
    with pytest.raises(FileNotFoundError) as caught:
        tarvo.open(tmp_path / "none.png")
    assert caught.value.filename == str(tmp_path / "none.png")
    with pytest.raises(IsADirectoryError):
        tarvo.open(tmp_path)
    with pytest.raises(FileNotFoundError):
        picture.save(tmp_path / "none" / "a.png")
    (tmp_path / "file").write_bytes(b"")
    with pytest.raises(NotADirectoryError):
        picture.save(tmp_path / "file" / "a.png")
    (tmp_path / "folder.png").mkdir()
    with pytest.raises(IsADirectoryError):
        picture.save(tmp_path / "folder.png")
    with pytest.raises(ValueError, match="zero byte"):
        tarvo.open("a\0b.png")
    with pytest.raises(TypeError):
        tarvo.open(5)  # type: ignore[arg-type]


@pytest.mark.parametrize("data", [b"", b"P", b"not a picture", PHOTO.read_bytes()[:100]])
def test_files_that_are_no_pictures(tmp_path: Path, data: bytes) -> None:
    path = tmp_path / "a.png"
    path.write_bytes(data)
    for read in (lambda: tarvo.open(path), lambda: tarvo.decode(data)):
        with pytest.raises(tarvo.Error) as caught:
            read()
        assert caught.value.status == tarvo.Status.FILE and not isinstance(caught.value, OSError)


def test_names_that_tell_no_format(tmp_path: Path) -> None:
    with pytest.raises(tarvo.Error, match="png"):
        picture_of(2, 2).save(tmp_path / "a.bogus")
    with pytest.raises(tarvo.Error, match="bogus"):
        picture_of(2, 2).encode("bogus")
    assert not list(tmp_path.iterdir())


def test_largest_pictures() -> None:
    assert tarvo.open(PHOTO, max_pixels=240000).size == (600, 400)
    for read in (lambda: tarvo.open(PHOTO, max_pixels=239999), lambda: tarvo.decode(PHOTO.read_bytes(), 239999)):
        with pytest.raises(tarvo.Error, match="239999") as caught:
            read()
        assert caught.value.status == tarvo.Status.LIMIT
    with pytest.raises(ValueError):
        tarvo.open(PHOTO, max_pixels=0)


def test_shown_in_notebooks() -> None:
    picture = picture_of(5, 4, mask=True)
    assert tarvo.decode(picture._repr_png_()) == picture


@pytest.mark.parametrize("mask", [False, True])
def test_equal_pictures(mask: bool) -> None:
    a, b, other = picture_of(9, 7, mask), picture_of(9, 7, mask), picture_of(9, 7, mask, seed=2)
    assert a == b and not a != b and hash(a) == hash(b) and a.sha256() == b.sha256()
    assert a != other and hash(a) != hash(other)
    assert len({a, b, other}) == 2
    assert a != picture_of(9, 7, not mask) and a != "picture"
    assert copy.copy(a) is a is copy.deepcopy(a)
    head = f"tarvo-pixels 1 9 7 {4 if mask else 3}\n".encode()
    assert a.sha256() == hashlib.sha256(head + np.asarray(a).tobytes()).hexdigest()


@pytest.mark.parametrize("mask", [False, True])
@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_pickles(protocol: int, mask: bool) -> None:
    a = picture_of(9, 7, mask)
    data = pickle.dumps(a, protocol)
    assert pickle.loads(data) == a and pickle.loads(data).has_mask == mask
    assert pickle.dumps(picture_of(9, 7, mask), protocol) == data
    assert pickle.dumps(pickle.loads(data), protocol) == data


def test_pickles_out_of_band() -> None:
    a = picture_of(90, 70)
    buffers: list[pickle.PickleBuffer] = []
    data = pickle.dumps(a, 5, buffer_callback=buffers.append)
    assert len(data) < 500 and len(buffers) == 1 and buffers[0].raw().nbytes == 90 * 70 * 3
    made = pickle.loads(data, buffers=buffers)
    assert made == a
    # The buffer may change later: a picture does not.
    mutable = bytearray(buffers[0].raw())
    made = pickle.loads(data, buffers=[mutable])
    mutable[:] = bytes(len(mutable))
    assert made == a


def test_pictures_are_not_made_by_hand() -> None:
    with pytest.raises(TypeError):
        tarvo.Picture()
    with pytest.raises(AttributeError):
        picture_of(2, 2).width = 3  # type: ignore[misc]
    with pytest.raises(AttributeError):
        picture_of(2, 2).note = 3  # type: ignore[attr-defined]


@pytest.mark.filterwarnings("ignore:nanobind")
def test_pictures_that_are_empty_do_no_harm() -> None:
    """Python can make them behind our back."""
    empty: Any = tarvo.Picture.__new__(tarvo.Picture)
    rectangle: Any = tarvo.Rectangle.__new__(tarvo.Rectangle)
    uses = [
        lambda: empty.width,
        lambda: empty.downsample(4),
        lambda: picture_of(2, 2).add(empty),
        lambda: memoryview(empty),
        lambda: np.array(empty),
        lambda: empty.apply("Downsample(4)"),
        lambda: pickle.dumps(empty),
        lambda: rectangle.left,
        lambda: picture_of(2, 2).pixelate(rectangle, 2),
    ]
    for use in uses:
        with pytest.raises((TypeError, ValueError, tarvo.Error)):
            use()


def test_results_without_a_reason_to_be_missed() -> None:
    with pytest.raises(tarvo.Error, match="nil|no result"):
        tarvo.convert_to_picture(b"no picture")


def test_foreign_objects_are_refused() -> None:
    adjust: Any = tarvo.Picture.downsample
    for wrong in (None, 5, "picture", np.zeros((2, 2, 3), np.uint8)):
        with pytest.raises((TypeError, tarvo.Error)):
            adjust(wrong, 4)
