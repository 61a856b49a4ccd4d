"""Shears and rotations, by the formulas of their pages. Colours are R, G, B; in a picture with a mask a fourth level says how
much is hidden, which is 255 less alpha."""

from __future__ import annotations

import math

import numpy as np
import numpy.typing as npt

from models import Array, Color, flip_rotate, wide

Levels = npt.NDArray[np.int64]
Frame = Color | None

BLANK = (0x88, 0x88, 0x88, 255)
PI = 3.14159


def blended(previous: Levels, current: Levels, weight: int) -> Levels:
    return (previous * weight + current * (65535 - weight)) // 65535


def framed_line(line: Levels, length: int, offset: int, frame: Color) -> Levels:
    """A line of pixels, moved by 65,536ths of one, over a frame."""
    made = np.tile(np.array(frame, np.int64), (length, 1))
    shift, weight = offset >> 16, offset & 65535
    end = min(shift + len(line), length)
    if shift >= length or end < 0:
        return made
    at, first = max(shift, 0), max(-shift, 0)
    before = line[first - 1 : first] if first > 0 else np.array([frame])
    shown = np.concatenate([before, line[first : first + end - at]])
    made[at:end] = blended(shown[:-1], shown[1:], weight)
    if end < length and weight > 0:
        made[end] = (shown[-1] * weight + np.array(frame) * (65535 - weight)) >> 16
    return made


def masked_line(line: Levels, length: int, offset: int) -> Levels:
    """The same over what is hidden: colours do not fade at the ends, but the mask does."""
    made = np.tile(np.array(BLANK, np.int64), (length, 1))
    shift, weight = offset >> 16, offset & 65535
    end = min(shift + len(line), length)
    if shift >= length or end <= 0:
        return made
    at, first = max(shift, 0), max(-shift, 0)
    before = np.append(line[first, :3], 255)
    shown = np.concatenate([[before], line[first : first + end - at]])
    made[at:end] = blended(shown[:-1], shown[1:], weight)
    if end < length and weight > 0:
        made[end] = np.append(shown[-1, :3], blended(shown[-1, 3:], np.array([255]), weight))
    return made


def shear_rows(x: Levels, width: int, height: int, by: float, frame: Frame) -> Levels:
    lines, length, _ = x.shape
    sheared = math.floor(length + abs(by * lines))
    top, cropped = max(height - lines, 0) // 2, max(lines - height, 0) // 2
    left, crop = max(width - sheared, 0) // 2, max(sheared - width, 0) // 2
    step = math.floor(by * 65536)
    first = max(step, 0) * lines + (left - crop) * 65536 - step * cropped
    made = np.tile(np.array(BLANK if frame is None else frame, np.int64), (height, width, 1))
    for line in range(top, min(lines + top, height)):
        source, offset = x[line - top + cropped], first - step * (line - top)
        made[line] = masked_line(source, width, offset) if frame is None else framed_line(source, width, offset, frame)
    return made


def shear_columns(x: Levels, width: int, height: int, by: float, frame: Frame) -> Levels:
    return shear_rows(x.swapaxes(0, 1), height, width, by, frame).swapaxes(0, 1)


def levels_of(array: Array, frame: Frame) -> Levels:
    colors = wide(array[..., :3])
    if frame is not None:
        return colors
    hidden = 255 - wide(array[..., 3:]) if array.shape[2] == 4 else np.zeros_like(colors[..., :1])
    return np.concatenate([colors, hidden], axis=-1)


def shown(levels: Levels) -> Array:
    """R, G, B, and A where there is a mask."""
    return np.concatenate([levels[..., :3], 255 - levels[..., 3:]], axis=-1).astype(np.uint8)


def in_circle(angle: float) -> float:
    return angle + 2 * PI if angle < 0 else angle - 2 * PI if angle > 2 * PI else angle


def rotate_by_shear(array: Array, degrees: float, frame: Frame) -> Array:
    quarters = math.floor((degrees + 45) / 90)
    rest = degrees - 90 * quarters
    turned = flip_rotate(levels_of(array, frame), False, False, quarters % 4)
    h, w, _ = turned.shape
    angle = rest * PI / 180
    diagonal, corner = 2 * math.sqrt((w * w + h * h) * 0.25), math.atan(h / w)
    width, height = w, h
    if rest > 0:
        width = math.ceil(diagonal * math.cos(in_circle(angle - corner)))
        height = math.ceil(diagonal * math.sin(in_circle(angle + corner)))
    elif rest < 0:
        width = math.ceil(diagonal * math.cos(in_circle(angle + corner)))
        height = math.ceil(diagonal * math.sin(in_circle(angle + (PI - corner))))
    across, down = math.tan(angle / 2), math.sin(-angle)
    wider = (w * 65536 + h * abs(int(across * 65536)) + 65535) // 65536
    higher = (h * 65536 + wider * abs(int(down * 65536)) + 65535) // 65536
    leaning = shear_rows(turned, wider, h, across, frame)
    leaning = shear_columns(leaning, wider, higher, down, frame)
    return shown(shear_rows(leaning, width, height, across, frame))


