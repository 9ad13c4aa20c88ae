# bash completion for ryx
# shellcheck shell=bash
#
# It asks the program itself for the words, so it knows whatever the program knows. Where a file
# or any other text may stand, bash completes file names.

_ryx() {
  local program=${COMP_WORDS[0]/#\~/$HOME}
  mapfile -t COMPREPLY < <("$program" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}

complete -o default -F _ryx ryx
