#!/usr/bin/env bash
# Talvin against fairymax under xboard at the time controls where an engine
# loses on time if it ever will: UCI (through polyglot) with pondering at
# 3 s and at 2 s + 0.05 s a game, xboard at 40 moves in 30 s and at 5 s +
# 0.05 s. Fails on any illegal move, crash, hang or time forfeit by talvin;
# the PGNs stay in the current directory.
#   match_test.sh TALVIN
set -uo pipefail
talvin=$(realpath "$1")
match=$(dirname "$0")/../../tools/match.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failed=0
run() {
    local name=$1 games=$2 tc=$3
    shift 3
    # Talvin writes its settings file where it runs: a fresh directory per match.
    "$match" -n "$games" -c "$tc" -o "talvin-$name.pgn" -f talvin -s fairymax "$@" \
        "$talvin" "$work/$name-talvin" fairymax "$work/$name-fairymax" || failed=1
}
run uci-ponder-3s 2 "-tc 0:03 -inc 0" -u -p
run uci-ponder-2s-inc 2 "-tc 0:02 -inc 0.05" -u -p
run xboard-40-in-30s 1 "-mps 40 -tc 0:30" -T 240
run xboard-5s-inc 2 "-tc 0:05 -inc 0.05"
exit $failed
