#!/usr/bin/env bash
# The search's signature: runs "bench" (or "bench DEPTH") in an empty
# directory, prints its node count and fails when the count differs from the
# one recorded below. A change that should not alter the search keeps it.
# Usage: tools/bench-signature.sh PATH/TO/talvin [DEPTH]
set -u
engine=${1:?usage: bench-signature.sh PATH/TO/talvin [DEPTH]}
depth=${2:-12}

# Record a new count here only with a change meant to alter the search.
case $depth in
    12) recorded=61900677 ;;
    10) recorded=11111057 ;;
    *) echo "no count recorded for depth $depth (recorded: 10, 12)"; exit 2 ;;
esac

engine=$(realpath "$engine")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
line=$(cd "$scratch" && printf 'bench %s\nquit\n' "$depth" | timeout 600 "$engine" | grep -a '^nodes=')
nodes=${line#nodes=}
nodes=${nodes%% *}
echo "bench $depth: $line"
if [ "$nodes" != "$recorded" ]; then
    echo "signature changed: $nodes nodes, recorded $recorded"
    exit 1
fi
echo "signature ok: $nodes nodes"
