# bash completion for ryx
# shellcheck shell=bash
#
# The program itself returns the possible words, so this file does not depend on the options. Where
# a file or any other text is expected, bash completes file names.

_ryx() {
  local program=${COMP_WORDS[0]/#\~/$HOME}
  mapfile -t COMPREPLY < <("$program" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}

complete -o default -F _ryx ryx
