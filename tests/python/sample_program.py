"""What type checkers are shown."""

from __future__ import annotations

import sys
from pathlib import Path

import numpy as np
import numpy.typing as npt
import tarvo


def warm(picture: tarvo.Picture) -> tarvo.Picture:
    return picture.adjust_contrast(center="#808080", red_factor=1.6, green_factor=1.4, blue_factor=1.2)


def main(path: Path, out: Path) -> int:
    photo = tarvo.open(path, max_pixels=10_000_000)
    try:
        made = warm(photo).adjust_rgb((0, 0, 10, 10), 1, 2, 3).adjust_rgb(cm=np.eye(3))
        made = made.composite(made, 0.5, 0, 0).composite(overlay_color=(255, 0, 0), overlay_fraction=0.25)
        made = made.convolute(horiz_convolution=[1, 2, 1], vert_convolution=tarvo.Convolution([1, 2, 1]))
        made = made.free_rotate_by_shear(30, "#ffffff", progress=lambda: True)
    except tarvo.OutOfRangeError as error:
        print(error.argument, error.code, error.status)
        return 1
    made.save(out, quality=90)
    view: npt.NDArray[np.uint8] = made.to_array("RGBA", copy=True)
    average = tarvo.from_array(view).get_average_rgb(rect=tarvo.Rectangle(0, 0, 2, 2))
    red: int = average.red
    size: tuple[int, int] = tarvo.make_gradient(300, 200, "#000000", 0xFFFFFF).size
    text: str = made.info()
    print(red, size, text, np.asarray(made).shape)
    return 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), Path(sys.argv[2])))
