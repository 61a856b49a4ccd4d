"""What arguments may be that are no objects of the package."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from typing import TypeAlias

import numpy as np
import numpy.typing as npt

__all__ = ["ColorLike", "Pixels", "Progress"]

Pixels: TypeAlias = npt.NDArray[np.uint8]
# 0xRRGGBB, "#rrggbb", or red, green and blue.
ColorLike: TypeAlias = int | str | Sequence[int]
# Asked again and again while an operation works; a false answer, but not None, stops it.
Progress: TypeAlias = Callable[[], object]
