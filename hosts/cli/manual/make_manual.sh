#!/bin/sh
# Makes the manual page out of vxicore.1.in and what the program and the presets say of themselves.
# usage: make_manual.sh PROGRAM PRESETS OUT
set -eu
program=$1 presets=$2 out=$3
# Presets of whoever builds this are not ours to tell.
export XDG_CONFIG_HOME=/nonexistent
here=$(cd "$(dirname "$0")" && pwd)

options() { # COMMAND [GROUP]
  "$program" "$1" --help | awk -v only="${2:-}" -f "$here/options.awk"
}

# The comment at the top of a preset is "Title: text."
preset_list() { # COMMAND
  for file in "$presets/$1"/*.toml; do
    echo ".It Sy $(basename "$file" .toml)"
    awk '!/^#/ { exit } { sub(/^# /, ""); gsub(/\. /, ".\n"); print }' "$file" |
      sed '1s/^[^:]*: *\(.\)/\U\1/' | fold -s -w 76 | sed 's/ $//'
  done
}

while IFS= read -r line; do
  case $line in
    .Os) printf '.Os %s\n' "$("$program" --version)" ;;
    @options\ *@)
      arguments=${line#@options }
      arguments=${arguments%@}
      options "${arguments%% *}" "${arguments#* }" ;;
    @settings\ *@) line=${line#@settings } && options "${line%@}" ;;
    @presets\ *@) line=${line#@presets } && preset_list "${line%@}" ;;
    *) printf '%s\n' "$line" ;;
  esac
done <"$here/vxicore.1.in" >"$out.part"
mv "$out.part" "$out"
