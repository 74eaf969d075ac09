#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Makes the Debian packages and the archive of a build, in BUILD_DIR/packages.
#
#   scripts/make-packages.sh [BUILD_DIR]
#
# The build must be configured with the preset `package`. The same sources and tools give the same
# bytes: all times in the packages are that of the last commit.
set -euo pipefail

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath "${1:-$source/build/package}")
output=$build/packages

if [[ ! -f $build/CPackConfig.cmake ]]; then
    echo "make-packages: $build is not configured; run cmake --preset package." >&2
    exit 1
fi
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$source" log -1 --format=%ct)}
export SOURCE_DATE_EPOCH
umask 022
rm -rf "$output"
mkdir -p "$output"

# Debian packages install to the folders that the loader searches, so they have no run paths. The
# archive needs them, because it works in any folder. Only the installation differs.
pack() {
    local generator=$1 withoutRunPath=$2
    cmake -B "$build" -DCMAKE_SKIP_INSTALL_RPATH="$withoutRunPath" >/dev/null
    cpack -G "$generator" --config "$build/CPackConfig.cmake" -B "$output" >"$output/cpack.log" 2>&1 || {
        cat "$output/cpack.log" >&2
        exit 1
    }
}
pack TGZ OFF
pack DEB ON
rm -rf "$output/_CPack_Packages" "$output/cpack.log"
cd "$output"
sha256sum -- *.deb *.tar.gz | tee SHA256SUMS
