"""Pictures and arguments for tests."""

from __future__ import annotations

import itertools
from typing import Any

import numpy as np

import tarvo
from models import Array

SIZES = [(1, 1), (7, 5), (511, 3), (512, 2), (513, 4), (1023, 3), (1024, 2), (1025, 3)]  # width x height
MASKS = [False, True]


def random_array(width: int, height: int, channels: int, seed: int = 1) -> Array:
    made = np.random.default_rng(seed).integers(0, 256, (height, width, channels), np.uint8)
    # Ends of the range, and flat places.
    made.reshape(-1)[:: max(1, made.size // 7)] = 255
    made.reshape(-1)[1 :: max(1, made.size // 5)] = 0
    return made


def picture_of(width: int, height: int, mask: bool = False, seed: int = 1) -> tarvo.Picture:
    return tarvo.from_array(random_array(width, height, 4 if mask else 3, seed))


def operations() -> list[dict[str, Any]]:
    told = tarvo.operations()["operations"]
    assert isinstance(told, list)
    return [o for o in told if o["self"] != "screen"]


# Values that any operation takes, by type.
def usual_value(argument: dict[str, Any], this: tarvo.Picture) -> Any:
    match argument["type"]:
        case "integer":
            return int(argument["minimum"] or 0)
        case "double":
            return 1.0 if argument["maximum"] is None or argument["maximum"] > 1 else 0.5
        case "boolean":
            return False
        case "color":
            return 0x804020
        case "string":
            return this.convert_to_string()
        case "picture":
            return this
        case "TRV_Rectangle":
            return (0, 0, 2, 2)
        case "TRV_ColorMatrix":
            return np.eye(3)
        case "TRV_Convolution":
            return [1, 2, 1]
    raise AssertionError(argument["type"])


def usual_arguments(operation: dict[str, Any], this: tarvo.Picture, form: int = 0) -> dict[str, Any]:
    return {
        argument["name"]: usual_value(argument, this)
        for argument in operation["arguments"]
        if form in argument["forms"] and not argument["by_ref"] and argument["name"] != "yield"
    }


def forms_of_pictures(operation: dict[str, Any]) -> list[int]:
    return [i for i, form in enumerate(operation["forms"]) if form["self"] != "TRV_ClientPicture"]


def call(operation: dict[str, Any], this: tarvo.Picture, arguments: dict[str, Any]) -> Any:
    """By its registered name."""
    name = operation["name"]
    if operation["self"] == "picture":
        return getattr(this, name)(**arguments)
    if operation["self"] == "string":
        return getattr(tarvo, name)(this.convert_to_string(), **arguments)
    return getattr(tarvo, name)(**arguments)


ALL_FORMS = list(
    itertools.chain.from_iterable(((o, form) for form in forms_of_pictures(o)) for o in operations())
)
