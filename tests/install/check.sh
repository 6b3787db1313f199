#!/usr/bin/env bash
# Installs a build tree as strangers do and uses what came of it: a prefix, the same prefix moved elsewhere,
# and files staged under DESTDIR; then looks at the symbols and at what came with the program.
# usage: check.sh BUILD_TREE SCRATCH
set -euo pipefail
build=$(realpath "$1") scratch=$(realpath -m "$2")
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$scratch"
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix"
"$here/consumers.sh" "$prefix" "$scratch/consumers"

echo "moved"
mv "$prefix" "$scratch/moved"
prefix=$scratch/moved
"$here/consumers.sh" "$prefix" "$scratch/consumers"

echo "DESTDIR"
DESTDIR=$scratch/stage cmake --install "$build" --prefix /opt/vxicore >/dev/null
diff <(cd "$prefix" && find . -type f -o -type l | LC_ALL=C sort) \
  <(cd "$scratch/stage/opt/vxicore" && find . -type f -o -type l | LC_ALL=C sort)
"$here/consumers.sh" "$scratch/stage/opt/vxicore" "$scratch/consumers"

echo "symbols"
nm -D --defined-only "$(find "$prefix" -name libvxicore26.so)" |
  awk '$2 == "T" { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort >"$scratch/symbols"
printf '%s\n' setDebugTrace vxAdjustRgb vxDenoiseEstNoise vxSetupLib vxUnblock vxYUVEdgeRGB | diff "$scratch/symbols" -

if [ -x "$build/vxicore" ]; then
  echo "program"
  "$prefix/bin/vxicore" --version
  "$prefix/bin/vxicore" adjust --preset vivid --save-preset "$scratch/vivid.toml"
  test -s "$prefix/share/man/man1/vxicore.1"
  "$here/check_manual.sh" "$prefix/bin/vxicore" "$prefix/share/man/man1/vxicore.1" \
    "$prefix/share/bash-completion/completions/vxicore"
fi
echo "installed well"
