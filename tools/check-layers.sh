#!/usr/bin/env bash
# Fails when a source folder includes from a folder above it. The layers, top
# first; a folder may include from its own layer and any below. See
# ARCHITECTURE.md.
#   tools/check-layers.sh [SRC_DIR]
set -euo pipefail
src=${1:-"$(dirname "$0")/../src"}
layers=(shell game tune search parallel book egtb eval board settings platform)

# The upward includes that stand for now, each with its reason:
allowed=(
    # the board builds the evaluation's tables the first time one is made
    "board/board_constructor.cpp eval/evalTables.h"
    # the shared record holds the clocks and the search timer by value
    "parallel/sharedData.h game/chessclock.h"
    "parallel/sharedData.h game/timer.h"
    # a searching process owns its transposition table
    "parallel/searchProcess.h search/hashtable.h"
    # a slave searches the moves of a split block with its tree
    "parallel/searchProcess_slave.cpp search/searchtree.h"
    # the tuner times its runs
    "tune/tuner.cpp game/timer.h"
)

rank() {
    for i in "${!layers[@]}"; do
        if [[ ${layers[$i]} == "$1" ]]; then echo "$i"; return; fi
    done
    echo -1
}

failures=0
while IFS= read -r line; do
    file=${line%%:*}
    file=${file#"$src"/}
    header=$(sed -E 's/.*#include "([^"]*)".*/\1/' <<<"${line#*:}")
    [[ $header == */* ]] || continue
    from=$(rank "${file%%/*}")
    to=$(rank "${header%%/*}")
    if ((from < 0 || to < 0)); then
        echo "unknown folder: $file includes $header"
        failures=$((failures + 1))
    elif ((to < from)) && [[ ! " ${allowed[*]/%/;} " == *" $file $header;"* ]]; then
        echo "upward include: $file includes $header"
        failures=$((failures + 1))
    fi
done < <(grep -rE '^#include "' --include='*.h' --include='*.cpp' "$src")

if ((failures > 0)); then
    echo "$failures include(s) break the layers (${layers[*]})"
    exit 1
fi
echo "layers hold: ${layers[*]}"
