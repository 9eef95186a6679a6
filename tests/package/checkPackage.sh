#!/bin/sh
# checkPackage.sh BUILD SCRATCH PLUGIN: installs from the build folder, moves the installation as a whole, runs all
# four algorithms with it, and builds and loads a plug-in with nothing but it. Works in the folder SCRATCH.
set -eu

build=$1
scratch=$2
plugin=$3

rm -rf "$scratch/installed" "$scratch/moved" "$scratch/plugin" "$scratch/data"
cmake --install "$build" --prefix "$scratch/installed" >"$scratch/install.log"
mv "$scratch/installed" "$scratch/moved"
tavrin=$scratch/moved/bin/tavrin
mkdir "$scratch/data"
cd "$scratch/data"

"$tavrin" examples . >/dev/null
"$tavrin" run Field/Info Field=flow.vtu | grep -q 'maximal norm has the norm 1.5,'
"$tavrin" run "Field/Tensor Field Operator" "Field A=flow.vtu" -o speed.vtu
"$tavrin" run "Field/Sample Field on Given Grid" Field=flow.vtu Grid=probe3d.vti Time=0 -o sampled.vti
"$tavrin" run "Field/Show Hedgehogs" Field=flow.vtu Representation=line "Color Map=viridis" --size 320x240 \
    -o picture.png | grep -q 'Number of Arrows: '
test -s speed.vtu && test -s sampled.vti && test -s picture.png

cmake -S "$plugin" -B "$scratch/plugin" -DCMAKE_PREFIX_PATH="$scratch/moved" >"$scratch/plugin.log"
cmake --build "$scratch/plugin" >>"$scratch/plugin.log"
"$tavrin" --plugin "$scratch/plugin/libcount.so" run Trial/Count Field=flow.vtu | grep -qx '2541 values'
