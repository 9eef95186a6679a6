#!/bin/sh
# runConsole.sh BIN FILE [FOLDER]: runs the commands in the console blocks of FILE: the lines after "$ " with their
# continuation lines. They run in one shell, in FOLDER or else in an empty folder, with BIN first in PATH. Each command
# must succeed.
set -eu
PATH=$1:$PATH
# In a sanitized build: drivers and the font library never free some memory.
ASAN_OPTIONS=${ASAN_OPTIONS-}:detect_leaks=0
export PATH ASAN_OPTIONS
unset TAVRIN_PLUGIN_PATH
document=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/empty"
awk '/^```/ { inside = ($0 == "```console"); next }
     inside && /^\$ / { print substr($0, 3); next }
     inside { print }' "$document" >"$scratch/commands.sh"
[ -s "$scratch/commands.sh" ] || { echo "$document has no commands"; exit 1; }
cd "${3-$scratch/empty}"
sh -eux "$scratch/commands.sh"
