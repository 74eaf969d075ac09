#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Selects the sources for clang-tidy and prints their paths, each followed by a NUL character.

The compilation database in the build folder also lists generated sources, which are excluded.

usage: tidy_sources.py CHECKOUT BUILD_DIR --matching PATTERN
       tidy_sources.py CHECKOUT BUILD_DIR --changed BASE --limit NUMBER
"""

import argparse
import json
import os
import re
import subprocess
import sys


def compiled_sources(checkout, build):
    """Returns paths relative to the checkout."""
    with open(os.path.join(build, "compile_commands.json")) as database:
        files = {os.path.realpath(os.path.join(e["directory"], e["file"])) for e in json.load(database)}
    inside = (f for f in files if os.path.commonpath([f, checkout]) == checkout)
    return sorted(os.path.relpath(f, checkout) for f in inside if os.path.commonpath([f, build]) != build)


def git(checkout, *arguments):
    result = subprocess.run(["git", "-C", checkout, *arguments], capture_output=True, text=True)
    return result.stdout if result.returncode == 0 else None


def start_of_change(checkout, base):
    """Returns the merge base with `base`, or the commit before HEAD if HEAD itself is the merge base."""
    head = git(checkout, "rev-parse", "HEAD")
    for branch in (base, f"origin/{base}"):
        start = git(checkout, "merge-base", "HEAD", branch)
        if start and start != head:
            return start.strip()
    dirty = git(checkout, "status", "--porcelain", "--untracked-files=no")
    return "HEAD" if dirty or git(checkout, "rev-parse", "HEAD^") is None else "HEAD^"


def changed_lines(checkout, start):
    """Returns the number of changed lines in each file that has changed since `start` and still exists."""
    counts = {}
    for line in git(checkout, "diff", "--numstat", "--no-renames", "--diff-filter=d", start).splitlines():
        added, removed, name = line.split("\t")
        if added != "-":
            counts[name] = int(added) + int(removed)
    for name in git(checkout, "ls-files", "--others", "--exclude-standard").splitlines():
        with open(os.path.join(checkout, name), "rb") as file:
            counts[name] = file.read().count(b"\n")
    return counts


def source_of_header(checkout, header, sources):
    """Returns the source with the same name, or else the first one that includes the header, or None."""
    stem = os.path.splitext(header)[0]
    if stem + ".cpp" in sources:
        return stem + ".cpp"
    # Includes are relative to the root of the checkout or of the plug-in.
    names = {header, header.removeprefix("plugins/SwiftStroke/")}
    pattern = re.compile("|".join(f'#include "{re.escape(name)}"' for name in names))
    for source in sources:
        with open(os.path.join(checkout, source), encoding="utf-8") as file:
            if pattern.search(file.read()):
                return source
    return None


def sources_of_change(checkout, sources, counts):
    """Returns the sources to check, product sources before tests, and those with the most changed lines first."""
    weights = {}
    for name, count in counts.items():
        source = name if name in sources else None
        if name.endswith((".h", ".inl")):
            source = source_of_header(checkout, name, sources)
        if source is not None:
            weights[source] = weights.get(source, 0) + count
    return sorted(weights, key=lambda source: (source.startswith(("tests/", "bench/")), -weights[source], source))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("checkout")
    parser.add_argument("build")
    parser.add_argument("--matching", default=".")
    parser.add_argument("--changed")
    parser.add_argument("--limit", type=int, default=40)
    arguments = parser.parse_args()
    checkout, build = os.path.realpath(arguments.checkout), os.path.realpath(arguments.build)

    chosen = [f for f in compiled_sources(checkout, build) if re.search(arguments.matching, f)]
    if arguments.changed is not None:
        start = start_of_change(checkout, arguments.changed)
        chosen = sources_of_change(checkout, chosen, changed_lines(checkout, start))
        beyond = len(chosen) - arguments.limit
        chosen = chosen[:arguments.limit]
        print(f"tidy: {len(chosen)} sources changed since {start[:12]}"
              + (f" are checked; run make tidy to check {beyond} more" if beyond > 0 else ""), file=sys.stderr)
    for name in chosen:
        sys.stdout.write(os.path.join(checkout, name) + "\0")


if __name__ == "__main__":
    main()
