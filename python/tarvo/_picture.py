"""Pictures: between files, arrays and operations."""

from __future__ import annotations

import os
import pickle
from collections.abc import Callable, Iterable
from typing import Any, Literal, NoReturn, TypeAlias, TypeVar

import numpy as np
import numpy.typing as npt

from . import _native, _operations
from ._errors import CopyNeeded, Error, Status, cannot_read, cannot_write
from ._metadata import BYTES_KINDS, Metadata, MetadataKind, added_up
from ._types import Pixels, Progress

__all__ = ["Mode", "Picture", "apply", "decode", "from_array", "open"]

Mode: TypeAlias = Literal["RGB", "RGBA", "XRGB"]
_Path: TypeAlias = str | bytes | os.PathLike[str] | os.PathLike[bytes]
_Done = TypeVar("_Done")

# In memory a pixel is four bytes: one that means nothing, red, green, blue.
_PIXEL = 4
_FIRST = {"RGB": 1, "XRGB": 0}
_CHANNELS = {"RGB": 3, "RGBA": 4, "XRGB": 4}
_CPU = (1, 0)  # as DLPack counts devices


class Picture(_operations.PictureOperations, _native.Picture):
    """A picture. It never changes: operations give new ones. Threads may share it, and np.asarray() shows its memory."""

    __slots__ = ()

    @property
    def size(self) -> tuple[int, int]:
        """Width and height."""
        return self.width, self.height

    def __repr__(self) -> str:
        return f"<tarvo.Picture {self.width} x {self.height}{', mask' if self.has_mask else ''}>"

    # --- files ---

    def save(self, path: _Path, quality: int | None = None, strip: Iterable[MetadataKind] = ()) -> None:
        """Writes the format that the name's ending tells: .png .jpg .jpeg .tif .tiff .webp .pbm .pgm .ppm .pam .trv. The
        file appears whole or not at all. PNG, TIFF, WebP and PAM keep the mask. `quality` is that of JPEG and WebP, 1 to
        100; unless given, that of the JPEG file the picture comes from, or 92, and WebP loses nothing. Of the metadata,
        what is in `strip` is left out."""
        name = os.fsencode(path)
        _of_file(name, lambda: self._save(name, quality, added_up(strip)), cannot_write)

    def encode(self, format: str, quality: int | None = None, strip: Iterable[MetadataKind] = ()) -> bytes:
        """The bytes of a file: "png", "jpg", "tif", "webp", "pbm", "pgm", "ppm", "pam" or "trv"."""
        return self._encode(format, quality, added_up(strip))

    def _repr_png_(self) -> bytes:
        return self.encode("png")

    @property
    def metadata(self) -> Metadata:
        """What the picture's file carried besides pixels. Results of operations have it, too, and files get it. Exif is that
        of the picture as it was read: upright, with its size, without a preview."""
        return Metadata(*(self._metadata(kind) for kind in BYTES_KINDS.values()), resolution=self._resolution())

    def with_metadata(self, metadata: Metadata) -> Picture:
        """The same pixels with other metadata: tarvo.from_array(changed).with_metadata(photo.metadata)."""
        made = self
        for name, kind in BYTES_KINDS.items():
            made = made._with_metadata(kind, getattr(metadata, name))
        return made._with_resolution(*(metadata.resolution or (0, 0)))

    # --- arrays ---

    def to_array(self, mode: Mode = "RGB", copy: bool | None = None) -> Pixels:
        """Height x width x channels. RGB and XRGB show the picture's memory, read-only and without a copy, where its pixels
        have 32 bits; RGBA is a copy. With copy=True the array is one's own, writable and contiguous; with copy=False what
        takes a copy raises ValueError."""
        if mode not in _CHANNELS:
            raise ValueError(f"mode is {mode!r}, allowed are {', '.join(map(repr, _CHANNELS))}")
        address, row_bytes = self._address()
        if address and mode in _FIRST and not copy:
            return np.asarray(_Memory(self, address + _FIRST[mode], row_bytes, _CHANNELS[mode]))
        if copy is False:
            raise CopyNeeded(f"{mode} of this picture is not in its memory: it takes a copy")
        array: Pixels = np.empty((self.height, self.width, _CHANNELS[mode]), np.uint8)
        self._to_rows(array, mode)
        array.flags.writeable = bool(copy)
        return array

    def _usual(self, copy: bool | None) -> Pixels:
        return self.to_array("RGBA" if self.has_mask else "RGB", copy)

    def __array__(self, dtype: npt.DTypeLike | None = None, copy: bool | None = None) -> npt.NDArray[Any]:
        if dtype is None or np.dtype(dtype) == np.uint8:
            return self._usual(copy)
        if copy is False:
            raise CopyNeeded(f"pixels as {np.dtype(dtype)} take a copy")
        return self._usual(None).astype(dtype)

    @property
    def __array_interface__(self) -> dict[str, Any]:
        address, row_bytes = self._address()
        if not address or self.has_mask:
            raise AttributeError("the array interface shows a picture's own memory, and this one has to be copied")
        return _Memory(self, address + _FIRST["RGB"], row_bytes, _CHANNELS["RGB"]).__array_interface__

    def __dlpack__(
        self,
        *,
        stream: None = None,
        max_version: tuple[int, int] | None = None,
        dl_device: tuple[int, int] | None = None,
        copy: bool | None = None,
    ) -> Any:
        told: dict[str, Any] = {"stream": stream, "max_version": max_version, "dl_device": dl_device, "copy": copy}
        return self._usual(copy).__dlpack__(**told)

    def __dlpack_device__(self) -> tuple[int, int]:
        return _CPU

    # --- operations by text ---

    def apply(self, *calls: str, progress: Progress | None = None) -> Any:
        """Calls one operation after the other, written as for the tool: photo.apply("Stretch(fit(800, 600))"). A call that
        gives no picture leaves the one in hand as it is. Returns what the last call gives."""
        in_hand: Picture = self
        answer: Any = self
        for call in calls:
            answer = _applied(call, in_hand, progress)
            if isinstance(answer, Picture):
                in_hand = answer
        return answer

    # --- values ---

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Picture):
            return NotImplemented
        if self is other:
            return True
        return (self.size, self.has_mask) == (other.size, other.has_mask) and self.sha256() == other.sha256()

    def __hash__(self) -> int:
        return hash(self.sha256())

    def __copy__(self) -> Picture:
        return self

    def __deepcopy__(self, memo: object) -> Picture:
        return self

    def __reduce_ex__(self, protocol: Any) -> tuple[Any, ...]:
        pixels = self._usual(copy=True)
        memory = pickle.PickleBuffer(pixels) if protocol >= 5 else pixels.tobytes()
        return _unpickled, (pixels.shape, memory, *self.metadata)


