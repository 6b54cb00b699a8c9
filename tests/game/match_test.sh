#!/usr/bin/env bash
# Talvin against fairymax under xboard: over the xboard protocol, over UCI
# through polyglot, and with both engines pondering. Fails on any illegal
# move, crash, hang or time forfeit by talvin; the PGNs stay in the current
# directory.
#   match_test.sh TALVIN
set -uo pipefail
talvin=$(realpath "$1")
match=$(dirname "$0")/../../tools/match.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failed=0
run() {
    local name=$1
    shift
    # Talvin writes its settings file where it runs: a fresh directory per match.
    "$match" -n 2 -c "-tc 0:10 -inc 0.1" -o "talvin-$name.pgn" -f talvin -s fairymax "$@" \
        "$talvin" "$work/$name-talvin" fairymax "$work/$name-fairymax" || failed=1
}
run xboard
run uci -u
run ponder -p
exit $failed
