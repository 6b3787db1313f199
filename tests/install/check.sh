#!/usr/bin/env bash
# Installs a build tree into a scratch prefix and uses it as strangers do: through pkg-config and through
# find_package, from C99 and from C++17; then looks at the symbols and at what came with the program.
# usage: check.sh BUILD_TREE SCRATCH
set -euo pipefail
build=$(realpath "$1") scratch=$(realpath -m "$2")
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$scratch"
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix"
library=$(find "$prefix" -name libvxicore26.so)
folder=$(dirname "$library")
export LD_LIBRARY_PATH=$folder PKG_CONFIG_PATH=$folder/pkgconfig

echo "pkg-config, C99 and C++17"
# shellcheck disable=SC2046
cc -std=c99 -Wall -Wextra -pedantic -Werror "$here/consumer.c" $(pkg-config --cflags --libs vxicore26) -o "$scratch/c99"
# shellcheck disable=SC2046
c++ -std=c++17 -Wall -Wextra -pedantic -Werror -x c++ "$here/consumer.c" $(pkg-config --cflags --libs vxicore26) -o "$scratch/cpp17"
"$scratch/c99"
"$scratch/cpp17"

echo "find_package"
cmake -S "$here" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/consumer"
"$scratch/consumer/consumer"

echo "symbols"
nm -D --defined-only "$library" | awk '$2 == "T" { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort >"$scratch/symbols"
printf '%s\n' setDebugTrace vxAdjustRgb vxDenoiseEstNoise vxSetupLib vxUnblock vxYUVEdgeRGB | diff "$scratch/symbols" -

if [ -x "$build/vxicore" ]; then
  echo "program"
  unset LD_LIBRARY_PATH
  "$prefix/bin/vxicore" --version
  "$prefix/bin/vxicore" adjust --preset vivid --save-preset "$scratch/vivid.toml"
  test -s "$prefix/share/bash-completion/completions/vxicore"
  ! command -v help2man >/dev/null || test -s "$prefix/share/man/man1/vxicore.1"
fi
echo "installed well"
