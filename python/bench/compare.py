"""The same work by tarvo, Pillow, OpenCV and scikit-image, on a picture of 2 megapixels. See scripts/bench-python.

Each package has the picture in its own form beforehand, and gives the result in its own form. Where packages do not do the
same to a few levels they are not compared: others saturate sums, turn otherwise, or have no such operation.
"""

from __future__ import annotations

import io
import os
import sys
import time
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import cv2
import numpy as np
import skimage.exposure
import skimage.transform
import tarvo
from PIL import Image, ImageFilter

PHOTO = Path(__file__).parents[2] / "examples/photos/coffee.png"
WIDTH, HEIGHT = 1732, 1154
THREADS = os.cpu_count() or 1
PACKAGES = ("tarvo", "Pillow", "OpenCV", "scikit-image")

photo = tarvo.open(PHOTO).stretch(WIDTH, HEIGHT)
array = photo.to_array(copy=True)
image = Image.fromarray(array)
other = tarvo.from_array(array[::-1])
other_array = other.to_array(copy=True)
other_image = Image.fromarray(other_array)
weights = [1, 4, 6, 4, 1]
kernel = np.array(weights, np.float32) / sum(weights)
contrast_table = np.clip(128 + (np.arange(256) - 128) * 1.6, 0, 255).astype(np.uint8)
levels_table = (np.arange(256) // 16 * 17).astype(np.uint8)
mixing = np.array([[0.5, 0.3, 0.2], [0.2, 0.6, 0.2], [0.1, 0.3, 0.6]])
mixing_rows = [n for row in mixing.T for n in (*row, 0)]
png, jpeg = photo.encode("png"), photo.encode("jpg")


def from_bytes(data: bytes) -> Any:
    made = Image.open(io.BytesIO(data))
    made.load()
    return made


# By packages in the order above; None where one does not have it.
WORK: dict[str, tuple[Callable[[], Any] | None, ...]] = {
    "contrast": (
        lambda: photo.adjust_contrast(center=0x808080, red_factor=1.6, green_factor=1.6, blue_factor=1.6),
        lambda: image.point(list(contrast_table) * 3),
        lambda: cv2.LUT(array, contrast_table),
        lambda: skimage.exposure.rescale_intensity(array, in_range=(48, 207), out_range=np.uint8),
    ),
    "mix channels": (
        lambda: photo.adjust_rgb(cm=mixing),
        lambda: image.convert("RGB", mixing_rows),
        lambda: cv2.transform(array, mixing.T),
        None,
    ),
    "fewer levels": (
        lambda: photo.downsample(4),
        lambda: image.point(list(levels_table) * 3),
        lambda: cv2.LUT(array, levels_table),
        None,
    ),
    "blend": (
        lambda: photo.composite(other, 0.5, 0, 0),
        lambda: Image.blend(image, other_image, 0.5),
        lambda: cv2.addWeighted(array, 0.5, other_array, 0.5, 0),
        None,
    ),
    "turn by 90": (
        lambda: photo.flip_rotate(False, False, 1),
        lambda: image.transpose(Image.Transpose.ROTATE_270),
        lambda: cv2.rotate(array, cv2.ROTATE_90_CLOCKWISE),
        None,
    ),
    "shrink to a third": (
        lambda: photo.stretch(WIDTH // 3, HEIGHT // 3),
        lambda: image.resize((WIDTH // 3, HEIGHT // 3), Image.Resampling.BOX),
        lambda: cv2.resize(array, (WIDTH // 3, HEIGHT // 3), interpolation=cv2.INTER_AREA),
        lambda: skimage.transform.resize_local_mean(array, (HEIGHT // 3, WIDTH // 3)),
    ),
    "blur by 5 x 5": (
        lambda: photo.convolute(None, weights, weights),
        lambda: image.filter(ImageFilter.Kernel((5, 5), np.outer(weights, weights).ravel().tolist())),
        lambda: cv2.sepFilter2D(array, -1, kernel, kernel),
        None,
    ),
    "decode PNG": (
        lambda: tarvo.decode(png),
        lambda: from_bytes(png),
        lambda: cv2.imdecode(np.frombuffer(png, np.uint8), cv2.IMREAD_COLOR),
        None,
    ),
    "decode JPEG": (
        lambda: tarvo.decode(jpeg),
        lambda: from_bytes(jpeg),
        lambda: cv2.imdecode(np.frombuffer(jpeg, np.uint8), cv2.IMREAD_COLOR),
        None,
    ),
}


def milliseconds(work: Callable[[], Any], pool: ThreadPoolExecutor | None) -> float:
    """For one picture. With a pool every thread has one at a time, twice."""
    begin = time.perf_counter()
    if pool is None:
        work()
        return (time.perf_counter() - begin) * 1000
    for done in [pool.submit(work) for _ in range(2 * THREADS)]:
        done.result()
    return (time.perf_counter() - begin) * 1000 / (2 * THREADS)


def table(rounds: int, pool: ThreadPoolExecutor | None) -> None:
    print(f"| ms | {' | '.join(PACKAGES)} | nearest other / tarvo |\n|{' --- |' * (len(PACKAGES) + 2)}")
    for name, works in WORK.items():
        best = [float("inf")] * len(PACKAGES)
        for _ in range(rounds):
            for i, work in enumerate(works):
                if work is not None:
                    best[i] = min(best[i], milliseconds(work, pool))
        cells = ["-" if work is None else f"{took:.2f}" for work, took in zip(works, best, strict=True)]
        print(f"| {name} | {' | '.join(cells)} | {min(best[1:]) / best[0]:.2f} |", flush=True)


def main() -> None:
    rounds = int(sys.argv[1])
    cv2.setNumThreads(1)
    print(f"{WIDTH} x {HEIGHT}, one thread:\n")
    table(rounds, None)
    print(f"\n{THREADS} threads of one process, a picture each:\n")
    with ThreadPoolExecutor(THREADS) as pool:
        table(rounds, pool)


if __name__ == "__main__":
    main()
