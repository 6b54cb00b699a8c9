#!/usr/bin/env bash
# The layer check passes a tree that includes downward and through its
# listed exceptions, and fails each kind of break.
#   checkLayers_test.sh CHECK_LAYERS_SCRIPT
set -u
check=${1:?usage: checkLayers_test.sh CHECK_LAYERS_SCRIPT}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Builds a tree of two files, the first including the second's header.
tree() {
    rm -rf "$scratch/src" && mkdir -p "$scratch/src/${1%/*}" "$scratch/src/${2%/*}"
    printf '#include "%s"\n' "$2" > "$scratch/src/$1"
    touch "$scratch/src/$2"
}

failures=0
expect() {  # expected-status file header
    tree "$2" "$3"
    "$check" "$scratch/src" > "$scratch/out" 2>&1
    local status=$?
    if [[ $status -ne $1 ]]; then
        echo "FAIL: $2 including $3 gave status $status, wanted $1:"
        cat "$scratch/out"
        failures=$((failures + 1))
    fi
}

expect 0 search/searchtree.cpp board/board.h           # downward
expect 0 eval/evalTables.cpp eval/evalInfo.h            # same folder
expect 0 parallel/sharedData.h game/timer.h             # a listed exception
expect 1 eval/board_eval.cpp search/searchtree.h        # upward
expect 1 platform/console.cpp parallel/sharedData.h     # upward from the bottom
expect 1 parallel/sharedData.cpp game/timer.h           # exceptions are per file
expect 1 widgets/widget.cpp board/board.h               # a folder outside the layers
exit $((failures > 0))
