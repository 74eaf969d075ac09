#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Follows docs/tutorial.md in an empty folder and checks the results.

    run_tutorial.py SOURCE_DIR TROVIK FOLDER [--pictures]

Blocks marked `json NAME` are scripts and blocks marked `sh` are commands, in the order of the page.
Renders are small, for speed. With --pictures, they have the size given on the page, and the images of the
page are written to docs/pictures/tutorial (needs ImageMagick's `convert`).
"""

import json
import os
import re
import shutil
import subprocess
import sys

BLOCK = re.compile(r"^```(\w+) ?(\S*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
PICTURE = re.compile(r"\]\(pictures/tutorial/([\w.-]+)\)")
SHOWN = "70%"


def fail(reason):
    sys.exit("tutorial: " + reason)


def smaller(script):
    """Returns the script with very small renders."""
    for step in script["steps"]:
        if "render" in step:
            step["render"].update({"samples": 1, "width": 90, "height": 114})
    return script


def main():
    source, trovik, folder = (os.path.abspath(path) for path in sys.argv[1:4])
    full = "--pictures" in sys.argv
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    environment = dict(os.environ, TROVIK_SOURCE=source)
    environment["PATH"] = os.path.dirname(trovik) + os.pathsep + environment["PATH"]

    with open(os.path.join(source, "docs/tutorial.md"), encoding="utf-8") as page:
        text = page.read()
    commands = 0
    promised = set(PICTURE.findall(text))
    for language, name, content in BLOCK.findall(text):
        if language == "json":
            if not name:
                fail("a script block has no file name")
            script = json.loads(content)
            for step in script["steps"]:
                for field in ("render", "export"):
                    if field in step:
                        promised.add(step[field]["file"])
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                json.dump(script if full else smaller(script), file)
        elif language == "sh":
            for command in content.strip().split("\n"):
                print("==", command, flush=True)
                commands += 1
                result = subprocess.run(command, shell=True, cwd=folder, env=environment)
                if result.returncode != 0:
                    fail("status %d from: %s" % (result.returncode, command))
        else:
            fail("unknown kind of block: " + language)

    if commands < 8:
        fail("only %d commands were found on the page" % commands)
    promised |= {"1-bust.jpg", "bust.trovik", "print.stl", "bust.usda"}
    for name in sorted(promised):
        path = os.path.join(folder, name)
        if not os.path.isfile(path):
            fail("the page shows or promises " + name + ", which was not written")
        # A render that shows only the background is a much smaller file.
        if os.path.getsize(path) < (1500 if name.endswith(".jpg") else 10000):
            fail(name + " is almost empty")
    info = subprocess.run(
        [trovik, "info", "--json", os.path.join(folder, "bust.trovik")],
        stdout=subprocess.PIPE, check=True, env=environment)
    scene = json.loads(info.stdout)
    layers = scene["layers"]
    if [layer["name"] for layer in layers] != ["wrinkles"] or layers[0]["strength"] != 0.5:
        fail("the scene's layers are %s" % layers)
    if len(scene["levels"]) != 5:
        fail("the scene has %d levels" % len(scene["levels"]))
    if full:
        for name in PICTURE.findall(text):
            subprocess.run(
                ["convert", os.path.join(folder, name), "-resize", SHOWN, "-quality", "84",
                 os.path.join(source, "docs/pictures/tutorial", name)], check=True)
    shutil.rmtree(folder)


if __name__ == "__main__":
    main()
