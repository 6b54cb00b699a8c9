#!/usr/bin/env bash
# Talvin against fairymax under xboard from won endgames, once with Gaviota
# tables only, once with Syzygy tables only, once with the tables switched off
# (EGTB false); counts the wins. xboard calls a game with fifty reversible
# moves in a row a draw, so a win is a win within the fifty-move rule.
#   endgame-matches.sh [-n GAMES] [-c "TC"] [-k "KINDS"] TALVIN GAVIOTA_DIR SYZYGY_DIR POSITIONS
#     -n GAMES    the first GAMES positions of the file (default all), Talvin White in each
#     -c "TC"     xboard time control options (default "-tc 0:30 -inc 0.2")
#     -k "KINDS"  which series, from "gaviota syzygy off" (default all three)
# The PGNs (endgames-KIND.pgn) stay in the current directory. Exits non-zero
# when a series with tables does not win every game, or a match fails.
set -uo pipefail

games="" tc="-tc 0:30 -inc 0.2" kinds="gaviota syzygy off"
while getopts "n:c:k:" opt; do
    case $opt in
        n) games=$OPTARG ;;
        c) tc=$OPTARG ;;
        k) kinds=$OPTARG ;;
        *) sed -n '2,12p' "$0" | sed 's/^# \{0,1\}//' >&2; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
(( $# == 4 )) || { sed -n '2,12p' "$0" | sed 's/^# \{0,1\}//' >&2; exit 2; }
talvin=$(realpath "$1") gaviota=$(realpath "$2") syzygy=$(realpath "$3") positions=$(realpath "$4")
games=${games:-$(grep -c . "$positions")}
match=$(dirname "$(realpath "$0")")/match.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failed=0
for kind in $kinds; do
    mkdir -p "$work/$kind"
    case $kind in
        gaviota) echo "pref:egtb-path=$gaviota" ;;
        syzygy) echo "pref:egtb-path=$syzygy" ;;
        off) printf 'pref:egtb-path=%s:%s\npref:enable_EGTB=0\n' "$gaviota" "$syzygy" ;;
        *) echo "unknown series $kind" >&2; exit 2 ;;
    esac > "$work/$kind/talvin init.ini"
    result=$("$match" -n "$games" -l "$positions" -c "$tc" -o "endgames-$kind.pgn" -f talvin -s fairymax \
        "$talvin" "$work/$kind" fairymax "$work/$kind-fairymax" -- -ruleMoves 50) || failed=1
    echo "$kind: $result"
    [[ $kind == off || $result == *"+$games =0 -0 "* ]] || failed=1
done
exit $failed
