# bash completion for RyxMerge
# shellcheck shell=bash

_RyxMerge() {
  local word=${COMP_WORDS[COMP_CWORD]}
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "--merge-as-instances --suffix-file-instance \
      --auto-rename-instances --arrange-files" -- "$word")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.@(ryx|vpt)' -- "$word")
  fi
}
complete -F _RyxMerge RyxMerge
