#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Formats the C++ sources in place; with --check, only lists those that are not formatted.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(-i)
if [[ ${1:-} == --check ]]; then
    mode=(--dry-run --Werror)
elif (($# > 0)); then
    echo "usage: scripts/format.sh [--check]" >&2
    exit 2
fi
if ! command -v clang-format >/dev/null; then
    echo "format: clang-format is missing; run scripts/install-packages.sh --lint." >&2
    exit 1
fi

roots=()
for root in apps bench examples framework fuzz plugins python tests tools; do
    [[ -d $root ]] && roots+=("$root")
done
find "${roots[@]}" \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 --no-run-if-empty --max-args=20 --max-procs="$(nproc)" clang-format "${mode[@]}"
