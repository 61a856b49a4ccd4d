"""Picture operations that give the same bits on every machine.

    import tarvo

    photo = tarvo.open("photo.jpg")
    warm = photo.adjust_contrast(center="#808080", red_factor=1.6, green_factor=1.4, blue_factor=1.2)
    warm.save("out.png")

Pictures never change; operations are their methods, and those that need no picture are functions here. Arguments have names.
`help(tarvo.Picture)` has them all, `tarvo.operations()` the whole description.
"""

import json as _json
from typing import Any as _Any

from . import _classes, _errors, _metadata, _native, _operations, _picture, _types
from ._classes import *
from ._errors import *
from ._metadata import *
from ._operations import *
from ._picture import *
from ._types import *

__all__ = ["__version__", "operations"]
__all__ += _classes.__all__
__all__ += _errors.__all__
__all__ += _metadata.__all__
__all__ += _operations.__all__
__all__ += _picture.__all__
__all__ += _types.__all__

__version__: str = _native.version()


def operations() -> dict[str, _Any]:
    """All operations, classes and errors, as docs/operations.schema.json promises; its own copy at each call."""
    told: dict[str, _Any] = _json.loads(_native.description())
    return told
