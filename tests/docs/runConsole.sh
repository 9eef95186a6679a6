#!/bin/sh
# runConsole.sh BIN FILE: runs the commands of FILE's console blocks, the lines after "$ " with those that
# they are continued on, one after the other in an empty folder, with BIN first in PATH. Each must succeed.
set -eu
PATH=$1:$PATH
# In a sanitized build: drivers and the font library leave memory behind.
ASAN_OPTIONS=${ASAN_OPTIONS-}:detect_leaks=0
export PATH ASAN_OPTIONS
document=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
awk '/^```/ { inside = ($0 == "```console"); next }
     inside && /^\$ / { print substr($0, 3); next }
     inside { print }' "$document" >"$folder.sh"
trap 'rm -rf "$folder" "$folder.sh"' EXIT
[ -s "$folder.sh" ] || { echo "$document has no commands"; exit 1; }
cd "$folder"
sh -eux "$folder.sh"
