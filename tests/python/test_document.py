# SPDX-License-Identifier: Apache-2.0
"""Documents: opening, commands, arrays, errors, files."""

import copy
import gc
import json
import os
import pickle
import subprocess
import sys
import threading
import warnings

import numpy as np
import pytest
from conftest import SOURCE, SPOT, bits, cube

import trovik


def test_every_step_of_scripts_has_a_method():
    schema = json.loads((SOURCE / "docs" / "stroke-script.schema.json").read_text())
    names = {"mask": "freeze"}
    for step in schema["definitions"]["step"]["properties"]:
        if step == "comment":
            continue
        snake = "".join("_" + letter.lower() if letter.isupper() else letter for letter in step)
        method = getattr(trovik.Document, names.get(step, snake), None)
        assert callable(method), step
        assert method.__doc__, step


def test_public_names_have_docstrings():
    for name in trovik.__all__:
        assert getattr(trovik, name).__doc__, name
        for attribute, value in vars(getattr(trovik, name)).items():
            if not attribute.startswith("_") and (callable(value) or isinstance(value, property)):
                assert value.__doc__, f"{name}.{attribute}"


def test_opens_meshes_and_scenes():
    with trovik.open(SPOT, levels=2, mirror=["x"], seed=7) as s:
        assert (s.level_count, s.current_level) == (3, 2)
        s.set(radius=0.2)
        s.stroke(surface=[[0.35, 0.2, 0.5]])
        s.save("a.trovik")
        assert not s.is_modified
        expected = bits(s)
    with trovik.open("a.trovik") as s:
        assert bits(s) == expected
        assert repr(s).startswith("<trovik.Document '")
        s.undo() if s.history else None
    assert s.closed and repr(s) == "<trovik.Document, closed>"


def test_creates_documents_from_arrays():
    mixed = trovik.new([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [2, 0, 0]], [[0, 1, 2, 3], [1, 4, 2]])
    assert mixed.faces().shape == (7, 4)
    triangles = trovik.new(np.eye(3), np.array([[0, 1, 2]]))
    assert triangles.faces().tolist() == [[0, 1, 2]]
    assert triangles.positions.tolist() == np.eye(3).tolist()
    with pytest.raises(trovik.Error, match="shape"):
        trovik.new(np.eye(2), [[0, 1, 2]])
    with pytest.raises(trovik.Error, match="vertex that does not exist"):
        trovik.new(np.eye(3), [[0, 1, 3]])
    with pytest.raises(trovik.Error, match="vertex that does not exist"):
        trovik.new(np.eye(3), [[0, 1, -1]])
    with pytest.raises(trovik.Error, match="integers"):
        trovik.new(np.eye(3), [[0, 1, 2.5]])
    with pytest.raises(trovik.Error):
        trovik.new(np.eye(3), [])
    with pytest.raises(trovik.Error, match="mesh: "):
        trovik.new([[0, 0, 0], [1, 0, 0], [np.nan, 0, 0]], [[0, 1, 2]], name="mesh")
    with pytest.raises(trovik.Error, match="raduis|levles"):
        trovik.new(np.eye(3), [[0, 1, 2]], levles=2)


def test_commands_change_the_sculpture(ball):
    ball.tool("Wax", radius=0.4, strength=50, falloff="smooth")
    assert ball.active_tool["name"] == "Wax" and ball.active_tool["strength"] == 50
    ball.mirror("x")
    before = ball.positions.copy()
    ball.stroke(surface=np.array([[0.5, 0.0, 1.0], [0.5, 0.4, 1.0]], dtype=np.float32))
    moved = (ball.positions != before).any(axis=1)
    assert (before[moved, 0] > 0).any() and (before[moved, 0] < 0).any()
    assert ball.history[-1].label == "Wax" and ball.history[-1].applied
    ball.undo()
    assert (ball.positions == before).all() and not ball.history[-1].applied
    ball.redo()
    assert ((ball.positions != before).any(axis=1) == moved).all()
    ball.do({"undo": 1})
    assert (ball.positions == before).all()


