#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Uses trovik-studio as a person would, with the mouse and keyboard of the window system.

    end_to_end.py SOURCE_DIR TROVIK_STUDIO TROVIK FOLDER

Opens a mesh, draws two strokes with the mouse, undoes the second, saves under a new name and quits. Then
checks the saved scene with `trovik`. It starts its own X server (Xvfb) and needs xdotool. A missing
program is a failure.
"""

import json
import os
import shutil
import subprocess
import sys
import time

LIMIT_SECONDS = 90
# Height of the chin in the mesh.
CHIN_HEIGHT = 6.2


def fail(reason):
    sys.exit("end_to_end: " + reason)


class Desktop:
    """A virtual screen and the program on it."""

    def __init__(self, folder):
        self.folder = folder
        for program in ("Xvfb", "xdotool"):
            if shutil.which(program) is None:
                fail(f"{program} is missing; run scripts/install-packages.sh")
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1440x900x24", "-nolisten", "tcp"],
            pass_fds=[write],
            stderr=subprocess.DEVNULL,
        )
        os.close(write)
        with os.fdopen(read) as pipe:
            display = pipe.readline().strip()
        if not display:
            fail("Xvfb does not start")
        home = os.path.join(folder, "home")
        os.makedirs(home)
        self.environment = dict(
            os.environ,
            DISPLAY=":" + display,
            HOME=home,
            QT_QPA_PLATFORM="xcb",
            LIBGL_ALWAYS_SOFTWARE="1",
            QT_SCALE_FACTOR="1",
        )
        for folder_name in ("CONFIG", "DATA", "STATE", "CACHE"):
            self.environment[f"XDG_{folder_name}_HOME"] = home
        self.studio = None
        self.begin = time.monotonic()

    def start(self, command):
        log = open(os.path.join(self.folder, "studio.log"), "w", encoding="utf-8")
        self.studio = subprocess.Popen(
            command, env=self.environment, cwd=self.folder, stdout=log, stderr=log
        )

    def xdotool(self, *arguments):
        result = subprocess.run(
            ["xdotool", *map(str, arguments)], env=self.environment, capture_output=True, text=True
        )
        return result.stdout.split()

    def wait(self, what, condition):
        """Waits until a condition returns something true, and returns it."""
        while True:
            found = condition()
            if found:
                return found
            if self.studio is not None and self.studio.poll() not in (None, 0):
                fail(f"trovik-studio ended with status {self.studio.returncode}")
            if time.monotonic() - self.begin > LIMIT_SECONDS:
                fail(f"timed out while waiting for {what}")
            time.sleep(0.05)

    def window(self, title):
        """Waits for a visible window with this title and gives it the keyboard focus."""
        found = self.wait(
            f"the window {title}", lambda: self.xdotool("search", "--onlyvisible", "--name", title)
        )
        self.xdotool("windowfocus", "--sync", found[-1])
        return found[-1]

    def title(self, window):
        return " ".join(self.xdotool("getwindowname", window))

    def close(self):
        for process in (self.studio, self.server):
            if process is not None and process.poll() is None:
                process.terminate()
                process.wait()


def positions(path):
    with open(path, encoding="utf-8") as file:
        lines = [line.split() for line in file if line.startswith("v ")]
    return [tuple(map(float, line[1:4])) for line in lines]


def main():
    source, studio, trovik, folder = (os.path.abspath(path) for path in sys.argv[1:5])
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    mesh = os.path.join(folder, "bust.obj")
    shutil.copy(os.path.join(source, "examples/meshes/bust.obj"), mesh)
    scene = os.path.join(folder, "sculpted.trovik")

    def exported(name, document):
        result = os.path.join(folder, name)
        subprocess.run([trovik, "convert", document, result], check=True, stdout=subprocess.DEVNULL)
        return positions(result)

    desktop = Desktop(folder)
    try:
        desktop.start([studio, mesh, "--viewport-width", "640", "--viewport-height", "480"])
        main_window = desktop.window("bust.obj.*Trovik Studio")
        # The bust is in the middle of the viewport, regardless of the width of the panels.
        geometry = dict(
            line.split("=")
            for line in desktop.xdotool("getwindowgeometry", "--shell", main_window)
        )
        left, top = int(geometry["X"]), int(geometry["Y"])
        time.sleep(1)

        def draw(y):
            middle = left + int(geometry["WIDTH"]) // 2
            desktop.xdotool("mousemove", middle - 30, top + y, "mousedown", 1)
            for i in range(1, 13):
                desktop.xdotool("mousemove", middle - 30 + 5 * i, top + y + i)
            desktop.xdotool("mouseup", 1)
            time.sleep(0.3)

        modified = lambda: "*" in desktop.title(main_window)
        draw(250)
        desktop.wait("the first stroke", modified)
        desktop.xdotool("key", "ctrl+z")
        desktop.wait("the undo of the first stroke", lambda: not modified())
        desktop.xdotool("key", "ctrl+shift+z")
        desktop.wait("the redo of the first stroke", modified)
        draw(330)
        desktop.xdotool("key", "ctrl+z")
        desktop.xdotool("key", "ctrl+s")
        desktop.window("Save As")
        desktop.xdotool("key", "ctrl+a")
        desktop.xdotool("type", "--delay", 5, scene)
        desktop.xdotool("key", "Return")
        desktop.wait("the scene", lambda: os.path.exists(scene))
        main_window = desktop.window("sculpted.trovik.*Trovik Studio")
        desktop.wait("the end of saving", lambda: not modified())
        desktop.xdotool("key", "ctrl+q")
        desktop.wait("the end of the program", lambda: desktop.studio.poll() is not None)
        if desktop.studio.returncode != 0:
            fail(f"trovik-studio ended with status {desktop.studio.returncode}")
    finally:
        desktop.close()

    information = json.loads(
        subprocess.run(
            [trovik, "info", "--json", scene], check=True, capture_output=True, text=True
        ).stdout
    )
    print(json.dumps(information))
    before, after = exported("before.obj", mesh), exported("after.obj", scene)
    if len(before) != len(after):
        fail(f"the scene has {len(after)} vertices, the mesh {len(before)}")
    moved = [a for a, b in zip(before, after) if max(abs(x - y) for x, y in zip(a, b)) > 1e-4]
    print(f"{len(moved)} of {len(before)} vertices moved, {time.monotonic() - desktop.begin:.1f} s")
    if len(moved) < 10:
        fail("the first stroke, over the face, has no effect")
    if min(y for _, y, _ in moved) < CHIN_HEIGHT - 0.5:
        fail("the second stroke, over the chest, was not undone")


if __name__ == "__main__":
    main()
