# SPDX-License-Identifier: Apache-2.0
"""The docstrings of the public functions have the sections of NumPy's, and their examples run."""

import doctest
import inspect
import json
import re
import shutil
import warnings

import numpy as np
import pytest
from conftest import SPOT

import trovik


def public_objects():
    """Return the name and the object of each public function, class and method."""
    found = {"trovik": trovik}
    for name in trovik.__all__:
        thing = getattr(trovik, name)
        found[name] = thing
        if not inspect.isclass(thing) or issubclass(thing, (tuple, Exception)):
            continue
        for member, value in inspect.getmembers(thing):
            owner = next(kind for kind in thing.__mro__ if member in vars(kind)) if hasattr(thing, member) else None
            if not member.startswith("_") and owner is not None and owner.__module__.startswith("trovik"):
                found[f"{name}.{member}"] = value
    return found


# Inherited methods are listed once.
OBJECTS = {name: thing for thing, name in {thing: name for name, thing in public_objects().items()}.items()}
FUNCTIONS = {name: thing for name, thing in OBJECTS.items() if inspect.isfunction(thing)}


def sections(function):
    """Return the sections of a docstring by heading."""
    text = inspect.getdoc(function)
    parts = re.split(r"^(\w[\w ]*)\n-+\n", text, flags=re.M)
    return dict(zip(["Summary", *parts[1::2]], parts[0::2]))


@pytest.mark.parametrize("name", OBJECTS)
def test_every_object_has_a_summary_line(name):
    lines = inspect.getdoc(OBJECTS[name]).splitlines()
    assert lines[0].endswith(".") or isinstance(OBJECTS[name], property), lines[0]
    assert len(lines) == 1 or not lines[1] or isinstance(OBJECTS[name], property), lines[1]


@pytest.mark.parametrize("name", FUNCTIONS)
def test_every_function_has_the_sections(name):
    found = sections(FUNCTIONS[name])
    signature = inspect.signature(FUNCTIONS[name])
    text = found.get("Parameters", "")
    documented = set(re.findall(r"^\*{0,2}(\w+)(?: :|,|$)", text, flags=re.M))
    for line in re.findall(r"^(\w+(?:, \w+)+) :", text, flags=re.M):
        documented.update(line.split(", "))
    for parameter in signature.parameters.values():
        if parameter.name != "self" and parameter.kind != parameter.VAR_KEYWORD:
            assert parameter.name in documented, parameter.name
    if signature.parameters and any(p.kind == p.VAR_KEYWORD for p in signature.parameters.values()):
        assert documented, "the fields are not documented"
    if signature.return_annotation not in (None, "None", inspect.Signature.empty):
        assert found.get("Returns", "").strip(), "Returns"
    assert "Examples" in found


@pytest.mark.parametrize("name", [name for name, thing in OBJECTS.items() if ">>>" in (inspect.getdoc(thing) or "")])
def test_examples_run(name):
    shutil.copy(SPOT, "spot.obj")
    warnings.simplefilter("ignore", trovik.SculptWarning)
    names = {"np": np, "trovik": trovik}
    if "trace." in inspect.getdoc(OBJECTS[name]):
        steps = [{"stroke": {"surface": [[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]]}}]
        with open("trace.json", "w") as file:
            json.dump({"mesh": "spot.obj", "levels": 2, "steps": steps}, file)
        trovik.run_script("trace.json", "out", trace="trace")
        names["trace"] = trovik.read_trace("trace")
    with trovik.open("spot.obj", levels=2) as document:
        # `Error` uses the longer name.
        names.update(s=document, document=document)
        test = doctest.DocTestParser().get_doctest(inspect.getdoc(OBJECTS[name]), names, name, None, None)
        output = []
        result = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS).run(test, out=output.append)
        names.clear()
    assert result.attempted > 0 and result.failed == 0, "".join(output)
