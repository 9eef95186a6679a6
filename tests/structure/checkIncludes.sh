#!/bin/sh
# checkIncludes.sh ROOT: checks that the folders of the source tree ROOT include each other in one direction only.
set -eu
cd "$1"

grep -rnE --include='*.hpp' --include='*.cpp' '^[[:space:]]*#[[:space:]]*include' host toolboxes BundleTools |
    awk '
BEGIN {
    # The folders of these parts, each of which may include itself and the folders before it.
    inOrder("lib", "base parallel value domain location function field plugin algorithm")
    inOrder("app", "console text examples run plugins commands")

    # The other parts that each part of the tree may include.
    mayInclude["lib"] = ""
    mayInclude["mpi"] = "lib mpi.h"
    mayInclude["graphics"] = mayInclude["colormap"] = mayInclude["BundleTools"] = "lib"
    mayInclude["io"] = "lib vtk"
    mayInclude["pipeline"] = "lib graphics colormap io BundleTools"
    mayInclude["app"] = mayInclude["python"] = "lib graphics colormap io pipeline"
    mayInclude["toolboxes"] = "lib graphics colormap BundleTools"
}

function inOrder(part, folders,    names, count, i) {
    count = split(folders, names)
    for (i = 1; i <= count; ++i)
        rank[part "/" names[i]] = i
}

function firstOf(path) {
    return index(path, "/") ? substr(path, 1, index(path, "/") - 1) : ""
}

# The part of the tree that a source file belongs to, followed by its folder in parts whose folders have an order.
function placeOf(file,    part) {
    sub(/^host\//, "", file)
    part = firstOf(file)
    sub(/^[^\/]*\/(tavrin\/)?/, "", file)
    return part == "lib" || part == "app" ? part "/" firstOf(file) : part
}

# The same for the path in an include; empty for what is outside of the tree, or in the folder of the includer.
function placeOfInclude(path, from,    folder) {
    if (path ~ /^vtk/)
        return "vtk"
    if (path == "mpi.h")
        return path
    if (firstOf(path) == "BundleTools")
        return "BundleTools"
    if (firstOf(path) == "tavrin") {
        sub(/^tavrin\//, "", path)
        folder = firstOf(path)
        return folder in mayInclude ? folder : "lib/" folder
    }
    # A relative path names another folder of the same part.
    sub(/^(\.\.\/)+/, "", path)
    folder = firstOf(from) "/" firstOf(path)
    return folder in rank ? folder : ""
}

function isAllowed(from, to) {
    if (from in rank && to in rank && firstOf(from) == firstOf(to))
        return rank[to] <= rank[from]
    sub(/\/.*/, "", from)
    sub(/\/.*/, "", to)
    return from == to || index(" " mayInclude[from] " ", " " to " ")
}

function fail(message) {
    print message
    failed = 1
}

{
    # file:line:#include <path>
    split($0, parts, ":")
    if (!match($0, /[<"][^>"]+[>"]/))
        next
    included = substr($0, RSTART + 1, RLENGTH - 2)
    ++numIncludes
    from = placeOf(parts[1])
    to = placeOfInclude(included, from)
    if (from ~ /^lib\// && !(from in rank) || to ~ /^lib\// && !(to in rank))
        fail(parts[1] ":" parts[2] ": the folder of this file or of " included " has no place in the order")
    else if (to != "" && !isAllowed(from, to))
        fail(parts[1] ":" parts[2] ": " from " must not include " included)
}

END {
    if (numIncludes < 100)
        fail("only " numIncludes + 0 " includes were found")
    exit failed
}'