def test_fields_with_reserved_names(ball):
    ball.freeze(cavity={"from": -10.0, "sign": "both"})
    ball.symmetrize("x", from_="negative")
    ball.stroke(surface=[[0, 0, 1]], open=True)
    ball.stroke(surface=[[0, 0.2, 1]], continue_=True)
    ball.camera(from_=[0, 0, 1], width=100, height=80)
    assert ball.history[-1].label == "Sculpt"


def test_set_positions_is_one_undo_step(ball):
    before = ball.positions.copy()
    target = before + np.float32(0.1) * ball.normals
    count = len(ball.history)
    ball.set_positions(target, label="Inflate")
    assert ball.positions.tobytes() == target.tobytes()
    assert [entry.label for entry in ball.history[count:]] == ["Inflate"]
    ball.undo()
    assert ball.positions.tobytes() == before.tobytes()


def test_the_mesh_can_be_replaced(ball, tmp_path):
    ball.export(tmp_path / "ball.ply")
    vertices = len(ball.positions)
    before = ball.positions.tobytes()
    view = ball.positions
    for replace in (
        ball.repair,
        lambda: ball.decimate(100),
        lambda: ball.remesh(0.2),
        lambda: ball.voxel_remesh(500),
        lambda: ball.append(tmp_path / "ball.ply"),
        lambda: ball.extract(0.1),
        ball.quadrangulate,
    ):
        with pytest.raises(BufferError):
            replace()
    del view
    gc.collect()
    ball.decimate(400)
    assert 380 <= ball.faces().shape[0] <= 400 and ball.faces().shape[1] == 3
    ball.undo()
    assert len(ball.positions) == vertices and ball.positions.tobytes() == before


def test_the_mesh_can_be_remeshed(ball):
    before = ball.positions.tobytes()
    ball.remesh(0.2)
    p = ball.positions[ball.faces()]
    lengths = np.linalg.norm(p - np.roll(p, 1, axis=1), axis=2)
    assert ((lengths > 0.12) & (lengths < 0.3)).mean() > 0.95
    del p
    ball.undo()
    assert ball.positions.tobytes() == before
    ball.remesh(faces=1000, creaseAngle=60)
    assert 950 <= len(ball.faces()) <= 1050
    with pytest.raises(trovik.Error, match="exclude each other"):
        ball.remesh(0.2, faces=1000)


def test_voxel_remesh_gives_even_quads_with_levels(ball):
    before = ball.positions.tobytes()
    norms = np.linalg.norm(ball.positions, axis=1)
    inner, outer = norms.min(), norms.max()
    ball.voxel_remesh(500, levels=1, project=True)
    assert ball.faces().shape[1] == 4 and 475 * 4 <= ball.faces().shape[0] <= 525 * 4
    norms = np.linalg.norm(ball.positions, axis=1)
    assert inner - 0.02 < norms.min() and norms.max() < outer + 0.02
    ball.undo()
    assert ball.positions.tobytes() == before
    with pytest.raises(trovik.Error, match="voxelSize"):
        ball.voxel_remesh(500, voxelSize=0.1)


def test_append_adds_a_part(ball, tmp_path):
    file = tmp_path / "ball.ply"
    ball.export(file)
    vertices, faces = len(ball.positions), len(ball.faces())
    before = ball.positions.copy()
    ball.append(file, scale=[0.5, 0.5, 0.5], translate=[3, 0, 0])
    assert len(ball.faces()) == 2 * faces and ball.faces()[faces:].min() == vertices
    assert ball.positions[:vertices].tobytes() == before.tobytes()
    assert np.array_equal(ball.positions[vertices:], before * np.float32(0.5) + np.float32([3, 0, 0]))
    ball.undo()
    assert len(ball.positions) == vertices
    with pytest.raises(trovik.Error, match="missing.obj"):
        ball.append("missing.obj")


def test_extract_makes_a_thick_part(ball):
    vertices, faces = len(ball.positions), len(ball.faces())
    ball.freeze(np.where(ball.positions[:, 2] > 0.3, 127, 0))
    with pytest.raises(trovik.Error, match="extract"):
        ball.extract(0)
    ball.extract(0.1, group="Cap")
    part = ball.faces()[faces:]
    assert len(part) > 10 and part.min() == vertices
    p = ball.positions[vertices:]
    half = len(p) // 2
    assert np.allclose(np.linalg.norm(p[:half] - p[half:], axis=1), 0.1, atol=1e-5)
    del p
    ball.freeze("clear")
    with pytest.raises(trovik.Error, match="no face has a mask weight"):
        ball.extract(0.1)


