# fish completion for ryx
#
# The program itself returns the possible words, so this file does not depend on the options. They
# include names of nodes, results and views from the files of the command line. Where a file or any
# other text is expected, fish completes file names.

function __ryx_complete
    set -l words (commandline -opc)
    command $words[1] __complete $words[2..-1] (string unescape -- (commandline -ct) | string collect) 2>/dev/null
end

complete -c ryx -a '(__ryx_complete)'
