"""What a picture carries of its file besides pixels."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Literal, NamedTuple, TypeAlias

__all__ = ["Metadata", "MetadataKind"]

MetadataKind: TypeAlias = Literal["exif", "xmp", "iptc", "icc", "resolution"]

# As the library numbers them.
BYTES_KINDS = {"exif": 1, "xmp": 2, "iptc": 4, "icc": 8}
ALL_KINDS = {**BYTES_KINDS, "resolution": 16}


class Metadata(NamedTuple):
    """Exif (from its TIFF header on), the XMP packet, IPTC's records and the colour profile, as they stand in a file; b"" for
    what there is none of. The resolution is in dots an inch, across and along."""

    exif: bytes = b""
    xmp: bytes = b""
    iptc: bytes = b""
    icc: bytes = b""
    resolution: tuple[float, float] | None = None

    def __bool__(self) -> bool:
        return any(self)


def added_up(kinds: Iterable[MetadataKind]) -> int:
    """The number for the library."""
    named = (kinds,) if isinstance(kinds, str) else kinds
    total = 0
    for kind in named:
        if kind not in ALL_KINDS:
            raise ValueError(f"there is no metadata {kind!r}: there are {', '.join(ALL_KINDS)}")
        total |= ALL_KINDS[kind]
    return total
