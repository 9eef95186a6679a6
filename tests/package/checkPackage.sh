#!/bin/sh
# checkPackage.sh BUILD SCRATCH SOURCE: installs from the folder BUILD and moves the installation to another folder. Then
# runs all four algorithms, compiles all installed headers, and follows the README of the plug-in in
# SOURCE/examples/plugin with this installation alone. Works in the folder SCRATCH.
set -eu

build=$1
scratch=$2
source=$3

rm -rf "$scratch/installed" "$scratch/moved" "$scratch/plugin" "$scratch/headers" "$scratch/data"
cmake --install "$build" --prefix "$scratch/installed" >"$scratch/install.log"
mv "$scratch/installed" "$scratch/moved"
tavrin=$scratch/moved/bin/tavrin
mkdir "$scratch/data" "$scratch/headers"
cd "$scratch/data"

"$tavrin" examples . >/dev/null
"$tavrin" run Field/Info Field=flow.vtu | grep -q 'maximal norm has the norm 1.5,'
"$tavrin" run "Field/Tensor Field Operator" "Field A=flow.vtu" -o speed.vtu
"$tavrin" run "Field/Sample Field on Given Grid" Field=flow.vtu Grid=probe3d.vti Time=0 -o sampled.vti
"$tavrin" run "Field/Show Hedgehogs" Field=flow.vtu Representation=line "Color Map=viridis" --size 320x240 \
    -o picture.png | grep -q 'Number of Arrows: '
test -s speed.vtu && test -s sampled.vti && test -s picture.png

# A header that includes one that is not installed, or a package that is not declared, fails here.
(cd "$scratch/moved/include" && find . -name '*.hpp' | sort | sed 's|^\./\(.*\)|#include <\1>|') \
    >"$scratch/headers/headers.cpp"
cp "$source/tests/package/headers.cmake" "$scratch/headers/CMakeLists.txt"
cmake -S "$scratch/headers" -B "$scratch/headers/build" -DCMAKE_PREFIX_PATH="$scratch/moved" \
    >"$scratch/headers.log"
cmake --build "$scratch/headers/build" >>"$scratch/headers.log"

cp -r "$source/examples/plugin" "$scratch/plugin"
"$source/tests/docs/runConsole.sh" "$scratch/moved/bin" "$scratch/plugin/README.md" "$scratch/plugin" \
    >"$scratch/plugin.log" 2>&1 || { cat "$scratch/plugin.log"; exit 1; }
grep -qx '[1-9][0-9]* of 2541 values are longer' "$scratch/plugin.log"
"$tavrin" run Field/Info Field="$scratch/plugin/limited.vtu" | grep -q 'maximal norm has the norm 0.5,'
