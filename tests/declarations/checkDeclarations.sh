#!/bin/sh
# checkDeclarations.sh TAVRIN FOLDER [--renew]: compares the declarations of all algorithms of the program TAVRIN with
# the JSON files in FOLDER, or writes these files.
set -eu
tavrin=$1
folder=$2
renew=${3-}
unset TAVRIN_PLUGIN_PATH
# In a sanitized build: drivers and the font library never free some memory.
export ASAN_OPTIONS="${ASAN_OPTIONS-}:detect_leaks=0"

# Two blanks or more separate a name from its description.
names=$("$tavrin" list | sed 's/  .*//')
[ -n "$names" ] || { echo "no algorithms are registered"; exit 1; }
status=0
while read -r name; do
    file=$folder/$(echo "$name" | tr '/ ' '--').json
    if [ "$renew" = --renew ]; then
        "$tavrin" describe "$name" --json >"$file"
    else
        "$tavrin" describe "$name" --json | diff -u "$file" - || status=1
    fi
done <<END
$names
END
[ $status -eq 0 ] || echo "If the change is intended, renew the files: $0 $tavrin $folder --renew"
exit $status
