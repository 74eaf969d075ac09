#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy on the sources that standard input lists, each followed by a NUL character.

clang-tidy spends most of its time on headers. Sources in one folder with the same compiler options
are therefore checked as a batch, through a file that includes them. If they do not compile together,
for example because two of them define the same name, the batch is split. Prints the output of
batches with findings; the exit status is 1 if there are any.

usage: tidy_batches.py BUILD_DIR [--size NUMBER] [--jobs NUMBER] < SOURCES
"""

import argparse
import collections
import concurrent.futures
import json
import os
import shlex
import subprocess
import sys
import tempfile

# A batch includes sources on purpose.
CHECKS = "--checks=-bugprone-suspicious-include"
# Version 14 does not know all warning options of newer compilers.
EXTRA = "--extra-arg=-Wno-unknown-warning-option"


def options_of(command):
    """Returns the compiler options of a command, except those that name the source or an output."""
    words = iter(shlex.split(command)[1:])
    options = []
    for word in words:
        if word in ("-o", "-c", "-MF", "-MT", "-MQ"):
            next(words)
        elif word not in ("-MD", "-MMD"):
            options.append(word)
    return tuple(options)


def batches_of(sources, build, size):
    """Returns pairs of compiler options and sources."""
    with open(os.path.join(build, "compile_commands.json")) as database:
        commands = {os.path.realpath(os.path.join(e["directory"], e["file"])): e["command"] for e in json.load(database)}
    groups = collections.defaultdict(list)
    for source in sorted(sources):
        groups[os.path.dirname(source), options_of(commands[source])].append(source)
    for (_, options), members in groups.items():
        for first in range(0, len(members), size):
            yield options, members[first:first + size]


def run(options, sources):
    """Checks sources together. Returns the output, or None if they do not compile together."""
    with tempfile.NamedTemporaryFile("w", suffix=".cpp", prefix="tidy-") as batch:
        batch.writelines(f'#include "{source}"\n' for source in sources)
        batch.flush()
        config = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), ".clang-tidy")
        file = sources[0] if len(sources) == 1 else batch.name
        result = subprocess.run(
            ["clang-tidy", "--quiet", f"--config-file={config}", CHECKS, EXTRA, file, "--", *options],
            capture_output=True, text=True)
    if len(sources) > 1 and "[clang-diagnostic-error" in result.stdout:
        return None
    return result.stdout if result.returncode == 0 else result.stdout + result.stderr


def check(options, sources):
    output = run(options, sources)
    if output is not None:
        return output
    half = len(sources) // 2
    return check(options, sources[:half]) + check(options, sources[half:])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--size", type=int, default=8)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    sources = [os.path.realpath(name) for name in sys.stdin.read().split("\0") if name]
    batches = list(batches_of(sources, arguments.build, arguments.size))
    total, done, findings = len(sources), 0, False
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        work = {pool.submit(check, *batch): batch[1] for batch in batches}
        for finished in concurrent.futures.as_completed(work):
            done += len(work[finished])
            print(f"tidy: {done} of {total}", file=sys.stderr)
            output = finished.result()
            if output.strip():
                findings = True
                print(output, flush=True)
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
