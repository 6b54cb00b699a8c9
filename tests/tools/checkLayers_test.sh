#!/usr/bin/env bash
# The layer check passes a tree that includes downward and through its
# listed exceptions, and fails each kind of break.
#   checkLayers_test.sh CHECK_LAYERS_SCRIPT
set -u
check=${1:?usage: checkLayers_test.sh CHECK_LAYERS_SCRIPT}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

failed=0
# The status wanted for a tree of two files, the first including the second.
while read -r wanted file header why; do
    rm -rf "$scratch/src" && mkdir -p "$scratch/src/${file%/*}" "$scratch/src/${header%/*}"
    printf '#include "%s"\n' "$header" > "$scratch/src/$file"
    touch "$scratch/src/$header"
    "$check" "$scratch/src" > "$scratch/out" 2>&1
    status=$?
    if [[ $status -ne $wanted ]]; then
        echo "FAIL: $file including $header ($why) gave status $status, wanted $wanted:"
        cat "$scratch/out"
        failed=1
    fi
done <<'END'
0 search/searchtree.cpp board/board.h downward
0 eval/evalTables.cpp eval/evalInfo.h the same folder
0 parallel/sharedData.h game/timer.h a listed exception
1 eval/board_eval.cpp search/searchtree.h upward
1 platform/console.cpp parallel/sharedData.h upward from the bottom
1 parallel/sharedData.cpp game/timer.h exceptions are per file
1 widgets/widget.cpp board/board.h a folder outside the layers
END
exit $failed
