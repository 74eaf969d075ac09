#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Installs the Debian packages that building and testing need. Does nothing where all of them are
# installed. Needs root (or sudo) otherwise; asks no questions.
#
#   scripts/install-packages.sh          build, tests, benchmarks
#   scripts/install-packages.sh --lint   clang-format, clang-tidy and codespell as well
#   scripts/install-packages.sh --clang  clang as well
#   scripts/install-packages.sh --fuzz   clang and its fuzzer as well
set -euo pipefail

packages=(
    # Tools.
    g++ cmake ninja-build make pkg-config ccache binutils git python3 python3-numpy
    # What the products link.
    qt6-base-dev libembree-dev libtbb-dev libopenimageio-dev libimath-dev libpng-dev
    libtinyobjloader-dev libtinygltf-dev nlohmann-json3-dev libvalijson-dev libcli11-dev libsimde-dev liblz4-dev libzstd-dev
    # What the tests and benchmarks link.
    libosd-dev libgtest-dev libgmock-dev libbenchmark-dev locales
)

usage() { sed -n '4,10s/^# \{0,1\}//p' "$0"; }

for argument in "$@"; do
    case "$argument" in
        --lint) packages+=(clang-format clang-tidy codespell) ;;
        --clang) packages+=(clang) ;;
        --fuzz) packages+=(clang libclang-rt-dev) ;;
        -h | --help) usage; exit 0 ;;
        *) echo "install-packages: unknown argument '$argument'" >&2; usage >&2; exit 2 ;;
    esac
done

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "install-packages: this is no Debian system (dpkg-query or apt-get is missing)." >&2
    echo "Install these by your system's own means, then run cmake --workflow --preset ci:" >&2
    printf '  %s\n' "${packages[@]}" >&2
    exit 1
fi

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ $state == installed ]] || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
    echo "Packages: all ${#packages[@]} are installed."
    exit 0
fi

echo "Packages: installing ${missing[*]}"
asRoot=(env DEBIAN_FRONTEND=noninteractive)
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null || ! sudo -n true 2>/dev/null; then
        echo "install-packages: this needs root. Run: sudo $0" >&2
        exit 1
    fi
    asRoot=(sudo -n "${asRoot[@]}")
fi

# No recommended packages: they bring documentation and desktop parts that nothing here uses.
aptGet=("${asRoot[@]}" apt-get --yes --quiet --no-install-recommends
    -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)

update() { "${aptGet[@]}" update </dev/null; }

# A mirror now and then changes while its lists are being read; a second try sees it whole.
update || { echo "Packages: the lists could not be read, trying once more."; sleep 5; update; }
"${aptGet[@]}" install "${missing[@]}" </dev/null
echo "Packages: done."