def leftmost(width: float, height: float, angle: float, top: float) -> float:
    """The leftmost column at which the turned rectangle meets the row of pixels below `top`, from corner to corner."""
    cosine, sine = math.cos(angle), math.sin(angle)
    ends = [(-width, -height), (width, -height), (width, height), (-width, height)]
    corners = [((x * cosine - y * sine) / 2, (x * sine + y * cosine) / 2) for x, y in ends]
    found = [x for x, y in corners if top <= y <= top + 1]
    for (x0, y0), (x1, y1) in zip(corners, corners[1:] + corners[:1], strict=True):
        for y in (top, top + 1):
            if min(y0, y1) <= y <= max(y0, y1) and y0 != y1:
                found.append(x0 + (x1 - x0) * (y - y0) / (y1 - y0))
    return min(found, default=math.inf)


SIXTEENTHS = 16


def averaged(x: Levels, left: Levels, top: Levels, right: Levels, bottom: Levels, frame: Color) -> Levels:
    """The means of boxes in sixteenths of pixels, one for each element."""
    rows, columns, _ = x.shape
    sums = np.zeros((len(left), 3), np.int64)
    total = np.zeros(len(left), np.int64)
    reach_x = int((right // SIXTEENTHS - left // SIXTEENTHS).max()) + 1
    reach_y = int((bottom // SIXTEENTHS - top // SIXTEENTHS).max()) + 1
    for down in range(reach_y):
        sy = top // SIXTEENTHS + down
        high = np.clip(np.minimum(bottom, (sy + 1) * SIXTEENTHS) - np.maximum(top, sy * SIXTEENTHS), 0, None)
        for across in range(reach_x):
            sx = left // SIXTEENTHS + across
            broad = np.clip(np.minimum(right, (sx + 1) * SIXTEENTHS) - np.maximum(left, sx * SIXTEENTHS), 0, None)
            inside = (sx >= 0) & (sy >= 0) & (sx < columns) & (sy < rows)
            found = x[np.clip(sy, 0, rows - 1), np.clip(sx, 0, columns - 1)]
            weight = high * broad
            sums += np.where(inside[:, np.newaxis], found, np.array(frame)) * weight[:, np.newaxis]
            total += weight
    return sums // total[:, np.newaxis]


def rotate_direct(array: Array, degrees: float, frame: Color) -> Array:
    quarters = math.floor(degrees / 90)
    x = wide(flip_rotate(array[..., :3], False, False, quarters))
    h, w, _ = x.shape
    angle = 2 * (degrees - 90 * quarters) * PI / 360
    diagonal, corner = 2 * math.sqrt((w * w + h * h) * 0.25), math.atan(h / w)
    width = math.ceil(diagonal * math.cos(in_circle(angle - corner)))
    height = math.ceil(diagonal * math.sin(in_circle(angle + corner)))

    one = SIXTEENTHS * 65536
    step_x, step_y = int(math.cos(PI - angle) * one), int(math.sin(PI - angle) * one)
    down_y = int(math.sin(1.5 * PI - angle) * one)
    corner_x = int(math.cos(1.25 * PI - angle) * math.sqrt(2) * one)
    made = np.tile(np.array(frame, np.int64), (height, width, 1))
    for row in range(height):
        y = row - height / 2
        start = min(max(math.floor(min(width / 2 + leftmost(w, h, angle, y), width + 2)) - 2, 0), width)
        if start == width:
            continue
        x0 = start - width / 2
        distance = math.hypot(x0, y)
        direction = math.asin(y / distance) if distance > 0 else 0.0
        if x0 < 0:
            direction = (3 * PI if y < 0 else PI) - direction
        column = np.arange(width - start)
        at_x = int((distance * math.cos(direction - angle) + w / 2) * one) - step_x * column
        at_y = int((distance * math.sin(direction - angle) + h / 2) * one) - step_y * column
        made[row, start:] = averaged(
            x, at_x >> 16, (at_y - step_y) >> 16, (at_x - corner_x + 65535) >> 16, (at_y - down_y + 65535) >> 16, frame
        )
    return made.astype(np.uint8)
