#!/bin/sh
# usage: check_exports.sh LIBRARY
# The library shows its six functions and nothing else.
found=$(nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort | tr '\n' ' ')
wanted='setDebugTrace vxAdjustRgb vxDenoiseEstNoise vxSetupLib vxUnblock vxYUVEdgeRGB '
[ "$found" = "$wanted" ] && exit 0
printf 'wanted: %s\nfound:  %s\n' "$wanted" "$found"
exit 1