def test_quadrangulate_pairs_triangles(ball):
    ball.remesh(0.2)
    triangles = len(ball.faces())
    before = ball.positions.copy()
    ball.quadrangulate(split="never")
    assert ball.faces().shape == (triangles // 2, 4)
    assert ball.positions.tobytes() == before.tobytes()
    ball.undo()
    ball.quadrangulate(split="always")
    assert ball.faces().shape == (triangles // 2 * 4, 4)
    ball.undo()
    with pytest.raises(trovik.Error, match="no partner"):
        ball.quadrangulate(split="never", maxAngle=0)


def test_exports_can_be_decimated(ball, tmp_path):
    before = ball.positions.tobytes()
    ball.export(tmp_path / "low.ply", decimate={"ratio": 0.5}, lods=2)
    assert ball.positions.tobytes() == before
    counts = []
    for name in ("low.ply", "low.lod1.ply", "low.lod2.ply"):
        with trovik.open(tmp_path / name) as low:
            assert low.faces().shape[1] == 3
            counts.append(len(low.faces()))
    triangles = 2 * len(ball.faces())
    assert counts == [triangles // 2, triangles // 4, triangles // 8]
    assert [os.path.basename(file) for file in ball.written_files[-3:]] == ["low.ply", "low.lod1.ply", "low.lod2.ply"]
    with pytest.raises(trovik.Error, match="exclude each other"):
        ball.export(tmp_path / "low.ply", decimate={"ratio": 0.5, "faces": 7})


def test_project_moves_the_surface_onto_a_file(ball, tmp_path):
    file = tmp_path / "ball.ply"
    ball.export(file)
    before = ball.positions.copy()
    size = lambda: np.linalg.norm(ball.positions, axis=1).mean()
    full = size()
    ball.filter("smooth", iterations=20)
    smooth = size()
    ball.project(file, 1.0, direction="normal")
    assert abs(size() - full) < 0.1 * abs(smooth - full)
    ball.undo(2)
    assert (ball.positions == before).all()
    with pytest.raises(trovik.Error, match="missing.ply"):
        ball.project(tmp_path / "missing.ply", 1.0)


def test_freeze_accepts_arrays(ball):
    height = ball.positions[:, 1]
    ball.freeze(np.clip(height * 127, 0, 127))
    assert (ball.mask == np.rint(np.clip(height * 127, 0, 127))).all()
    ball.freeze(height > 0)
    assert (ball.mask == np.where(height > 0, 127, 0)).all()
    ball.freeze("invert")
    assert (ball.mask == np.where(height > 0, 0, 127)).all()
    ball.freeze(center=[0, 1, 0], radius=0.3)
    assert ball.mask.max() == 127
    ball.freeze("clear")
    assert not ball.mask.any()
    for wrong in (np.full(3, 1), np.full(len(height), 128), np.full(len(height), np.nan), np.full((2, 2), 1)):
        with pytest.raises(trovik.Error):
            ball.freeze(wrong)
    with pytest.raises(TypeError):
        ball.freeze("clear", mode="add")


def test_layers(ball):
    before = ball.positions.copy()
    with ball.layer("wrinkles", strength=0.5):
        ball.stroke(surface=[[0, 0, 1]])
    assert [(layer.name, layer.strength, layer.active) for layer in ball.layers] == [("wrinkles", 0.5, False)]
    layer = ball.layers[0]
    np.testing.assert_allclose(before + 0.5 * layer.offsets, ball.positions, atol=1e-6)
    with ball.layer("folds"):
        with ball.layer("wrinkles"):
            assert ball.layers[0].active
        assert ball.layers[1].active
    ball.layer(of="wrinkles", name="lines")
    with pytest.raises(trovik.Error, match="wrinkles"):
        layer.offsets
    ball.layer(of="lines", remove=True)
    with pytest.raises(trovik.Error):
        with ball.layer("folds"):
            raise trovik.Error("stop")
    assert not any(one.active for one in ball.layers)


def test_arrays_of_the_current_level():
    s = trovik.open(SPOT, levels=1)
    faces, positions, normals = s.faces(), s.positions, s.normals
    assert faces.shape == (2928, 4) and faces.dtype == np.uint32 and faces.max() == len(positions) - 1
    assert s.faces(0).shape == (732, 4)
    with pytest.raises(IndexError, match="no level 7"):
        s.faces(7)
    diagonals = np.cross(
        positions[faces[:, 2]] - positions[faces[:, 0]], positions[faces[:, 3]] - positions[faces[:, 1]]
    )
    assert (np.einsum("ij,ij->i", diagonals, normals[faces[:, 0]]) > 0).mean() > 0.99
    np.testing.assert_allclose(np.linalg.norm(normals, axis=1), 1, atol=1e-4)
    assert s.uvs.shape == (2928, 4, 2) and not np.isnan(s.uvs).any()
    assert s.colors is None and cube().uvs is None
    s.hide(faces=[[0, 10]])
    assert s.hidden_faces.nonzero()[0].tolist() == list(range(10))
    s.show()
    s.transform(translate=[1, 2, 3])
    assert s.local_to_world[3].tolist() == [1, 2, 3, 1]


def test_colors():
    with open("c.ply", "w") as file:
        file.write(
            "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
            "property uchar red\nproperty uchar green\nproperty uchar blue\nelement face 1\n"
            "property list uchar int vertex_indices\nend_header\n"
            "0 0 0 255 0 0\n1 0 0 0 255 0\n0 1 0 0 0 255\n3 0 1 2\n"
        )
    s = trovik.open("c.ply")
    assert s.colors.tolist() == [[1, 0, 0, 1], [0, 1, 0, 1], [0, 0, 1, 1]]


def test_queries_in_world_space(ball):
    ball.transform(scale=2, translate=[10, 0, 0])
    hits = ball.pick([[10, 0, 9, 0, 0, -3], [0, 0, 9, 0, 0, -1], [10, 0, 9, 0, 0, 0]])
    assert (hits.face >= 0).tolist() == [True, False, False]
    np.testing.assert_allclose(hits.position[0, :2], [10, 0], atol=1e-5)
    np.testing.assert_allclose(hits.normal[0], [0, 0, 1], atol=1e-3)
    np.testing.assert_allclose(9 - 3 * hits.t[0], hits.position[0, 2], rtol=1e-5)
    assert np.isnan(hits.position[1]).all() and np.isnan(hits.t[1])
    near = ball.nearest([[10, 0, 9], [np.nan, 0, 0]])
    np.testing.assert_allclose(near.position[0], hits.position[0], atol=1e-3)
    np.testing.assert_allclose(near.t[0], 9 - near.position[0, 2], rtol=1e-4)
    assert near.face[1] == -1
    with pytest.raises(ValueError, match=r"\(n, 6\)"):
        ball.pick(np.zeros((2, 3)))
    with pytest.raises(ValueError, match=r"\(n, 3\)"):
        ball.nearest([1, 2, 3])


def test_errors_carry_file_location_and_reason(ball):
    with pytest.raises(trovik.Error) as caught:
        ball.set(raduis=1)
    assert (caught.value.file, caught.value.location) == (None, "/set/raduis")
    assert caught.value.reason == 'unknown setting; did you mean "radius"?'
    assert str(caught.value) == '/set/raduis: unknown setting; did you mean "radius"?'
    with pytest.raises(trovik.Error) as caught:
        trovik.open("none.obj")
    assert caught.value.file.endswith("/none.obj") and caught.value.location == "/mesh"
    with open("bad.obj", "w") as file:
        file.write("v 0 0 0\nv 1 0 0\nf 1 2 9\n")
    with pytest.raises(trovik.Error) as caught:
        trovik.open("bad.obj")
    assert caught.value.file.endswith("/bad.obj") and caught.value.location == "line 3", vars(caught.value)
    assert "9" in caught.value.reason
    again = pickle.loads(pickle.dumps(caught.value))
    assert vars(again) == vars(caught.value) and str(again) == str(caught.value)
    with open("bad.trovik", "wb") as file:
        file.write(b"not a scene")
    with pytest.raises(trovik.Error) as caught:
        trovik.open("bad.trovik")
    assert caught.value.file.endswith("/bad.trovik")


@pytest.mark.parametrize(
    "step, error",
    [
        ({"stroke": {"surface": [[0, 0, np.nan]]}}, ValueError),
        ({"stroke": {"surface": np.array([[0, 0, np.inf]])}}, ValueError),
        ({"set": {"radius": object()}}, TypeError),
        ({"set": {1: 2}}, TypeError),
        ({"undo": 2**70}, ValueError),
        ({"undo": "x"}, trovik.Error),
        ({"undo": 1.5}, trovik.Error),
        ({"fly": 1}, trovik.Error),
        ([1], trovik.Error),
        ({"subdivide": 1, "undo": 1}, trovik.Error),
        ({"stroke": {"surface": [[0, 0, 1, 2]]}}, trovik.Error),
        ({"level": 9}, trovik.Error),
        ({"undo": 9}, trovik.Error),
        ({"redo": 1}, trovik.Error),
        ({"mask": {"image": {"file": "none.png"}}}, trovik.Error),
        ({"stroke": {"continue": True}}, trovik.Error),
    ],
)
def test_wrong_steps_are_refused(ball, step, error):
    before = bits(ball)
    with pytest.raises(error):
        ball.do(step)
    assert bits(ball) == before
    nested = []
    nested.append(nested)
    with pytest.raises(RecursionError):
        ball.do({"set": nested})


def test_values_of_numpy_are_accepted(ball):
    ball.set(radius=np.float32(0.25), spacing=np.int64(30), pressureControlsStrength=np.bool_(True))
    assert ball.active_tool["radius"] == 0.25
    assert ball.active_tool["spacing"] == pytest.approx(30)
    ball.stroke(dabs=[{"face": np.uint32(3)}], seed=np.uint64(2**63 + 1))
    ball.hide(faces=np.array([[0, 4]], dtype=np.uint16))


def test_steps_without_effect_warn(ball):
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        ball.stroke(pointer=[[1, 1]])
    assert [one.category for one in caught] == [trovik.SculptWarning]
    assert caught[0].filename == __file__


def test_documents_cannot_be_pickled_or_copied(ball):
    for action in (pickle.dumps, copy.copy, copy.deepcopy):
        with pytest.raises(TypeError, match="save it as a scene"):
            action(ball)
    with pytest.raises(TypeError, match="trovik.open"):
        trovik.Document("spot.obj")


def test_closed_documents_refuse_calls():
    s = cube()
    s.close()
    s.close()
    calls = (lambda: s.positions, s.subdivide, lambda: s.history, s.live_stroke, lambda: s.mask)
    for call in calls:
        with pytest.raises(trovik.ClosedError):
            call()


def test_files(ball):
    ball.camera(from_=[0.3, 0.1, 1], width=64, height=48)
    ball.render("a.png", samples=1)
    ball.render(keep="a", samples=1)
    ball.contact_sheet("sheet.png", renders=["a"])
    ball.export("a.glb")
    ball.save("a.trovik")
    ball.application_data("tests/key", "text")
    ball.application_data("tests/key")
    assert [name.rsplit("/")[-1] for name in ball.written_files] == ["a.png", "sheet.png", "a.glb", "a.trovik"]


def test_stamps_from_arrays(ball):
    y, x = np.mgrid[-1:1:32j, -1:1:32j]
    path = trovik.save_stamp("ring.tif", np.exp(-40 * (np.hypot(x, y) - 0.6) ** 2))
    ball.tool("Sculpt", radius=0.6, strength=30, stamp={"path": path})
    assert ball.active_tool["stamp"] == path
    ball.stroke(surface=[[0, 0, 1]])
    with pytest.raises(trovik.Error):
        trovik.save_stamp("ring.tif", np.zeros(3))
    with pytest.raises(trovik.Error, match="finite"):
        trovik.save_stamp("ring.tif", np.full((4, 4), np.nan))
    with pytest.raises(trovik.Error):
        trovik.save_stamp("ring.png", np.zeros((4, 4)))


def test_journal_restores_unsaved_work():
    code = f"""
import numpy as np, os, trovik
s = trovik.open({str(SPOT)!r}, journal="work.journal")
s.subdivide(2)
s.freeze(s.positions[:, 1] > 0)
s.set_positions(s.positions + 0.02 * s.normals)
s.set(radius=0.2, spacing=1)
s.stroke(surface=[[0.35, 0.2, 0.5]])
try:
    s.stroke(surface=[[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]] * 200, progress=lambda dabs, total: dabs < 5)
except trovik.Cancelled:
    s.freeze("invert")
s.stroke(surface=[[0.3, 0.2, 0.5]], seed=4)
np.save("positions.npy", s.positions)
np.save("mask.npy", s.mask)
with s.live_stroke() as stroke:
    pass
os._exit(0)
"""
    subprocess.run([sys.executable, "-c", code], check=True)
    with pytest.raises(trovik.Error, match="work.journal"):
        trovik.open(SPOT, journal="work.journal")
    trovik.recover("work.journal", "recovered.trovik")
    with trovik.open("recovered.trovik") as s:
        assert (s.positions == np.load("positions.npy")).all()
        assert (s.mask == np.load("mask.npy")).all()
    with pytest.raises(trovik.Error):
        trovik.recover("none.journal", "b.trovik")


def test_views_prevent_strokes_that_refine_the_mesh():
    with trovik.open(SPOT) as s:
        s.do({"remesh": {"edgeLength": 0.15}})
        s.set(radius=0.2, detail={"unit": "radius", "length": 0.2})
        faces = len(s.faces())
        view = s.positions
        with pytest.raises(BufferError, match="stroke with detail"):
            s.stroke(surface=[[0.35, 0.2, 0.5]])
        with pytest.raises(BufferError, match="stroke with detail"):
            s.live_stroke().__enter__()
        before = view.copy()
        del view
        s.stroke(surface=[[0.35, 0.2, 0.5]])
        assert len(s.faces()) != faces
        view = s.positions
        with pytest.raises(BufferError):
            s.undo()
        del view
        s.undo()
        assert len(s.faces()) == faces
        assert (s.positions == before).all()
        s.set(detail={"unit": "off"})
        view = s.positions
        s.stroke(surface=[[0.35, 0.2, 0.5]])
        assert (view == s.positions).all()


def test_journal_ends_with_the_document():
    with trovik.open(SPOT, journal="a.journal") as s:
        s.subdivide()
    s = trovik.open(SPOT, journal="a.journal")
    s.subdivide()
    s.save("a.trovik")
    del s
    with pytest.raises(ZeroDivisionError):
        with trovik.open(SPOT, journal="a.journal") as s:
            s.subdivide()
            1 / 0
    with pytest.raises(trovik.Error, match="a.journal"):
        trovik.open(SPOT, journal="a.journal")


def test_fields_of_the_setup_that_would_be_ignored_are_refused():
    with pytest.raises(trovik.Error, match="steps"):
        trovik.open(SPOT, steps=[{"subdivide": 1}])
    with pytest.raises(trovik.Error, match="mesh"):
        cube(mesh="a.obj")


def test_levels_and_paths_out_of_range_have_clear_errors(ball):
    for number in (-1, 5, 2**32):
        with pytest.raises(IndexError, match="no level"):
            ball.faces(number)
    with pytest.raises(TypeError, match="path"):
        trovik.open(b"a.obj")


@pytest.mark.parametrize("thread", [False, True])
def test_journals_end_when_a_document_with_views_is_dropped(thread):
    s = trovik.open(SPOT, journal="a.journal")
    view = s.positions
    if thread:
        holder = [s]
        worker = threading.Thread(target=holder.clear)
        del s
        worker.start()
        worker.join(60)
    else:
        del s
    gc.collect()
    assert view.shape[1] == 3
    # A journal that was not ended is not overwritten.
    trovik.open(SPOT, journal="a.journal").close()