class _Memory:
    """A picture's memory as an array, which keeps the picture."""

    def __init__(self, picture: Picture, address: int, row_bytes: int, channels: int) -> None:
        self.picture = picture
        self.__array_interface__ = {
            "version": 3,
            "typestr": "|u1",
            "shape": (picture.height, picture.width, channels),
            "strides": (row_bytes, _PIXEL, 1),
            "data": (address, True),
        }


def _unpickled(shape: tuple[int, int, int], pixels: Any, *metadata: Any) -> Picture:
    made = _copied(np.frombuffer(pixels, np.uint8).reshape(shape))
    return made.with_metadata(Metadata(*metadata)) if any(metadata) else made


def _of_file(path: bytes, work: Callable[[], _Done], reason: Callable[[bytes], OSError | None]) -> _Done:
    """What fails because of the system raises the system's error."""
    if b"\0" in path:
        raise ValueError("a path cannot hold a zero byte")
    try:
        return work()
    except Error as error:
        because = reason(path) if error.status == Status.FILE else None
        if because is None:
            raise
        # The name as text, as the system's own errors have it.
        raise OSError(because.errno, because.strerror, os.fsdecode(path)) from error


def _bound(max_pixels: int | None) -> int:
    if max_pixels is None:
        return 0
    if max_pixels < 1:
        raise ValueError(f"max_pixels is {max_pixels}, allowed is 1 and above")
    return max_pixels


def open(path: _Path, max_pixels: int | None = None, srgb: bool = False) -> Picture:
    """Reads a PNG, JPEG, TIFF, WebP, PBM, PGM, PPM or PAM file, told by its content, or a .trv file; transparency becomes
    the picture's mask. A file of more than `max_pixels`, 268,435,456 unless given, is refused. With `srgb` the colours
    become those of sRGB by the file's profile, which the picture then has no more."""
    name, bound = os.fsencode(path), _bound(max_pixels)
    return _of_file(name, lambda: _native.open(name, bound, srgb), cannot_read)


def decode(data: Any, max_pixels: int | None = None, srgb: bool = False) -> Picture:
    """Reads the bytes of a file, as open() reads it."""
    return _native.decode(data, _bound(max_pixels), srgb)


