#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Checks the packages of make-packages.sh: lintian, then in a new Debian 12 system in a temporary
# folder (debootstrap): installs them, uses each as a user would, removes them and looks for remains.
# Unpacks the archive in two folders and runs the command there. Needs root and a Debian mirror.
#
#   scripts/check-packages.sh [PACKAGES [MIRROR]]
set -euo pipefail

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
packages=$(realpath "${1:-$source/build/package/packages}")
mirror=${2:-http://deb.debian.org/debian}

shopt -s nullglob
debs=("$packages"/*.deb)
archives=("$packages"/*.tar.gz)
if ((${#debs[@]} == 0 || ${#archives[@]} != 1)); then
    echo "check-packages: $packages does not contain the packages; run make package." >&2
    exit 1
fi
if ((EUID != 0)); then
    echo "check-packages: debootstrap and chroot need root." >&2
    exit 1
fi

work=$(mktemp -d)
root=$work/root
clean_up() {
    umount --quiet "$root/proc" || true
    rm -rf "$work"
}
trap clean_up EXIT

echo "== lintian"
lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs "${debs[@]}"

echo "== The archive works in any folder"
for folder in "$work/first" "$work/second folder"; do
    mkdir -p "$folder"
    tar -xzf "${archives[0]}" -C "$folder" --strip-components 1
    env --unset=LD_LIBRARY_PATH --unset=TROVIK_PLUGIN_PATH "$folder/bin/trovik" tools | grep -q Imprint
    rm -rf "$work/first"
done

echo "== A new Debian system"
debootstrap --variant=minbase bookworm "$root" "$mirror" >"$work/debootstrap.log" || {
    tail -n 20 "$work/debootstrap.log" >&2
    exit 1
}
mount -t proc proc "$root/proc"
mkdir "$root/packages" "$root/examples"
cp "${debs[@]}" "$root/packages"
cp -r "$source/examples/." "$root/examples"
cp /etc/resolv.conf "$root/etc/resolv.conf"
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
files() { (cd "$root" && find usr/bin usr/lib usr/include usr/share/trovik usr/share/doc -path '*trovik*' -o -name '*SwiftStroke*' -o -name '*DetailBrush*') 2>/dev/null | grep -v __pycache__ | sort; }

echo "== Install"
# The compiler is for the programs that are built with the development package.
inside apt-get install --yes --quiet --no-install-recommends g++ cmake make >"$work/apt.log" 2>&1 &&
    inside bash -c 'apt-get install --yes --quiet --no-install-recommends /packages/*.deb' >>"$work/apt.log" 2>&1 || {
    tail -n 20 "$work/apt.log" >&2
    exit 1
}

echo "== trovik"
inside trovik --version
inside bash -c 'cd /root && trovik sculpt /examples/demo.json && test -n "$(ls)"'
test -s "$root/usr/share/man/man1/trovik.1.gz"

echo "== trovik-studio"
inside trovik-studio --version
inside env XDG_RUNTIME_DIR=/tmp trovik-studio --platform offscreen --play /examples/studio/1-block.events.json --quit

echo "== python3-trovik"
inside bash -c 'cd /root && for example in /examples/python/*.py; do echo "$example"; python3 "$example" --help >/dev/null; done'
inside bash -c 'cd /root && python3 /examples/python/rivets.py --levels 3 --width 64 --output rivets && ls rivets'

echo "== libtrovik-dev"
for example in host plugin; do
    [[ -d $source/examples/$example ]] || continue
    inside bash -c "cmake -S /examples/$example -B /tmp/$example -DCMAKE_BUILD_TYPE=Release >/dev/null && cmake --build /tmp/$example"
done
inside /tmp/host/sculpt-host /examples/meshes/spot.obj /root/sculpted.trovik

echo "== Remove"
inside bash -c 'apt-get purge --yes --quiet trovik trovik-studio libtrovik0 libtrovik-dev python3-trovik' >"$work/apt.log" 2>&1 || {
    tail -n 20 "$work/apt.log" >&2
    exit 1
}
remains=$(files)
if [[ -n $remains ]]; then
    printf 'check-packages: left after removal:\n%s\n' "$remains" >&2
    exit 1
fi
echo "check-packages: all passed."
