#!/usr/bin/env bash
# Talvin against fairymax under xboard: over the xboard protocol, over UCI
# through polyglot, and with both engines pondering, each time opening from a
# book: Debian's Polyglot book (gnuchess-book) with weighted choice over
# xboard, and a CTG book that talvin-ctgbook makes from the test openings over
# UCI and with pondering. Fails on any illegal move, crash, hang or time
# forfeit by talvin, or when no book move was played; the PGNs stay in the
# current directory.
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

failed=0
# run NAME SETTINGS [MATCH OPTION...]: Talvin writes and reads its settings
# file where it runs, so each match gets a fresh directory with its book.
run() {
    local name=$1 settings=$2
    shift 2
    local dir=$work/$name-talvin
    mkdir -p "$dir"
    cp "$work"/*.ct? "$dir"/
    printf '%b' "$settings" > "$dir/talvin init.ini"
    "$match" -n 2 -c "-tc 0:10 -inc 0.1" -o "talvin-$name.pgn" -d "talvin-$name.log" -B 1 -f talvin -s fairymax "$@" \
        "$talvin" "$dir" fairymax "$work/$name-fairymax" || failed=1
    # Over xboard the engine's own lines show the probes.
    if [[ $* != *-u* ]] && ! grep -q '<first : #move=[a-h][1-8]' "talvin-$name.log"; then
        echo "FAILED: no \"#move=\" line with a book move from talvin in talvin-$name.log" >&2
        failed=1
    fi
}
if [[ -r $debianBook ]]; then
    run xboard "pref:book-path=$debianBook\npref:BookBestMoveOnly=0\n"
else
    echo "match_test.sh: $debianBook is missing (Debian package gnuchess-book): the xboard match uses the CTG book"
    run xboard "pref:book-path=openings.ctg\npref:BookBestMoveOnly=0\n"
fi
# UCI writes the settings file from the options; the default BookPath is
# bookTalvin.ctg.
for extension in ctg cto ctb; do cp "$work/openings.$extension" "$work/bookTalvin.$extension"; done
run uci "" -u
run ponder "pref:book-path=openings.ctg\n" -p
exit $failed
