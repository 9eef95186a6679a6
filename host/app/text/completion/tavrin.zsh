#compdef tavrin
# Completion of tavrin for zsh. The program finds the candidates itself.
_tavrin()
{
    local line
    local -a candidates descriptions
    for line in "${(@f)$("${(Q)words[1]/#\~\//$HOME/}" complete zsh "$QIPREFIX$PREFIX" "${(@Q)words[2,CURRENT-1]}" 2>/dev/null)}"; do
        [[ -n $line ]] || continue
        if [[ $line == $'\t' ]]; then
            compstate[insert]= compstate[list]=list
            continue
        fi
        candidates+=("${line%%$'\t'*}")
        descriptions+=("${${line%%$'\t'*}% }${${line#*$'\t'}:+  -- ${line#*$'\t'}}")
    done
    compadd -U -Q -S '' -V tavrin -l -d descriptions -a candidates
}
if [[ $funcstack[1] == _tavrin ]]; then
    _tavrin "$@"
else
    compdef _tavrin tavrin
fi
