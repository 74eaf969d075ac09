#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Installs the Debian packages that are required to build and test. Does nothing if all of them are
# installed; otherwise it needs root (or sudo). It runs non-interactively.
#
#   scripts/install-packages.sh          build, tests, benchmarks
#   scripts/install-packages.sh --lint   also clang-format, clang-tidy and codespell
#   scripts/install-packages.sh --clang  also Clang
#   scripts/install-packages.sh --fuzz   also Clang and its fuzzer
#   scripts/install-packages.sh --package  also the tools that make and check Debian packages
set -euo pipefail

packages=(
    # Tools.
    g++ cmake ninja-build make pkg-config ccache binutils git python3 python3-numpy
    # Libraries for the products.
    qt6-base-dev libembree-dev libtbb-dev libopenimageio-dev libimath-dev libpng-dev
    libtinygltf-dev nlohmann-json3-dev libvalijson-dev libcli11-dev libsimde-dev liblz4-dev libzstd-dev
    libmeshoptimizer-dev libopenvdb-dev libboost-dev
    # The desktop application.
    qt6-svg-dev libqt6svg6 libqt6opengl6-dev libgl1-mesa-dri
    # Its tests draw on a virtual display.
    xvfb xauth xdotool fonts-dejavu-core
    # The Python package and its tests.
    python3-dev pybind11-dev python3-pytest python3-hypothesis
    # Libraries for the tests and benchmarks.
    libosd-dev libgtest-dev libgmock-dev libbenchmark-dev locales
)

usage() { sed -n '4,11s/^# \{0,1\}//p' "$0"; }

for argument in "$@"; do
    case "$argument" in
        --lint) packages+=(clang-format clang-tidy codespell) ;;
        --clang) packages+=(clang) ;;
        --fuzz) packages+=(clang libclang-rt-dev) ;;
        --package) packages+=(dpkg-dev file lintian debootstrap) ;;
        -h | --help) usage; exit 0 ;;
        *) echo "install-packages: unknown argument '$argument'" >&2; usage >&2; exit 2 ;;
    esac
done

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "install-packages: this is not a Debian system (dpkg-query or apt-get is missing)." >&2
    echo "Install these packages with your system's tools, then run cmake --workflow --preset ci:" >&2
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

# Without recommended packages, which contain documentation and desktop components that are not needed.
aptGet=("${asRoot[@]}" apt-get --yes --quiet --no-install-recommends
    -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)

update() { "${aptGet[@]}" update </dev/null; }

# A mirror may change while its lists are read, so the update is retried once.
update || { echo "Packages: cannot read the package lists; retrying once."; sleep 5; update; }
"${aptGet[@]}" install "${missing[@]}" </dev/null
echo "Packages: done."
