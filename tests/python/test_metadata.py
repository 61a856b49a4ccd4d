"""What photographs carry, between files, operations, arrays and processes."""

from __future__ import annotations

import io
import pickle
from typing import Any

import numpy as np
import pytest
import tarvo
from PIL import Image, ImageCms

ORIENTATION, COPYRIGHT, PIXEL_WIDTH, EXIF_DIRECTORY = 0x0112, 0x8298, 0xA002, 0x8769
PACKET = b'<x:xmpmeta xmlns:x="adobe:ns:meta/"><rights>Anna</rights></x:xmpmeta>'


def photograph() -> bytes:
    """16 x 8 pixels that stand on their side."""
    exif = Image.Exif()
    exif[ORIENTATION] = 6
    exif[COPYRIGHT] = "Anna"
    exif.get_ifd(EXIF_DIRECTORY)[PIXEL_WIDTH] = 16
    profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    file = io.BytesIO()
    levels = np.arange(16 * 8 * 3, dtype=np.uint8).reshape(8, 16, 3)
    Image.fromarray(levels).save(
        file, "JPEG", exif=exif, icc_profile=profile, xmp=PACKET, dpi=(240, 120), quality=61
    )
    return file.getvalue()


def told_by_pillow(file: bytes) -> dict[str, Any]:
    with Image.open(io.BytesIO(file)) as image:
        return {**image.info, "tags": dict(image.getexif()), "size": image.size}


def test_is_read() -> None:
    data = photograph()
    photo = tarvo.decode(data)
    told = told_by_pillow(data)
    assert photo.size == (8, 16)
    assert photo.metadata.icc == told["icc_profile"] and len(photo.metadata.icc) > 128
    assert photo.metadata.xmp == PACKET
    assert photo.metadata.resolution == (120, 240)
    assert photo.metadata.iptc == b""
    assert b"Anna" in photo.metadata.exif and photo.metadata


@pytest.mark.parametrize("format", ["jpg", "png", "tif"])
def test_goes_through_operations_into_files(format: str) -> None:
    photo = tarvo.decode(photograph()).stretch(5, 7).apply("FlipRotate(true, false, 0)")
    told = told_by_pillow(photo.encode(format))
    assert told["size"] == (5, 7)
    assert told["tags"][ORIENTATION] == 1 and told["tags"][COPYRIGHT] == "Anna"
    assert told["icc_profile"] == photo.metadata.icc
    assert told["dpi"] == pytest.approx((120, 240), abs=0.02)
    again = tarvo.decode(photo.encode(format))
    assert again.metadata.xmp == PACKET


def test_may_be_stripped() -> None:
    photo = tarvo.decode(photograph())
    assert not tarvo.decode(photo.encode("png", strip=tarvo.Metadata._fields)).metadata
    without_place = tarvo.decode(photo.encode("png", strip=["exif", "xmp"])).metadata
    assert without_place == photo.metadata._replace(exif=b"", xmp=b"", resolution=without_place.resolution)
    assert not tarvo.decode(photo.encode("png", strip="icc")).metadata.icc
    with pytest.raises(ValueError, match="gps"):
        photo.encode("png", strip=["gps"])  # type: ignore[list-item]


def test_jpeg_of_jpeg_has_its_quality() -> None:
    photo = tarvo.decode(photograph())
    assert photo.encode("jpg") == photo.encode("jpg", quality=61)
    plain = tarvo.from_array(photo)
    assert plain is photo
    assert tarvo.from_array(photo, copy=True).encode("jpg", quality=61) != photo.encode("jpg")  # it carries nothing


def test_arrays_carry_nothing_and_may_be_given_it() -> None:
    photo = tarvo.decode(photograph())
    made = tarvo.from_array(255 - np.asarray(photo))
    assert made.metadata == tarvo.Metadata() and not made.metadata
    given = made.with_metadata(photo.metadata)
    assert given.metadata == photo.metadata
    assert given == made and np.shares_memory(np.asarray(given), np.asarray(made))
    assert given.with_metadata(tarvo.Metadata(iptc=b"\x1c\x02Z\0\4Bonn")).metadata.iptc == b"\x1c\x02Z\0\4Bonn"
    with pytest.raises(tarvo.Error):
        made.with_metadata(tarvo.Metadata(resolution=(1, -1)))


@pytest.mark.parametrize("protocol", range(2, pickle.HIGHEST_PROTOCOL + 1))
def test_is_pickled(protocol: int) -> None:
    photo = tarvo.decode(photograph())
    again = pickle.loads(pickle.dumps(photo, protocol))
    assert again == photo and again.metadata == photo.metadata


def test_srgb() -> None:
    data = photograph()
    photo = tarvo.decode(data, srgb=True)
    assert photo.metadata.icc == b"" and photo.metadata.xmp == PACKET
    difference = np.asarray(photo).astype(int) - np.asarray(tarvo.decode(data)).astype(int)
    assert abs(difference).max() <= 1
