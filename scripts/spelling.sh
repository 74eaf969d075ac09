#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Lists misspelt words in the tracked documents, sources and scripts; .codespellrc has the exceptions.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v codespell >/dev/null; then
    echo "spelling: codespell is missing; run scripts/install-packages.sh --lint." >&2
    exit 1
fi
# Meshes, images and the damaged files of the fuzzers are data.
git ls-files -z -- '*.h' '*.cpp' '*.inl' '*.in' '*.md' '*.txt' '*.cmake' '*.py' '*.sh' '*.json' '*.1' \
    Makefile .ci/run ':!fuzz/corpus' ':!tests/data' |
    xargs -0 --no-run-if-empty codespell
