"""Mistakes that type checkers are to find: one on each line of the function."""

import tarvo


def wrong(picture: tarvo.Picture) -> None:
    picture.adjust_contrst(center=0)
    picture.stretch("3", 4)
    picture.adjust_contrast(center=0, red_factor=1, green_factor=1)
    picture.downsample(bits=4)
    picture.get_average_rgb().rde
    tarvo.make_gradient(3, 4)
    picture.to_array("BGR")
    picture.add("other.png")
    picture.threshold(progress=None, darker=True, and_threshold=True, threshold=0, target=0)
