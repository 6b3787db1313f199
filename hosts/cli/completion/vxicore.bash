# Completion of vxicore for bash: commands, options and their values are read from its help.

# The words of "--option word|word|X" in the help; for --preset the named presets.
_vxicore_values() { # HELP OPTION
  local help=$1 option=$2
  if [[ $option == --preset ]]; then
    tr -s ' \n' ' ' <<<"$help" | sed -n 's/.*or one of these by name: \([^.]*\)\..*/\1/p' | tr -d ,
  else
    sed -n "s/^  $option \([^ ]*|[^ ]*\).*/\1/p" <<<"$help" | tr '|' '\n' | grep -v '^[A-Z]'
  fi
}

_vxicore() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local help words
  # "--preset=vivid" is three words to bash.
  if [[ $word == = ]]; then word=; elif [[ $previous == = ]]; then previous=${COMP_WORDS[COMP_CWORD - 2]}; fi
  if ((COMP_CWORD == 1)); then
    words=$("$1" --help 2>/dev/null | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
    [[ $word != -* ]] || words="--help --help-all --version"
  else
    help=$("$1" "$command" --help 2>/dev/null)
    if [[ $word == -* ]]; then
      words=$(grep -o -e '^  -[^ ]*' <<<"$help" | grep -o -e '--[a-z-]*')
    elif [[ $previous == --* ]]; then
      words=$(_vxicore_values "$help" "$previous")
    fi
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _vxicore vxicore
