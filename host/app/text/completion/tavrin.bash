# Completion of tavrin for bash. The program finds the candidates itself.
_tavrin()
{
    COMPREPLY=()
    local candidate
    while IFS= read -r candidate; do
        COMPREPLY+=("$candidate")
    done < <("${1/#\~\//$HOME/}" complete bash "$COMP_WORDBREAKS" "${COMP_LINE:0:COMP_POINT}" 2>/dev/null)
}
complete -o nospace -o nosort -F _tavrin tavrin
