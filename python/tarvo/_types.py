"""What arguments may be."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from typing import TYPE_CHECKING, Any, TypeAlias

import numpy as np
import numpy.typing as npt

if TYPE_CHECKING:
    from ._classes import ColorMatrix, Convolution, Rectangle

__all__ = ["ColorLike", "ColorMatrixLike", "ConvolutionLike", "Pixels", "Progress", "RectangleLike"]

Pixels: TypeAlias = npt.NDArray[np.uint8]
# 0xRRGGBB, "#rrggbb", or red, green and blue.
ColorLike: TypeAlias = int | str | Sequence[int]
# Left, top, width and height.
RectangleLike: TypeAlias = "Rectangle | Sequence[int]"
ColorMatrixLike: TypeAlias = "ColorMatrix | Sequence[Sequence[float]] | npt.NDArray[Any]"
ConvolutionLike: TypeAlias = "Convolution | Sequence[int] | npt.NDArray[Any]"
# Asked again and again while an operation works; a false answer, but not None, stops it.
Progress: TypeAlias = Callable[[], object]
