#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Runs the example script and lists the resulting files.
#
#   scripts/demo.sh [BUILD_DIR [OUTPUT_DIR]]
set -euo pipefail

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath -m "${1:-$source/build/release}")
output=$(realpath -m "${2:-$source/demo-output}")
trovik=$build/bin/trovik

if [[ ! -x $trovik ]]; then
    echo "demo: $trovik is not built; run 'make demo'." >&2
    exit 1
fi

mkdir -p "$output"
# Output files are relative to the working folder, the mesh is relative to the script.
cd "$output"
echo "Sculpting examples/demo.json ..."
"$trovik" sculpt "$source/examples/demo.json"

echo
echo "Results in $output:"
found=0
while IFS= read -r -d '' file; do
    case "$file" in
        *.png | *.exr | *.tif | *.tiff) kind=image ;;
        *.obj | *.ply | *.stl | *.gltf | *.glb) kind=mesh ;;
        *) kind=other ;;
    esac
    printf '  %-8s %s\n' "$kind" "$output/${file#./}"
    found=1
done < <(find . -type f -print0 | sort -z)
if ((found == 0)); then
    echo "demo: the script wrote no files." >&2
    exit 1
fi
