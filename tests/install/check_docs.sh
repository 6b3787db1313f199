#!/usr/bin/env bash
# Every setting of the header is in docs/settings.md; its pictures are there, small, and all used.
# usage: check_docs.sh SOURCE_TREE
set -euo pipefail
cd "$1"
failed=0
fail() { echo "$*" && failed=1; }

# The arguments behind the picture itself and the callbacks.
settings=$(sed -n '/^int \(vxAdjustRgb\|vxYUVEdgeRGB\|vxUnblock\)(/,/);/p' include/vxicore26.h |
  grep -oE '(float|double|int) [a-zA-Z]+[,)]' | sed 's/.* \(.*\)./\1/' | sort -u |
  grep -vxE 'deep|format|rowStep|pixelStep|width|height|reserved|edgeReserved')
[ "$(wc -w <<<"$settings")" -gt 30 ] || fail "too few settings were found in the header"
for name in $settings; do
  grep -q "$name" docs/settings.md || fail "docs/settings.md lacks $name"
done

mapfile -t shown < <(grep -o '(pictures/[^)]*)' docs/settings.md | tr -d '()')
for picture in "${shown[@]}"; do
  [ -s "docs/$picture" ] || fail "docs/$picture is missing"
done
for picture in docs/pictures/*; do
  grep -qF "pictures/$(basename "$picture")" docs/settings.md README.md || fail "$picture is shown nowhere"
  [ "$(stat -c %s "$picture")" -le 60000 ] || fail "$picture is larger than 60 kB"
done
[ "$failed" = 0 ] && echo "${#shown[@]} pictures, $(wc -w <<<"$settings") settings"
