#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Checks that do not need a build. All of them run, even after a failure; the last line names those that
# failed.
#
#   scripts/check.sh [BASE]
#
# clang-tidy checks the sources changed since the merge base with BASE (default main).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
failed=()

check() {
    local name=$1
    shift
    echo "== $name"
    "$@" || failed+=("$name")
}

tidy_the_change() {
    local log
    # Configuring takes seconds. It writes the compilation database and the headers that CMake generates.
    if ! log=$(cmake --preset dev 2>&1); then
        printf '%s\n' "$log"
        return 1
    fi
    scripts/tidy.sh --changed "$1"
}

check "Format" scripts/format.sh --check
check "Layers" python3 tools/check_layers.py
check "Public headers" python3 tools/check_public_headers.py
check "Links" python3 tools/check_links.py
check "Spelling" scripts/spelling.sh
check "Phrases" python3 tools/check_phrases.py
check "clang-tidy" tidy_the_change "${1:-main}"

if ((${#failed[@]} > 0)); then
    printf 'check: failed: %s\n' "${failed[*]}" >&2
    exit 1
fi
echo "check: all passed."
