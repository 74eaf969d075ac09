#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Runs clang-tidy on the sources of a configured build.
#
#   scripts/tidy.sh [BUILD_DIR [PATTERN]]
#
# PATTERN is a regular expression that limits the run to sources with a matching path.
set -euo pipefail

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-$source/build/dev}
pattern=${2:-.}

if ! command -v clang-tidy >/dev/null; then
    echo "tidy: clang-tidy is missing; run scripts/install-packages.sh --lint." >&2
    exit 1
fi
if [[ ! -f $build/compile_commands.json ]]; then
    echo "tidy: $build is not configured; run cmake --preset dev." >&2
    exit 1
fi

# The compilation database also contains generated files of the build folder, which are excluded.
python3 - "$source" "$build" "$pattern" <<'PYTHON' |
import json, os, re, sys

source, build, pattern = sys.argv[1:]
build = os.path.realpath(build)
with open(os.path.join(build, "compile_commands.json")) as database:
    files = {os.path.realpath(os.path.join(e["directory"], e["file"])) for e in json.load(database)}
for name in sorted(files):
    inside = os.path.commonpath([name, os.path.realpath(source)]) == os.path.realpath(source)
    generated = os.path.commonpath([name, build]) == build
    if inside and not generated and re.search(pattern, name):
        sys.stdout.write(name + "\0")
PYTHON
    xargs -0 --no-run-if-empty --max-args=1 --max-procs="$(nproc)" \
        clang-tidy --quiet -p "$build" --extra-arg=-Wno-unknown-warning-option
