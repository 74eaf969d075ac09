#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Runs clang-tidy on the sources of a configured build.
#
#   scripts/tidy.sh [BUILD_DIR [PATTERN]]
#   scripts/tidy.sh --changed BASE [BUILD_DIR [LIMIT]]
#
# PATTERN is a regular expression that limits the run to sources with a matching path.
#
# --changed checks the sources changed since the merge base with BASE, including uncommitted changes. If
# BASE does not exist, or HEAD is the merge base, the sources of the last commit are checked. For a
# changed header, its own source file is checked, or else one that includes it. If there are more than
# LIMIT sources (default 40), product sources are checked before tests, and those with the most changed
# lines first; the number of unchecked sources is printed.
set -euo pipefail

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
base=
if [[ ${1:-} == --changed ]]; then
    base=${2:?--changed needs a branch or commit}
    shift 2
fi
build=${1:-$source/build/dev}

if ! command -v clang-tidy >/dev/null; then
    echo "tidy: clang-tidy is missing; run scripts/install-packages.sh --lint." >&2
    exit 1
fi
if [[ ! -f $build/compile_commands.json ]]; then
    echo "tidy: $build is not configured; run cmake --preset dev." >&2
    exit 1
fi

select=("$source/tools/tidy_sources.py" "$source" "$build")
if [[ -n $base ]]; then
    select+=(--changed "$base" --limit "${2:-40}")
else
    select+=(--matching "${2:-.}")
fi
python3 "${select[@]}" | python3 "$source/tools/tidy_batches.py" "$build"
