#!/usr/bin/env bash
# Fails when a source folder includes from a folder above it. The layers, top
# first; a folder may include from its own layer and any below. See
# ARCHITECTURE.md.
#   tools/check-layers.sh [SRC_DIR]
set -euo pipefail
src=${1:-"$(dirname "$0")/../src"}
layers="shell game tune search parallel book egtb eval board settings platform"

# The upward includes that stand for now, each with its reason.
allowed="
parallel/sharedData.h game/chessclock.h              the shared record holds the clocks by value
parallel/sharedData.h game/timer.h                   and the search timer
parallel/searchProcess.h search/hashtable.h          a searching process owns its transposition table
parallel/searchProcess_slave.cpp search/searchtree.h a slave searches the moves of a split block with its tree
tune/tuner.cpp game/timer.h                          the tuner times its runs
"

cd "$src"
grep -rE '^#include "[^"]*/' --include='*.h' --include='*.cpp' . |
    awk -v layers="$layers" -v allowed="$allowed" '
    BEGIN {
        n = split(layers, names, " ")
        for (i = 1; i <= n; i++) rank[names[i]] = i
        lines = split(allowed, entries, "\n")
        for (i = 1; i <= lines; i++) {
            split(entries[i], fields, " ")
            if (fields[2] != "") exception[fields[1] " " fields[2]] = 1
        }
    }
    {
        file = substr($0, 3, index($0, ":") - 3)
        match($0, /"[^"]*"/)
        header = substr($0, RSTART + 1, RLENGTH - 2)
        from = substr(file, 1, index(file, "/") - 1)
        to = substr(header, 1, index(header, "/") - 1)
        if (!(from in rank) || !(to in rank)) {
            print "unknown folder: " file " includes " header
            failures++
        } else if (rank[to] < rank[from] && !((file " " header) in exception)) {
            print "upward include: " file " includes " header
            failures++
        }
    }
    END {
        if (failures) {
            print failures " include(s) break the layers (" layers ")"
            exit 1
        }
        print "layers hold: " layers
    }'
