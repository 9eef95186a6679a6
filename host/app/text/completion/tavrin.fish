# Completion of tavrin for fish. The program finds the candidates itself.
function __tavrin_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    $words[1] complete fish "$current" $words[2..-1] 2>/dev/null
end
complete -c tavrin -f -a '(__tavrin_complete)'
