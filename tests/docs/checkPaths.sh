#!/bin/sh
# checkPaths.sh ROOT FILE...: checks that everything in the source tree ROOT that the documents FILE... name exists: the
# targets of their links, and the paths in their code.
set -eu
root=$1
shift
status=0
for document; do
    folder=$(dirname -- "$document")
    links=$(grep -oE '\]\([^):]+\)' "$document" | sed 's/^](\(.*\))$/\1/; s/#.*//' | sort -u) || :
    for link in $links; do
        [ -e "$folder/$link" ] || { echo "$document: the link $link leads nowhere"; status=1; }
    done
    paths=$(grep -oE '`(host|toolboxes|BundleTools|tests|bench|cmake|docs|examples)/[A-Za-z0-9_./-]*`' "$document" |
        tr -d '`' | sort -u) || :
    for path in $paths; do
        # The name of a file to be written stands for all such files.
        case $path in
        */NameCommand.cpp) continue ;;
        esac
        [ -e "$root/$path" ] || { echo "$document: there is no $path"; status=1; }
    done
done
exit $status
