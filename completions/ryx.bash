# bash completion for ryx
# shellcheck shell=bash
#
# The program itself returns the possible words, so this file does not depend on the options. They
# include names of nodes, results and views from the files of the command line. Where a file or any
# other text is expected, bash completes file names.

# _ryx_unquote WORD: removes the quotes of a word, of which the last may be missing.
_ryx_unquote() {
  # shellcheck disable=SC2001  # sed has back references
  case $1 in
    \'*) REPLY=${1#\'} REPLY=${REPLY%\'} ;;
    \"*) REPLY=${1#\"} REPLY=${REPLY%\"} REPLY=${REPLY//\\\\/\\} ;;
    *\\*) REPLY=$(sed 's/\\\(.\)/\1/g' <<<"$1") ;;
    *) REPLY=$1 ;;
  esac
}

_ryx() {
  local program=${COMP_WORDS[0]/#\~/$HOME} current=${COMP_WORDS[COMP_CWORD]} word REPLY i
  local words=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    _ryx_unquote "$word"
    words+=("$REPLY")
  done
  mapfile -t COMPREPLY < <("$program" __complete "${words[@]}" 2>/dev/null)
  [[ $current == [\'\"]* ]] && return
  for i in "${!COMPREPLY[@]}"; do printf -v "COMPREPLY[$i]" %q "${COMPREPLY[i]}"; done
}

complete -o default -F _ryx ryx
