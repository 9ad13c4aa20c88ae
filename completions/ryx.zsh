#compdef ryx
# zsh completion for ryx
#
# The program itself returns the possible words, so this file does not depend on the options. They
# include names of nodes, results and views from the files of the command line. Where a file or any
# other text is expected, zsh completes file names.

local -a typed found
typed=("${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}")
found=("${(@f)$("${(Q)words[1]}" __complete "${(@)typed}" 2>/dev/null)}")
found=("${(@)found:#}")
if (( $#found )); then
  compadd -a found
else
  _files
fi
