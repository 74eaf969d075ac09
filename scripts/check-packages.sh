#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Checks the packages of make-packages.sh: runs lintian, looks for the files that users need, unpacks
# the archive in two folders and runs it there. Then, in a new Debian system of the release that this
# machine has: installs the packages one after the other, runs every example with them, removes them
# and looks for remaining files.
#
#   scripts/check-packages.sh [--optional] [PACKAGES [MIRROR]]
#
# The new system requires root, debootstrap, chroot and a Debian mirror; by default, the one that apt
# uses. If the machine does not permit a new system, the script fails, or, with --optional, succeeds
# with a message. The examples are run with few levels and with renders of low quality, for speed.
set -euo pipefail

optional=0
if [[ ${1:-} == --optional ]]; then
    optional=1
    shift
fi
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
packages=$(realpath "${1:-$source/build/package/packages}")
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
mirror=${2:-$(apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
    sed -n "s/^$codename main //p" | head -n 1)}

fail() {
    echo "check-packages: $*" >&2
    exit 1
}
shopt -s nullglob
debs=("$packages"/*.deb)
archives=("$packages"/*.tar.gz)
shopt -u nullglob
if ((${#debs[@]} == 0 || ${#archives[@]} != 1)); then
    fail "$packages does not contain the packages; run make package."
fi

# Not in /tmp, which may be small or may not permit programs.
work=$(mktemp -d "$(dirname "$packages")/check-packages.XXXX")
root=$work/root
display=
clean_up() {
    [[ -z $display ]] || kill "$display"
    umount --quiet "$root/proc" 2>/dev/null || true
    rm -rf --one-file-system "$work"
}
trap clean_up EXIT
step() { printf '== %s (after %d s)\n' "$1" "$SECONDS"; }
# Prints the output of a command only if it fails.
quietly() {
    "$@" >"$work/log" 2>&1 || {
        tail -n 40 "$work/log" >&2
        fail "failed: $*"
    }
}

step "lintian"
lintian --allow-root --fail-on error,warning "${debs[@]}" || fail "lintian found problems."

step "Contents"
expect() {
    local package=$1 list path
    shift
    list=$(dpkg-deb --contents "$packages/${package}"_[0-9]*.deb)
    for path in copyright changelog.gz; do set -- "$@" "usr/share/doc/$package/$path"; done
    for path; do
        # shellcheck disable=SC2053 # the path is a pattern
        [[ $list == *" ./"$path* ]] || fail "$package does not contain $path"
    done
}
library=$(basename "$packages"/libtrovik[0-9]*.deb)
library=${library%%_*}
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
expect "$library" "usr/lib/$triplet/libTrovikFramework.so.${library#libtrovik} -> " \
    "usr/lib/$triplet/trovik/"{modules/trovik-embree.so,modules/trovik-openimageio.so,modules/trovik-openvdb.so,plugins/SwiftStroke.so}
expect libtrovik-dev "usr/lib/$triplet/libTrovikFramework.so -> " \
    "usr/lib/$triplet/cmake/Trovik/TrovikConfig.cmake" usr/include/trovik/host/Contract.h
expect trovik usr/bin/trovik usr/share/man/man1/trovik{,-trace}.1.gz usr/share/trovik/stamps/Stamps/ \
    usr/share/bash-completion/completions/trovik usr/share/zsh/vendor-completions/_trovik \
    usr/share/fish/vendor_completions.d/trovik.fish
expect trovik-studio usr/bin/trovik-studio usr/share/man/man1/trovik-studio.1.gz \
    usr/share/applications/org.trovik.Studio.desktop usr/share/metainfo/org.trovik.Studio.metainfo.xml \
    usr/share/icons/hicolor/scalable/apps/org.trovik.Studio.svg usr/share/mime/packages/org.trovik.Studio.xml \
    usr/share/trovik/meshes/bust.obj
expect python3-trovik usr/lib/python3/dist-packages/trovik/{__init__.py,_core.,py.typed}
dpkg-deb --info "$packages/$library"_*.deb shlibs | tee "$work/shlibs"
grep -q "^libTrovikFramework ${library#libtrovik} $library (>= " "$work/shlibs" || fail "wrong shlibs"

step "The archive works in any folder"
for folder in "$work/first" "$work/second folder"; do
    mkdir -p "$folder"
    tar -xzf "${archives[0]}" -C "$folder" --strip-components 1
    for program in trovik trovik-studio; do
        env --unset=LD_LIBRARY_PATH --unset=TROVIK_PLUGIN_PATH "$folder/bin/$program" --version
    done
    env --unset=LD_LIBRARY_PATH --unset=TROVIK_PLUGIN_PATH --unset=TROVIK_STAMP_PATH \
        "$folder/bin/trovik" tools | grep ^Imprint
    rm -rf "$folder"
done

not_permitted() {
    echo "check-packages: NOT CHECKED in a new system: $*." >&2
    echo "check-packages: The packages themselves have passed the checks above." >&2
    ((optional)) || exit 1
    exit 0
}
step "A new Debian system ($codename from $mirror)"
((EUID == 0)) || not_permitted "this needs root"
command -v debootstrap >/dev/null || not_permitted "debootstrap is not installed"
[[ -n $mirror ]] || not_permitted "apt has no source for $codename main"
chroot / /bin/true 2>"$work/log" || not_permitted "chroot is forbidden ($(cat "$work/log"))"
{ mknod "$work/null" c 1 3 && : >"$work/null"; } 2>"$work/log" ||
    not_permitted "device files are forbidden ($(tail -n 1 "$work/log"))"
# apt and debootstrap use the same proxy.
eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
export http_proxy=${http_proxy:-} https_proxy=${https_proxy:-}
debootstrap --variant=minbase "$codename" "$root" "$mirror" >"$work/debootstrap.log" 2>&1 || {
    tail -n 20 "$work/debootstrap.log" >&2
    not_permitted "debootstrap failed, see above"
}
mount -t proc proc "$root/proc" 2>"$work/log" ||
    echo "check-packages: continuing without /proc ($(cat "$work/log"))"
apt-config dump --format '%f "%v";%n' Acquire::http::Proxy Acquire::https::Proxy >"$root/etc/apt/apt.conf.d/proxy"
echo 'Acquire::Retries "3";' >"$root/etc/apt/apt.conf.d/retries"
# The system is deleted afterwards, so nothing has to be on the disk.
echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/unsafe-io"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mkdir "$root/packages" "$root/examples" "$root/tmp/home"
cp "${debs[@]}" "$root/packages"
cp -r "$source/examples/." "$root/examples"
cp -r "$source/stamps" "$root/stamps" # a script refers to ../stamps
cp -r "$source/tests/install" "$root/tmp/install"
inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/tmp/home LANG=C.UTF-8 QT_QPA_PLATFORM=offscreen \
        XDG_RUNTIME_DIR=/tmp http_proxy="$http_proxy" https_proxy="$https_proxy" DEBIAN_FRONTEND=noninteractive \
        bash -euc "cd /tmp; $1"
}
# Without recommended packages, so that a missing dependency is noticed.
install() { quietly inside "apt-get install --yes --no-install-recommends $*"; }
list_files() { (cd "$root" && find usr/bin usr/lib usr/include usr/share -iname '*trovik*' -o -name '*SwiftStroke*' -o -name '*DetailBrush*') | sort; }
list_files >"$work/before"

step "trovik"
install "/packages/$library"_*.deb /packages/trovik_*.deb
inside 'trovik --version
    source /usr/share/bash-completion/completions/trovik; complete -p trovik'
sed -i -E 's/"samples": *[0-9]+/"samples": 1/g; s/"size": *(4096|2048)\b/"size": 256/g
    s/"(levels|subdivide)": *[6-9]/"\1": 5/g' "$root"/examples/*.json
for script in "$root"/examples/*.json; do
    name=$(basename "$script" .json)
    quietly inside "trovik sculpt -q -o out/$name /examples/$name.json && test -n \"\$(ls out/$name)\""
    step "  $name"
done

# The tool for traces needs NumPy, which the package recommends.
install python3-numpy
quietly inside 'trovik sculpt -q -o traced --trace trace /examples/levels.json && trovik-trace show trace'

step "trovik-studio"
# The recommended package with Mesa's renderers is needed for a window.
install /packages/trovik-studio_*.deb libgl1-mesa-dri
inside 'trovik-studio --version'
play='trovik-studio --no-journal --no-preferences --skip-frames --play /examples/studio/1-block.events.json'
play+=' --save studio.trovik --screenshot studio.png --quit'
if command -v Xvfb >/dev/null; then
    # Outside of the new system, which shares the network, and therefore the socket, with it.
    Xvfb -displayfd 1 -screen 0 1280x960x24 -ac >"$work/display" 2>"$work/log" &
    display=$!
    for ((i = 0; i < 300; i++)); do
        [[ -s $work/display ]] && break
        sleep 0.1
    done
    quietly inside "export DISPLAY=:$(cat "$work/display") QT_QPA_PLATFORM=xcb LIBGL_ALWAYS_SOFTWARE=1; $play"
    kill "$display"
    display=
    [[ -s $root/tmp/studio.png ]] || fail "trovik-studio wrote no screenshot"
    inside 'trovik info studio.trovik'
else
    echo "check-packages: Xvfb is not installed; no window was opened."
fi
step "  without a display"
if inside "$play" >"$work/log" 2>&1 || ! grep -q OpenGL "$work/log"; then
    fail "trovik-studio without OpenGL does not fail with a message: $(cat "$work/log")"
fi

step "python3-trovik"
install /packages/python3-trovik_*.deb
inside 'python3 -c "import trovik, importlib.metadata as m; assert m.version(\"trovik\") == trovik.__version__"'
inside 'mkdir meshes && cp /examples/meshes/spot.obj /examples/meshes/cube.obj meshes'
for program in "$root"/examples/python/*.py; do
    name=$(basename "$program" .py)
    case $name in
        batch_wear) arguments="meshes $name --vertices 2000" ;;
        erosion) arguments="--levels 3 --cycles 4 --output $name" ;;
        reptile_skin) arguments="--levels 4 --scales 50 --output $name" ;;
        rivets) arguments="--levels 3 --output $name" ;;
        stroke_dataset) arguments="--count 2 --levels 1 --output $name" ;;
        *) fail "add arguments with which $name is fast" ;;
    esac
    quietly inside "python3 /examples/python/$name.py $arguments --width 64 && test -n \"\$(ls $name)\""
    step "  $name"
done

step "libtrovik-dev"
install /packages/libtrovik-dev_*.deb g++ cmake make
for example in host plugin; do
    quietly inside "cmake -S /examples/$example -B $example -DCMAKE_BUILD_TYPE=Release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON &&
        cmake --build $example"
done
inside 'host/sculpt-host /examples/meshes/spot.obj sculpted.trovik'
quietly inside "cmake -Dcommand=/usr/bin/trovik -Dplugins=/usr/lib/$triplet/trovik/plugins:/tmp/plugin \
    -Dmesh=/tmp/install/cube.obj -Dscript=/tmp/install/noise.json -Dfolder=/tmp/noise -P install/CheckPlugin.cmake"
# An installed plug-in is found without an environment variable.
inside "cmake --install plugin && trovik tools | grep ^Noise && rm -r /usr/lib/$triplet/trovik/plugins/NoiseBrush.so"

step "Removal"
quietly inside "apt-get purge --yes trovik trovik-studio $library libtrovik-dev python3-trovik"
list_files >"$work/after"
if ! remains=$(diff "$work/before" "$work/after"); then
    fail "files differ after removal:"$'\n'"$remains"
fi
step "All passed"
