#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Summarises the test coverage of a `coverage` build, by source file.
#
#   scripts/coverage.sh [BUILD_DIR]
set -euo pipefail

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-$source/build/coverage}
if ! command -v gcovr >/dev/null; then
    echo "coverage: gcovr is missing; run apt-get install gcovr." >&2
    exit 1
fi
gcovr --root "$source" --filter "$source/(framework|plugins|apps)/" \
    --exclude-throw-branches --print-summary "$build"
