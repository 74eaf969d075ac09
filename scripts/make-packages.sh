#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Makes the Debian packages and the archive of a build, in BUILD_DIR/packages.
#
#   scripts/make-packages.sh [BUILD_DIR]
#
# Works on any configured build folder: it sets the install folders to those of Debian, which it
# keeps, and builds everything that is installed. The preset `package` is the one for distribution.
# The same sources and tools give the same bytes: all times in the packages are that of the last
# commit.
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

logged() {
    "$@" >"$build/packages.log" 2>&1 || {
        cat "$build/packages.log" >&2
        exit 1
    }
}
configure() {
    logged cmake -S "$source" -B "$build" -DCMAKE_INSTALL_PREFIX=/usr \
        -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" \
        -DTROVIK_PYTHON_INSTALL_DIR=lib/python3/dist-packages -DCMAKE_SKIP_INSTALL_RPATH="$1"
}
pack() { logged cpack -G "$1" --config "$build/CPackConfig.cmake" -B "$output"; }

configure OFF
cmake --build "$build" --parallel "${JOBS:-$(nproc)}" --target installed-files
pack TGZ
# Debian packages install to the folders that the loader searches, so they have no run paths. The
# archive has them, because it works in any folder. Only the installation differs: the programs in the
# build folder are the same, and it is configured as before when this script ends.
trap 'configure OFF' EXIT
configure ON
pack DEB
rm -rf "$output/_CPack_Packages"
cd "$output"
sha256sum -- *.deb *.tar.gz | tee SHA256SUMS
