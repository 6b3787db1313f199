#!/usr/bin/env bash
# Every option and shipped preset of the program is in its manual page and offered by its completion; the page
# is clean to man and mandoc, where they are installed.
# usage: check_manual.sh PROGRAM MANUAL_PAGE COMPLETION
set -euo pipefail
program=$(realpath "$1") manual=$2
# shellcheck source=/dev/null
. "$3"
failed=0
fail() { echo "$*" && failed=1; }

offered() { # WORD...: what completion offers for the last of them
  COMP_WORDS=("$program" "$@") COMP_CWORD=$#
  COMPREPLY=()
  _vxicore "$program"
  printf '%s\n' "${COMPREPLY[@]}"
}
in_manual() { # TEXT...
  grep -qE -- "(^|[ ,])$1( |\$)" "$manual" || fail "the manual page lacks $1"
}
in_list() { # WORD LIST WHERE
  grep -qxF -- "$1" <<<"$2" || fail "completion lacks $1 after $3"
}

commands=$("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
offered_commands=$(offered "")
[ "$(wc -w <<<"$commands")" -ge 4 ] || fail "the help shows too few commands"
for command in $commands; do
  in_manual "Cm $command"
  in_list "$command" "$offered_commands" "vxicore"
  help=$("$program" "$command" --help)
  list=$(offered "$command" --)
  # shellcheck disable=SC2013
  for option in $(sed -n 's/^  \(-[a-z],\)\{0,1\}\(--[a-z-]*\).*/\2/p' <<<"$help"); do
    in_manual "Fl ([a-z] , )?${option#-}"
    in_list "$option" "$list" "$command"
    words=$(sed -n "s/^  $option \([^ ]*|[^ ]*\).*/\1/p" <<<"$help" | tr '|' '\n' | grep -v '^[A-Z]' || true)
    [ -n "$words" ] || continue
    values=$(offered "$command" "$option" "")
    for word in $words; do in_list "$word" "$values" "$option"; done
  done
  values=$(offered "$command" --preset "")
  for preset in "$(dirname "$program")"/presets/"$command"/*.toml "$(dirname "$program")"/../share/vxicore26/presets/"$command"/*.toml; do
    [ -f "$preset" ] || continue
    in_manual "Sy $(basename "$preset" .toml)"
    in_list "$(basename "$preset" .toml)" "$values" "$command --preset"
  done
done

if command -v man >/dev/null; then
  warnings=$(man --warnings -E UTF-8 -l "$manual" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "man: $warnings"
fi
if command -v mandoc >/dev/null; then
  mandoc -Tlint -W style "$manual" || fail "mandoc finds fault"
fi
[ "$failed" = 0 ] && echo "manual page and completion are complete"
