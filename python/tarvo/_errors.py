"""What fails, as exceptions; results with a defect, as warnings."""

from __future__ import annotations

import errno
import functools
import json
import os
import warnings

from . import _native
from ._native import Status

__all__ = ["CopyNeeded", "Error", "OutOfMemoryError", "OutOfRangeError", "ResultWarning", "Status"]


class Error(RuntimeError):
    """What the library has refused or could not do."""

    status: Status
    """What kind of failure it is."""
    code: int
    """The operation's own code, as docs/errors.md lists them; 0 for none."""
    operation: str
    """The operation as it is registered, "TRV_Stretch"; "" where that is not known."""
    argument: str
    """The argument that was wrong; "" where that is not known."""

    def __init__(
        self,
        message: str,
        status: Status = Status.OPERATION,
        code: int = 0,
        operation: str = "",
        argument: str = "",
    ) -> None:
        super().__init__(message)
        self.status = status
        self.code = code
        self.operation = operation
        self.argument = argument

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (str(self), self.status, self.code, self.operation, self.argument)


class OutOfRangeError(Error, ValueError):
    """An argument is out of its range."""


class OutOfMemoryError(Error, MemoryError):
    """There is not as much memory."""


class CopyNeeded(ValueError, BufferError):
    """What was asked for without a copy takes one."""


class ResultWarning(UserWarning):
    """A result came with a code: it has a defect."""


def error_of(status: int, code: int, message: str, operation: str, argument: str) -> Error:
    kind = Status(status)
    made: type[Error] = Error
    if kind == Status.OPERATION and argument:
        made = OutOfRangeError
    elif kind == Status.MEMORY:
        made = OutOfMemoryError
    return made(message, kind, code, operation, argument)


def out_of_range(message: str, operation: str, argument: str) -> Error:
    return OutOfRangeError(message, Status.USE, 0, operation, argument)


@functools.cache
def _texts_of_codes() -> dict[int, str]:
    return {error["code"]: error["text"] for error in json.loads(_native.description())["errors"]}


def warn_of(operation: str, code: int) -> None:
    text = _texts_of_codes().get(code, "unknown")
    warnings.warn(f"{operation}: code {code}: {text}", ResultWarning, stacklevel=3)


def cannot_read(path: str | bytes) -> OSError | None:
    """The system's reason why a file cannot be read, if it has one."""
    try:
        with open(path, "rb"):
            return None
    except OSError as reason:
        return reason


def cannot_write(path: str | bytes) -> OSError | None:
    """The system's reason why a file cannot be written, if it has one."""
    folder = os.path.dirname(path) or (b"." if isinstance(path, bytes) else ".")
    reason = 0
    try:
        if os.path.isdir(path):
            reason = errno.EISDIR
        elif not os.path.isdir(folder):
            os.stat(folder)
            reason = errno.ENOTDIR
        elif not os.access(folder, os.W_OK | os.X_OK):
            reason = errno.EACCES
    except OSError as failed:
        reason = failed.errno or errno.EIO
    return OSError(reason, os.strerror(reason), path) if reason else None
