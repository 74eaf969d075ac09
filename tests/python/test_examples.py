# SPDX-License-Identifier: Apache-2.0
"""Runs the examples on small meshes, and the code blocks of docs/python.md."""

import json
import os
import re
import runpy
import shutil
import sys
from pathlib import Path

import numpy as np
import pytest
from conftest import SOURCE, SPOT

import trovik

EXAMPLES = SOURCE / "examples" / "python"


@pytest.fixture
def run(monkeypatch):
    def run_example(name, *arguments):
        monkeypatch.setattr(sys, "argv", [name, *map(str, arguments)])
        runpy.run_path(str(EXAMPLES / name), run_name="__main__")

    return run_example


def test_rivets_stand_out_of_the_slab(run, capsys):
    run("rivets.py", "--levels", 4, "--pitch", 0.6, "--width", 60, "--output", "out")
    mesh = EXAMPLES.parent / "meshes" / "slab.obj"
    with trovik.open("out/rivets.trovik") as riveted, trovik.open(mesh, levels=4) as slab:
        raised = riveted.positions[:, 2] - slab.positions[:, 2]
    # Rivets rise, and the seam is cut.
    assert (raised > 0.01).sum() > 10 and (raised < -0.002).any()
    assert "undo steps" in capsys.readouterr().out


def test_scales_cover_the_sphere(run, capsys):
    run("reptile_skin.py", "--levels", 5, "--scales", 40, "--width", 60, "--output", "out")
    assert re.match(r"40 scales, up to [0-9.]+ %", capsys.readouterr().out)
    with trovik.open("out/reptile_skin.glb") as skin:
        height = np.linalg.norm(skin.positions, axis=1)
    assert 0.005 < height.std() / height.mean() < 0.1


def test_erosion_is_reproducible_and_recorded_in_layers(run, capsys):
    for folder in ("a", "b"):
        run("erosion.py", "--levels", 4, "--cycles", 20, "--width", 60, "--output", folder)
    assert Path("a/erosion.trovik").read_bytes() == Path("b/erosion.trovik").read_bytes()
    assert Path("a/erosion.png").stat().st_size > 0
    assert "undo steps" in capsys.readouterr().out
    mesh = EXAMPLES.parent / "meshes" / "slab.obj"
    with trovik.open("a/erosion.trovik") as eroded, trovik.open(mesh, levels=4) as slab:
        rise = eroded.positions[:, 2] - slab.positions[:, 2]
        rim = np.abs(slab.positions[:, :2] / slab.positions[:, :2].max(axis=0)).max(axis=1) > 0.99
        # The mountain rises above the slab, whose rim is masked.
        assert rise.max() > 0.1 and not rise[rim].any()
        offsets = {layer.name: layer.offsets[:, 2] for layer in eroded.layers}
        assert list(offsets) == ["ground", "uplift", "rivers", "landslides"]
        # Rivers only cut, except where they fill hollows; landslides move material down.
        assert offsets["uplift"].min() >= 0 and offsets["rivers"].min() < -0.01
        assert (offsets["rivers"] < 0).sum() > 2 * (offsets["rivers"] > 1e-4).sum()


def test_stroke_dataset_is_reproducible_and_resumable(run, capsys):
    options = ("--levels", 1, "--width", 40, "--seed", 5)
    run("stroke_dataset.py", "--count", 5, *options, "--output", "all")
    run("stroke_dataset.py", "--count", 2, *options, "--output", "parts")
    os.remove("parts/stroke_00000.npz")
    run("stroke_dataset.py", "--count", 5, *options, "--output", "parts")
    assert capsys.readouterr().out.splitlines()[-1] == "5 strokes, 4 of them new, in parts"
    names = sorted(os.listdir("all"))
    assert names == sorted(os.listdir("parts"))
    for name in names:
        assert Path("all", name).read_bytes() == Path("parts", name).read_bytes(), name

    index = json.loads(Path("all/index.json").read_text())
    assert index["setup"]["levels"] == 1 and len(index["strokes"]) == 5
    for stroke in index["strokes"]:
        arrays = np.load(f"all/{stroke['file']}")
        settings = json.loads(str(arrays["settings"]))
        assert settings == stroke["settings"]
        assert arrays["samples"].dtype == np.float32 and arrays["samples"].shape[1] == 4
        assert stroke["moved"] == (arrays["before"] != arrays["after"]).any(axis=1).sum()
        assert arrays["normals"].shape == arrays["before"].shape
        if settings["earlier"]:
            continue
        # The stroke reproduces the surface.
        with trovik.open(SPOT, levels=1) as s:
            assert (s.positions == arrays["before"]).all() and (s.normals == arrays["normals"]).all()
            s.tool(settings["tool"], **{name: settings[name] for name in ("radius", "strength", "falloff")})
            s.stroke(surface=arrays["samples"], modifier=settings["modifier"], seed=settings["seed"])
            assert (s.positions == arrays["after"]).all(), stroke
    assert any(stroke["moved"] and not stroke["settings"]["earlier"] for stroke in index["strokes"])

    with pytest.raises(SystemExit) as result:
        run("stroke_dataset.py", "--count", 1, "--seed", 6, "--output", "all")
    assert result.value.code == 2


@pytest.mark.filterwarnings("ignore::trovik.SculptWarning")
def test_wear_processes_a_folder_and_reports_failures(run, capsys):
    folder = SOURCE / "examples" / "meshes"
    os.mkdir("in")
    shutil.copy(SPOT, "in")
    shutil.copy(folder / "cube.obj", "in")
    with open("in/bad.obj", "w") as file:
        file.write("v 0 0 0\n")
    with pytest.raises(SystemExit) as result:
        run("batch_wear.py", "--vertices", 2000, "--width", 60, "in", "out")
    assert result.value.code == 1
    assert re.search(r"bad\.obj: .*\ncube\.obj: \d+ vertices\nspot\.obj: \d+ vertices\n", capsys.readouterr().out)
    assert {"cube.ply", "cube.png", "spot.ply", "spot.png"} == set(os.listdir("out"))
    with trovik.open("out/spot.ply") as worn, trovik.open(SPOT, levels=1) as spot:
        assert 0 < np.linalg.norm(worn.positions - spot.positions, axis=1).max() < 0.05


def test_code_blocks_of_the_tutorial_run(monkeypatch):
    shutil.copytree(SOURCE / "examples" / "meshes", "examples/meshes")
    text = (SOURCE / "docs" / "python.md").read_text(encoding="utf-8")
    found = re.finditer(r"```python\n(.*?)```", text, re.S)
    blocks = [(text[: block.start()].count("\n") + 2, block.group(1)) for block in found]
    assert len(blocks) > 5
    names = {}
    for line, block in blocks:
        # The line numbers of errors are those of the page.
        exec(compile("\n" * (line - 1) + block, "docs/python.md", "exec"), names)


def test_the_code_of_the_readme_runs():
    shutil.copytree(SOURCE / "examples" / "meshes", "examples/meshes")
    text = (SOURCE / "README.md").read_text(encoding="utf-8")
    blocks = re.findall(r"```python\n(.*?)```", text, re.S)
    assert blocks
    for block in blocks:
        exec(compile(block, "README.md", "exec"), {})