def apply(call: str, *calls: str, progress: Progress | None = None) -> Any:
    """Calls an operation that makes a picture of nothing, and others on what it gives."""
    answer = _applied(call, None, progress)
    if not calls:
        return answer
    if not isinstance(answer, Picture):
        raise TypeError(f"{call} gives no picture to go on with")
    return answer.apply(*calls, progress=progress)


_OUTPUTS = sorted({name for names in _operations.GATHERED for name in names} | {"message"})


def _applied(call: str, picture: Picture | None, progress: Progress | None) -> Any:
    value, outputs = _native.apply(call, picture, progress, _OUTPUTS)
    if not outputs:
        return value
    if set(outputs) == {"message"}:
        return outputs["message"] if value is None else value
    for names, gathered in _operations.GATHERED.items():
        if set(names) - {"result"} == set(outputs):
            return gathered(**({"result": value} if "result" in names else {}), **outputs)
    raise AssertionError(outputs)


# --- arrays to pictures ---


def from_array(a: Any, copy: bool | None = None) -> Picture:
    """A picture of an array of uint8: (height, width) are greys, (height, width, 3) R, G, B, and (height, width, 4) R, G,
    B, A, of which A becomes the mask. What has the array interface will do, and Pillow's images. Arrays may change and are
    copied; only what np.asarray() has shown of a picture, and parts of that, is shared. With copy=False anything else
    raises ValueError."""
    if isinstance(a, Picture):
        return _copied(a._usual(copy=True)) if copy else a
    array = np.asarray(_plain(a))
    if array.dtype != np.uint8:
        raise TypeError(f"an array of uint8 is expected, not of {array.dtype}")
    shared = None if copy else _shared(array)
    if shared is not None:
        return shared
    if copy is False:
        raise CopyNeeded("an array may change, and a picture never does: it takes a copy")
    return _copied(array)


def _plain(a: Any) -> Any:
    """Pillow's images of other modes than L, RGB and RGBA in one of those."""
    mode, convert = getattr(a, "mode", None), getattr(a, "convert", None)
    if not isinstance(mode, str) or convert is None or mode in ("L", "RGB", "RGBA"):
        return a
    return convert("RGBA" if getattr(a, "has_transparency_data", False) else "RGB")


def _refuse(array: npt.NDArray[Any]) -> NoReturn:
    shape = " x ".join(map(str, array.shape)) or "no dimension"
    raise ValueError(f"an array of height x width, x 3 or x 4, is expected, not of {shape}")


def _copied(array: Pixels) -> Picture:
    if array.ndim == 2:
        array = array[:, :, np.newaxis]
        channels = 1
    elif array.ndim == 3 and array.shape[2] in (3, 4):
        channels = array.shape[2]
    else:
        _refuse(array)
    height, width, _ = array.shape
    if height == 0 or width == 0:
        _refuse(array)
    if array.strides[1:] != (channels, 1) or abs(array.strides[0]) < width * channels:
        rows: Pixels = np.empty(array.shape, np.uint8)
        rows[...] = array
        array = rows
    return _native.from_rows(array, channels)


def _shared(array: Pixels) -> Picture | None:
    """The picture whose memory the array shows, or a picture of the part that it shows."""
    if array.ndim != 3 or array.shape[2] != 3 or array.strides[1:] != (_PIXEL, 1) or 0 in array.shape:
        return None
    whole = _owner(array)
    address, row_bytes = whole._address() if whole is not None else (0, 0)
    if whole is None or not address:
        return None
    height, width, _ = array.shape
    first = array.__array_interface__["data"][0] - _FIRST["RGB"]
    top, x = divmod(first - address, row_bytes)
    left, rest = divmod(x, _PIXEL)
    step, between = divmod(array.strides[0], row_bytes) if height > 1 else (1, 0)
    if rest or between or step < 1:
        return None
    if not (0 <= top < whole.height and left + width <= whole.width and top + (height - 1) * step < whole.height):
        return None
    if (width, height) == whole.size and not whole.has_mask:
        return whole
    return whole._part(left, top, step, width, height)


def _owner(array: Any) -> Picture | None:
    """The picture behind an array, if nothing but views is between them."""
    while array is not None:
        if isinstance(array, Picture):
            return array
        if isinstance(array, _Memory):
            return array.picture
        array = array.obj if isinstance(array, memoryview) else getattr(array, "base", None)
    return None


_native.set_picture_type(Picture)
