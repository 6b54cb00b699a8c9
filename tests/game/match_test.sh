#!/usr/bin/env bash
# Talvin against fairymax under xboard at the time controls where an engine
# loses on time if it ever will, each match opening from a book: UCI (through
# polyglot) with pondering at 3 s and at 2 s + 0.05 s a game, xboard at 40
# moves in 30 s with Debian's Polyglot book (gnuchess-book) and weighted
# choice, and xboard with pondering at 5 s + 0.05 s. The other books are a CTG
# book that talvin-ctgbook makes from the test openings. Fails on any illegal
# move, crash, hang or time forfeit by talvin, or when no book move was
# played; the PGNs stay in the current directory.
#   match_test.sh TALVIN TALVIN-CTGBOOK
set -uo pipefail
talvin=$(realpath "$1")
ctgbook=$(realpath "$2")
here=$(dirname "$0")
match=$here/../../tools/match.sh
debianBook=/usr/share/games/gnuchess/book.bin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$ctgbook" "$work/openings.ctg" "$here/../book/data/openings.pgn" > /dev/null || exit 1
# UCI writes the settings file from the options; the default BookPath is
# bookTalvin.ctg.
for extension in ctg cto ctb; do cp "$work/openings.$extension" "$work/bookTalvin.$extension"; done

failed=0
# run NAME GAMES TC SETTINGS [MATCH OPTION...]: Talvin writes and reads its
# settings file where it runs, so each match gets a fresh directory with its book.
run() {
    local name=$1 games=$2 tc=$3 settings=$4
    shift 4
    local dir=$work/$name-talvin
    mkdir -p "$dir"
    cp "$work"/*.ct? "$dir"/
    printf '%b' "$settings" > "$dir/talvin init.ini"
    "$match" -n "$games" -c "$tc" -o "talvin-$name.pgn" -d "talvin-$name.log" -B 1 -f talvin -s fairymax "$@" \
        "$talvin" "$dir" fairymax "$work/$name-fairymax" || failed=1
    # Over xboard the engine's own lines show the probes.
    if [[ $* != *-u* ]] && ! grep -q '<first : #move=[a-h][1-8]' "talvin-$name.log"; then
        echo "FAILED: no \"#move=\" line with a book move from talvin in talvin-$name.log" >&2
        failed=1
    fi
}
run uci-ponder-3s 2 "-tc 0:03 -inc 0" "" -u -p
run uci-ponder-2s-inc 2 "-tc 0:02 -inc 0.05" "" -u -p
if [[ -r $debianBook ]]; then
    run xboard-40-in-30s 1 "-mps 40 -tc 0:30" "pref:book-path=$debianBook\npref:BookBestMoveOnly=0\n" -T 240
else
    echo "match_test.sh: $debianBook is missing (Debian package gnuchess-book): the xboard match uses the CTG book"
    run xboard-40-in-30s 1 "-mps 40 -tc 0:30" "pref:book-path=openings.ctg\npref:BookBestMoveOnly=0\n" -T 240
fi
run xboard-ponder-5s-inc 2 "-tc 0:05 -inc 0.05" "pref:book-path=openings.ctg\n" -p
exit $failed
