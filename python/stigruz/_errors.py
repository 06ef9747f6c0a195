"""What goes wrong."""

import errno
import os
from typing import Optional


class Error(ValueError):
    """A file, a set or an argument that makes no sense; str() is the message in one line.

    file: the name of the file, or None if the fault is in no file
    line: the number of the line, from 1, or None
    reason: the message without file and line
    """

    def __init__(
        self,
        message: str,
        file: Optional[str] = None,
        line: Optional[int] = None,
        reason: Optional[str] = None,
    ) -> None:
        super().__init__(message)
        self.message = message
        self.file = file
        self.line = line
        self.reason = message if reason is None else reason

    def __str__(self) -> str:
        return self.message

    def __reduce__(self) -> tuple[type, tuple[object, ...]]:
        return type(self), (self.message, self.file, self.line, self.reason)


class MissingFileError(Error, FileNotFoundError):
    """A file that is not there: a stigruz.Error and a FileNotFoundError."""

    def __init__(
        self,
        message: str,
        file: Optional[str] = None,
        line: Optional[int] = None,
        reason: Optional[str] = None,
    ) -> None:
        super().__init__(message, file, line, reason)
        self.errno = errno.ENOENT
        self.strerror = os.strerror(errno.ENOENT)
        self.filename = file
