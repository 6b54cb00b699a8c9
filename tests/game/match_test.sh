#!/usr/bin/env bash
# Talvin against fairymax under xboard at the time controls where an engine
# loses on time if it ever will, each match opening from a book: UCI (through
# polyglot) with pondering at 3 s and at 2 s + 0.05 s, xboard at 40 moves in
# 30 s with Debian's Polyglot book (gnuchess-book) and weighted choice, and
# xboard with pondering at 5 s + 0.05 s from a CTG book made of the test
# openings. Fails on any illegal move, crash, hang or time forfeit by talvin,
# or when no book move was played; the PGNs and logs stay in the current
# directory.
#   match_test.sh TALVIN TALVIN-CTGBOOK
set -uo pipefail
talvin=$(realpath "$1")
here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The CTG book, also under UCI's default BookPath, bookTalvin.ctg.
"$(realpath "$2")" "$work/openings.ctg" "$here/../book/data/openings.pgn" > /dev/null || exit 1
for extension in ctg cto ctb; do cp "$work/openings.$extension" "$work/bookTalvin.$extension"; done

polyglotBook=/usr/share/games/gnuchess/book.bin
failed=0
# run NAME GAMES TC SETTINGS [MATCH OPTION...]: each match in a fresh directory with the books and its settings.
run() {
    local name=$1 games=$2 tc=$3 dir=$work/$1-talvin
    mkdir -p "$dir"
    cp "$work"/*.ct? "$dir"/
    printf '%b' "$4" > "$dir/talvin init.ini"
    shift 4
    "$here/../../tools/match.sh" -n "$games" -c "$tc" -o "talvin-$name.pgn" -d "talvin-$name.log" -B 1 -f talvin \
        -s fairymax "$@" "$talvin" "$dir" fairymax "$work/$name-fairymax" || failed=1
    # Over xboard the engine's own lines show the book probes.
    if [[ $* != *-u* ]] && ! grep -q '<first : #move=[a-h][1-8]' "talvin-$name.log"; then
        echo "FAILED: no \"#move=\" line with a book move from talvin in talvin-$name.log" >&2
        failed=1
    fi
}
run uci-ponder-3s 2 "-tc 0:03 -inc 0" "" -u -p
run uci-ponder-2s-inc 2 "-tc 0:02 -inc 0.05" "" -u -p
run xboard-40-in-30s 1 "-mps 40 -tc 0:30" "pref:book-path=$polyglotBook\npref:BookBestMoveOnly=0\n" -T 240
run xboard-ponder-5s-inc 2 "-tc 0:05 -inc 0.05" "pref:book-path=openings.ctg\n" -p
exit $failed
