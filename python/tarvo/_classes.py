"""Rectangles, matrices and convolutions: members by the description, and what Python adds to them."""

from __future__ import annotations

from collections.abc import Callable, Iterator, Sequence
from typing import Any, TypeAlias, TypeVar

import numpy as np
import numpy.typing as npt

from . import _native, _operations
from ._errors import OutOfRangeError, out_of_range

__all__ = ["ColorMatrix", "ColorMatrixLike", "Convolution", "ConvolutionLike", "Rectangle", "RectangleLike"]

# Left, top, width and height.
RectangleLike: TypeAlias = "Rectangle | Sequence[int]"
ColorMatrixLike: TypeAlias = "ColorMatrix | Sequence[Sequence[float]] | npt.NDArray[Any]"
ConvolutionLike: TypeAlias = "Convolution | Sequence[int] | npt.NDArray[Any]"

_SIDE = 3

_Made = TypeVar("_Made")


class Rectangle(_operations.RectangleMembers):
    """A part of a picture: Rectangle(left, top, width, height). Wherever one is wanted, four integers will do."""

    __hash__ = None  # type: ignore[assignment]  # it changes

    def __init__(self, left: int = 0, top: int = 0, width: int = 0, height: int = 0) -> None:
        super().__init__()
        self.move_to(left, top)
        self.resize(width, height)

    def __iter__(self) -> Iterator[int]:
        return iter((self.left, self.top, self.width, self.height))

    def __len__(self) -> int:
        return 4

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Rectangle | tuple):
            return NotImplemented
        return tuple(self) == tuple(other)

    def __repr__(self) -> str:
        return f"tarvo.Rectangle{tuple(self)}"

    def __reduce__(self) -> tuple[object, ...]:
        return Rectangle, tuple(self)


class ColorMatrix(_operations.ColorMatrixMembers):
    """Nine numbers that mix channels: ColorMatrix(), the identity, or ColorMatrix of 3 x 3 numbers, which will do by
    themselves wherever a matrix is wanted. `matrix[i, j]` says how much of channel i goes into channel j."""

    __hash__ = None  # type: ignore[assignment]  # it changes

    def __init__(self, values: ColorMatrixLike | None = None) -> None:
        super().__init__()
        if values is None:
            return
        numbers = np.asarray(values, dtype=np.float64)
        if numbers.shape != (_SIDE, _SIDE):
            raise ValueError(f"a ColorMatrix has 3 x 3 numbers, not {' x '.join(map(str, numbers.shape)) or 'one'}")
        for (i, j), value in np.ndenumerate(numbers):
            self.set_value(i, j, float(value))

    @staticmethod
    def _check(place: tuple[int, int]) -> tuple[int, int]:
        i, j = place
        if not (0 <= i < _SIDE and 0 <= j < _SIDE):
            raise IndexError("rows and columns of a ColorMatrix are 0 to 2")
        return i, j

    def __getitem__(self, place: tuple[int, int]) -> float:
        return self.value(*self._check(place))

    def __setitem__(self, place: tuple[int, int], value: float) -> None:
        self.set_value(*self._check(place), value)

    def __array__(self, dtype: npt.DTypeLike | None = None, copy: bool | None = None) -> npt.NDArray[Any]:
        if copy is False:
            raise ValueError("the numbers of a ColorMatrix are always copied")
        return np.array([[self.value(i, j) for j in range(_SIDE)] for i in range(_SIDE)], dtype=dtype)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, ColorMatrix):
            return NotImplemented
        return bool(np.array_equal(self.__array__(), other.__array__(), equal_nan=True))

    def __repr__(self) -> str:
        return f"tarvo.ColorMatrix({self.__array__().tolist()})"

    def __reduce__(self) -> tuple[object, ...]:
        return ColorMatrix, (self.__array__().tolist(),)


class Convolution(_operations.ConvolutionMembers):
    """A row of integer weights: Convolution([1, 4, 6, 4, 1]). Wherever one is wanted, a sequence of integers will do."""

    __hash__ = None  # type: ignore[assignment]  # it changes

    def __init__(self, coefficients: ConvolutionLike = ()) -> None:
        super().__init__()
        self._coefficients: tuple[int, ...] = ()
        if isinstance(coefficients, Convolution):
            coefficients = coefficients._coefficients
        if len(coefficients) > 0:
            self.set_coefficients(coefficients)

    @property
    def coefficients(self) -> tuple[int, ...]:
        """The weights; the middle one weighs the pixel itself."""
        return self._coefficients

    def set_coefficients(self, coeffs: Sequence[int] | npt.NDArray[Any]) -> None:
        # What it does not take it ignores, and keeps the old ones; so it is tried with one that has none.
        accept = _operations.ConvolutionMembers.set_coefficients
        tried = Convolution()
        accept(tried, list(coeffs))
        if tried.width != len(coeffs):
            taken = str(accept.__doc__).splitlines()[0]
            raise out_of_range(
                f"set_coefficients: coeffs has {len(coeffs)} elements. {taken}",
                "TRV_Convolution.SetCoefficients",
                "coeffs",
            )
        accept(self, list(coeffs))
        self._coefficients = tuple(int(c) for c in coeffs)

    def __len__(self) -> int:
        return len(self._coefficients)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Convolution):
            return NotImplemented
        return self._coefficients == other._coefficients

    def __repr__(self) -> str:
        return f"tarvo.Convolution({list(self._coefficients)})"

    def __reduce__(self) -> tuple[object, ...]:
        return Convolution, (self._coefficients,)


def _rectangle_of(value: Any) -> Rectangle:
    left, top, width, height = value
    return Rectangle(left, top, width, height)


def _converter(make: Callable[[Any], _Made], expected: str) -> Callable[[Any, str], _Made]:
    def convert(value: Any, argument: str) -> _Made:
        try:
            if isinstance(value, str | bytes):
                raise TypeError
            return make(value)
        except OutOfRangeError:
            raise
        except (TypeError, ValueError) as reason:
            error = TypeError if isinstance(reason, TypeError) else ValueError
            raise error(f"{argument} must be {expected}, not {value!r}") from None

    return convert


_native.set_object_type("TRV_Rectangle", Rectangle, _converter(_rectangle_of, "a Rectangle or four integers"))
_native.set_object_type("TRV_ColorMatrix", ColorMatrix, _converter(ColorMatrix, "a ColorMatrix or 3 x 3 numbers"))
_native.set_object_type("TRV_Convolution", Convolution, _converter(Convolution, "a Convolution or integers"))
