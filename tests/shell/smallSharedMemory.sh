#!/usr/bin/env bash
# Shared memory smaller than the tables asked for (a container's /dev/shm):
# the engine says it could not make them, plays without, and leaves nothing.
# Needs a private mount namespace to shrink /dev/shm; skipped without one.
set -u
engine=$(realpath "${1:?usage: smallSharedMemory.sh PATH/TO/talvin}")
fail() { printf '%s\n' "$@"; exit 1; }
unshare -m true 2>/dev/null || { echo "no mount namespace here: skipped"; exit 77; }

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
printf 'pref:MAXPROCESSES=1\npref:size-hashtable=256\n' > "$dir/talvin init.ini"
# shellcheck disable=SC2016
output=$(cd "$dir" && unshare -m sh -c '
    mount -t tmpfs -o size=64m tmpfs /dev/shm || exit 77
    printf "xboard\nprotover 2\nping 1\nnew\nsd 6\ngo\n" | { cat; sleep 3; echo quit; } | timeout 20 "$1"
    echo "exit=$?"
    echo "left=$(ls /dev/shm | wc -l)"' _ "$engine" 2>&1)
[ $? -eq 77 ] && { echo "cannot mount a small /dev/shm: skipped"; exit 77; }
for expected in "ERROR! Could not create file mapping object sharedHashtable." "pong 1" "move " "exit=0" "left=0"; do
    grep -qF "$expected" <<< "$output" || fail "missing: $expected" "$output"
done
echo "small shared memory ok"
