# SPDX-License-Identifier: Apache-2.0
"""Exceptions of the package."""

from __future__ import annotations

import os
import re
from typing import Any, Optional

__all__ = ["Error", "Cancelled", "ClosedError", "ThreadError", "BusyError", "SculptWarning"]

# A message begins with the JSON pointer of the field in the step, if there is one.
_STEP = re.compile(r"python: (/[^ ]*|/): (.*)", re.DOTALL)
# A file, optionally with a location in it.
_FILE = re.compile(
    r"(?P<file>[^:]+?)(?:, (?P<location>(?:line|byte|field|chunk|face|vertex)[^:]*))?: (?P<reason>.+)", re.DOTALL
)

_POINTER = re.compile(r"(/[^ ]*): (.*)", re.DOTALL)
_MISSING = re.compile(r"file not found: (.+?)(?: is neither |, nor |$)")


class Error(RuntimeError):
    """Invalid input, or a failure of the environment such as an unreadable file.

    The message is one line. A command that raises this error has changed nothing, unless it is a
    stroke with an error after its first dab.

    Attributes
    ----------
    file : str or None
        The file that caused the error.
    location : str or None
        The location of the error: the JSON pointer of a field in the step, such as
        ``"/set/radius"``, or the location in the file, such as ``"line 12"``.
    reason : str
        The message without file and location.

    Examples
    --------
    >>> try:
    ...     document.set(raduis=1)
    ... except trovik.Error as error:
    ...     print(error.location, error.reason)
    /set/raduis unknown setting; did you mean "radius"?
    """

    file: Optional[str]
    location: Optional[str]
    reason: str

    def __init__(self, message: str):
        step = _STEP.fullmatch(message)
        if step is None and message.startswith("python: "):
            message = message[len("python: "):]
        self.file = None
        self.location = step.group(1) if step else None
        self.reason = step.group(2) if step else message
        missing = _MISSING.match(self.reason)
        if missing:
            self.file = missing.group(1)
        named = None if missing else _FILE.fullmatch(self.reason)
        if named and (os.path.exists(named.group("file")) or "." in os.path.basename(named.group("file"))
                      and " " not in os.path.basename(named.group("file"))):
            self.file = named.group("file")
            self.reason = named.group("reason")
            pointer = _POINTER.fullmatch(self.reason)
            if pointer:
                self.reason = pointer.group(2)
            self.location = self.location or (pointer.group(1) if pointer else named.group("location"))
        super().__init__(f"{step.group(1)}: {step.group(2)}" if step else message)

    def __reduce__(self) -> Any:
        return (type(self)._restored, (str(self), self.file, self.location, self.reason))

    @classmethod
    def _restored(cls, message: str, file: Optional[str], location: Optional[str], reason: str) -> Error:
        error = cls(message)
        error.file, error.location, error.reason = file, location, reason
        return error


class Cancelled(Exception):
    """A progress function returned ``False``. The document is unchanged."""


class ClosedError(Error):
    """The document was closed."""


class ThreadError(Error):
    """The document belongs to another thread; see `Document.move_to_this_thread`."""


class BusyError(Error):
    """A document was used in a progress function."""


class SculptWarning(UserWarning):
    """A command had no effect, or probably not the intended one."""
