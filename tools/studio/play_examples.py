#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Plays the sessions of examples/studio in order, each on the scene that the previous one saved.

    play_examples.py SOURCE_DIR TROVIK_STUDIO TROVIK FOLDER [--pictures]

Fails if a session does not play to its end, if the last scene is smaller than docs/studio.md says,
or if that page and the sessions do not name the same pictures. Scenes and pictures are written to
FOLDER; with --pictures, the pictures are also copied to docs/pictures/studio. Needs a display
(xvfb-run).
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

MINIMUM_FACES = 1_000_000
PICTURE = re.compile(r"\]\(pictures/studio/([\w.-]+)\)")


def fail(reason):
    sys.exit("play_examples: " + reason)


def main():
    source, studio, trovik, folder = (pathlib.Path(path).resolve() for path in sys.argv[1:5])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    environment = dict(os.environ, HOME=str(folder))
    environment.update(
        (f"XDG_{name}_HOME", str(folder)) for name in ("CONFIG", "DATA", "STATE", "CACHE")
    )
    environment.update(LIBGL_ALWAYS_SOFTWARE="1", QT_SCALE_FACTOR="1", QT_QPA_PLATFORM="xcb")
    sessions = sorted((source / "examples/studio").glob("*.events.json"))
    if not sessions:
        fail("examples/studio has no event files")

    taken = set()
    scene = None
    for session in sessions:
        command = [studio, "--no-journal", "--no-preferences", "--skip-frames", "--quit"]
        command += ["--play", session]
        if scene is not None:
            command.append(scene)
        scene = folder / session.name.replace(".events.json", ".trovik")
        command += ["--save", scene]
        result = subprocess.run(
            list(map(str, command)), cwd=folder, env=environment, capture_output=True, text=True
        )
        if result.returncode != 0:
            fail(f"{session.name}: status {result.returncode}: {result.stderr.strip()}")
        events = json.loads(session.read_text(encoding="utf-8"))["events"]
        taken.update(event["file"] for event in events if event["type"] == "screenshot")

    information = json.loads(
        subprocess.run(
            [trovik, "info", "--json", scene], check=True, capture_output=True, text=True
        ).stdout
    )
    faces = max(level["faces"] for level in information["levels"])
    if faces < MINIMUM_FACES:
        fail(f"the sculpture has {faces} faces, expected at least {MINIMUM_FACES}")
    shown = set(PICTURE.findall((source / "docs/studio.md").read_text(encoding="utf-8")))
    if shown != taken:
        fail(f"docs/studio.md and the sessions differ in the pictures {sorted(shown ^ taken)}")
    for name in taken:
        if (folder / name).stat().st_size < 10_000:
            fail(f"{name} is empty")
        if "--pictures" in sys.argv:
            target = source / "docs/pictures/studio" / name
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(folder / name, target)
    print(f"{len(sessions)} sessions, {len(taken)} pictures, {faces} faces")


if __name__ == "__main__":
    main()
