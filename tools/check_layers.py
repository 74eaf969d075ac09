#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that the files in each folder of the framework include only folders below it.

The order, from the bottom up, is that of trovik_add_subdirectories() in framework/CMakeLists.txt.
Also checks that every test folder listed in tests/CMakeLists.txt exists, because the build skips
missing folders silently.

usage: check_layers.py [CHECKOUT]
"""

import re
import sys
from pathlib import Path

SOURCES = {".h", ".cpp", ".inl", ".in"}


def folders_listed(cmake_file):
    text = cmake_file.read_text()
    listed = re.search(r"trovik_add_subdirectories\(([^)]*)\)", text)
    return listed.group(1).split() if listed else []


def upward_includes(framework, order):
    for source in sorted(framework.rglob("*")):
        if source.suffix not in SOURCES:
            continue
        folder = source.relative_to(framework).parts[0]
        if folder not in order:
            yield f"{source}: folder \"{folder}\" is not listed in framework/CMakeLists.txt"
            continue
        for number, line in enumerate(source.read_text().splitlines(), 1):
            include = re.match(r'\s*#include "(framework|apps|tests|bench)/([^/"]+)/', line)
            if not include:
                continue
            if include.group(1) != "framework":
                yield f"{source}:{number}: the framework includes {line.split()[1]}"
                continue
            target = include.group(2)
            if target not in order:
                yield f"{source}:{number}: folder \"{target}\" is not listed"
            elif order.index(target) > order.index(folder):
                yield f"{source}:{number}: {folder} includes {line.split()[1]}, which is above it"


def missing_folders(cmake_file):
    for folder in folders_listed(cmake_file):
        if not (cmake_file.parent / folder / "CMakeLists.txt").exists():
            yield f"{cmake_file}: \"{folder}\" is listed but has no CMakeLists.txt"


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else ".")
    framework = root / "framework"
    faults = list(upward_includes(framework, folders_listed(framework / "CMakeLists.txt")))
    for listing in (root / "tests" / "CMakeLists.txt", framework / "CMakeLists.txt"):
        faults += missing_folders(listing)
    for fault in faults:
        print(fault)
    print(f"{len(faults)} faults" if faults else "The layers are in order.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
