# SPDX-License-Identifier: Apache-2.0
"""The base of the classes that run steps."""

from __future__ import annotations

import base64
from typing import Callable, Optional

import numpy as np

Progress = Optional[Callable[[int, int], object]]


def fields_of(given: dict) -> dict:
    """Return the fields of a step: names that Python reserves are written with an underscore."""
    return {name.rstrip("_"): value for name, value in given.items()}


def base64_of(array: np.ndarray) -> str:
    """Return the bytes of an array as text."""
    return base64.b64encode(array.tobytes()).decode("ascii")


class Steps:
    """A class with a function that runs a step."""

    def _do(self, step: dict, progress: Progress = None) -> None:
        raise NotImplementedError
