# SPDX-License-Identifier: Apache-2.0
"""The same work in a script file and in Python gives the same bits; traces as arrays."""

import json
import re
import shutil
import subprocess
from pathlib import Path

import numpy as np
import pytest
from conftest import SOURCE, SPOT

import trovik

SPIRAL = [[0.35 - 0.01 * i, 0.2 + 0.013 * i, 0.5, 0.3 + 0.02 * i] for i in range(20)]
STEPS = [
    {"tool": "Wax", "set": {"radius": 0.15, "strength": 40, "falloff": "smooth"}},
    {"layer": {"add": "wrinkles", "strength": 0.8}},
    {"stroke": {"surface": SPIRAL}},
    {"layer": {"select": None}},
    {"subdivide": 1},
    {"mask": {"cavity": {"from": 0.1}, "amount": 0.6}},
    {"tool": "Spray", "set": {"radius": 0.2, "strength": 30}},
    {"stroke": {"surface": [[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]]}},
    {"undo": 1},
    {"filter": {"kind": "smooth", "iterations": 2}},
    {"stroke": {"pointer": [[300, 200], [340, 260], [350, 300]], "path": {"curve": True}}},
    {"level": 2},
    {"tool": "Smooth", "set": {"radius": 0.3}},
    {"stroke": {"surface": [[0.2, 0.3, 0.4]]}},
    {"level": 3},
]
SETUP = {"levels": 2, "mirror": ["x"], "camera": {"from": [0.3, 0.1, 1], "width": 640, "height": 480}, "seed": 5}


def write_script(name="script.json", steps=STEPS):
    Path(name).write_text(json.dumps({"mesh": str(SPOT), **SETUP, "steps": steps}))
    return name


def work_with_methods(s):
    """The steps above."""
    s.tool("Wax", radius=0.15, strength=40, falloff="smooth")
    with s.layer("wrinkles", strength=0.8):
        s.stroke(surface=np.array(SPIRAL))
    s.subdivide()
    s.freeze(cavity={"from": 0.1}, amount=0.6)
    s.tool("Spray", radius=0.2, strength=30)
    s.stroke(surface=np.array([[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]]))
    s.undo()
    s.filter("smooth", iterations=2)
    s.stroke(pointer=np.array([[300, 200], [340, 260], [350, 300]]), path={"curve": True})
    s.level(2)
    s.tool("Smooth", radius=0.3)
    s.stroke(surface=[[0.2, 0.3, 0.4]])
    s.level(3)


def test_scripts_and_methods_give_the_same_bits(command):
    script = write_script(steps=[*STEPS, {"export": {"file": "a.ply"}}, {"save": "a.trovik"}])
    subprocess.run([command, "sculpt", script, "--output", "by-command"], check=True, capture_output=True)
    with trovik.open(SPOT, **SETUP) as s:
        work_with_methods(s)
        s.export("by-methods/a.ply")
        s.save("by-methods/a.trovik")
    with trovik.open(SPOT, **SETUP) as s:
        for step in STEPS:
            s.do(step)
        s.export("by-steps/a.ply")
        s.save("by-steps/a.trovik")
    trovik.run_script(script, "by-function")
    expected = Path("by-command/a.ply").read_bytes()
    scene = Path("by-command/a.trovik").read_bytes()
    for folder in ("by-methods", "by-steps", "by-function"):
        assert Path(folder, "a.ply").read_bytes() == expected, folder
        assert Path(folder, "a.trovik").read_bytes() == scene, folder


def test_arrays_are_those_of_the_exported_file(command):
    script = write_script(steps=[*STEPS, {"export": {"file": "a.obj"}}])
    subprocess.run([command, "sculpt", script, "--output", "."], check=True, capture_output=True)
    lines = Path("a.obj").read_text().splitlines()
    exported = np.array([line.split()[1:4] for line in lines if line.startswith("v ")], dtype=np.float32)
    with trovik.open(SPOT, **SETUP) as s:
        work_with_methods(s)
        assert (s.positions.copy() == exported).all()


def test_scripts_report_results_and_errors(command):
    result = trovik.run_script(write_script(steps=[*STEPS, {"export": {"file": "a.ply"}}]), "out")
    assert [Path(name).name for name in result["files"]] == ["a.ply"]
    assert result["dabs"] > 10 and result["levels"] == 4 and result["vertices"] == 46850, result
    with pytest.raises(trovik.Error) as caught:
        trovik.run_script(write_script(steps=[{"fly": 1}]))
    assert (caught.value.file, caught.value.location) == ("script.json", "/steps/0/fly")
    with pytest.raises(trovik.Error, match="none.json"):
        trovik.run_script("none.json")
    with pytest.raises(trovik.Cancelled):
        trovik.run_script(write_script(), progress=lambda done, total: False)
    with pytest.raises(trovik.BusyError):
        trovik.run_script(write_script(), progress=lambda done, total: trovik.run_script(write_script()))


def test_traces_are_arrays():
    trovik.run_script(write_script(steps=STEPS[:3]), "out", trace="trace", trace_every=4)
    trace = trovik.read_trace("trace")
    names = [line["call"] for line in trace.calls]
    assert "BeginStroke" in names and names.count("ApplyDab") >= 4
    assert {"before", "after", "dab-000004"} <= set(trace.states)
    before, after = trace.state("before"), trace.state("after")
    moved = (before["level-2/positions"] != after["level-2/positions"]).any(axis=1)
    assert moved.any() and not moved.all() and after["meta"]["vertexCount"] == len(moved)
    falloff = next(line["in"]["falloff"] for line in trace.calls if line["call"] == "BeginStroke")
    assert trace.array(falloff).ndim == 1
    with pytest.raises(KeyError, match="none"):
        trace.state("none")
    with pytest.raises(FileNotFoundError):
        trovik.read_trace("none")


def test_the_script_in_the_tutorial_equals_the_python_code():
    text = (SOURCE / "docs" / "python.md").read_text(encoding="utf-8")
    shutil.copytree(SOURCE / "examples" / "meshes", "examples/meshes")
    section = text.split("## When to use a script and when to use Python")[1].split("\n## ")[0]
    script = re.search(r"```json\n(.*?)```", section, re.S).group(1)
    code = re.search(r"```python\n(.*?)```", section, re.S).group(1)
    Path("bumps.json").write_text(script)
    trovik.run_script("bumps.json", "by-script")
    exec(code, {"json": json, "np": np, "trovik": trovik})
    assert Path("bumps.ply").read_bytes() == Path("by-script/bumps.ply").read_bytes()
