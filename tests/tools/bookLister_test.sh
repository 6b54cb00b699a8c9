#!/usr/bin/env bash
# talvin-book as a user runs it: FENs as arguments or on standard input give
# the same lines, a text that is not a position and an unreadable book fail
# with the engine's message.
#   bookLister_test.sh TALVIN-BOOK TALVIN-CTGBOOK
set -u
book=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "e2e4 e7e5 1-0" > "$work/lines.txt"
"$2" "$work/b.ctg" "$work/lines.txt" > /dev/null || exit 1
start="rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
failed=0
# expect LABEL STATUS OUTPUT COMMAND...
expect() {
    local label=$1 status=$2 output=$3
    shift 3
    local got
    got=$("$@")
    local code=$?
    if [[ $code != "$status" || $got != "$output" ]]; then
        printf 'FAILED: %s: status %s, output:\n%s\n' "$label" "$code" "$got" >&2
        failed=1
    fi
}
expect arguments 1 "$start -> e2e4:1"$'\n'"x -> not a position" "$book" "$work/b.ctg" "$start" x
expect "standard input" 0 "$start -> e2e4:1" bash -c "printf '%s\r\n\n' '$start' | '$book' '$work/b.ctg'"
expect "no .ctg" 1 "Error reading cgt-file" "$book" "$work/none.ctg" "$start"
rm "$work/b.ctb"
expect "no .ctb" 1 "Error reading ctb-file: $work/b.ctb" "$book" "$work/b.ctg" "$start"
expect "no .bin" 1 "Error reading bin-file: $work/b.bin" "$book" "$work/b.bin" "$start"
exit $failed
