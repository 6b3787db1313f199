#!/usr/bin/env bash
# Builds the examples in C and C++ against an installation, by pkg-config and by find_package, and runs them.
# usage: consumers.sh PREFIX SCRATCH
# PREFIX is the folder that holds lib/ and include/, wherever it was moved to; / takes what the system finds.
set -euo pipefail
prefix=$1 scratch=$2
examples=$(cd "$(dirname "$0")/../../examples/c" && pwd)
rm -rf "$scratch"
mkdir -p "$scratch"
cmake_arguments=()
if [ "$prefix" != / ]; then
  folder=$(dirname "$(find "$prefix" -name libvxicore26.so)")
  export LD_LIBRARY_PATH=$folder PKG_CONFIG_PATH=$folder/pkgconfig
  cmake_arguments=(-DCMAKE_PREFIX_PATH="$prefix")
fi
read -r -a flags <<<"$(pkg-config --cflags --libs vxicore26)"
warnings=(-Wall -Wextra -pedantic -Werror)
cc -std=c99 "${warnings[@]}" "$examples/consumer.c" "${flags[@]}" -o "$scratch/c99"
c++ -std=c++17 "${warnings[@]}" "$examples/consumer.cpp" "${flags[@]}" -o "$scratch/cpp17"
cmake -S "$examples" -B "$scratch/build" "${cmake_arguments[@]}" >/dev/null
cmake --build "$scratch/build" >/dev/null
for program in "$scratch"/c99 "$scratch"/cpp17 "$scratch"/build/consumer_c "$scratch"/build/consumer_cpp; do
  "$program" >"$scratch/output" || { echo "$program failed" && cat "$scratch/output" && exit 1; }
  # Of this installation, not of another one on the machine.
  [ "$prefix" = / ] || [[ $(ldd "$program") == *"$folder/libvxicore26.so.1"* ]] ||
    { echo "$program took another library" && exit 1; }
done
echo "four consumers of $prefix"
