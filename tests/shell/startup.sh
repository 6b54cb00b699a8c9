#!/usr/bin/env bash
# The engine announces itself and the mode prompt, leaves cleanly at end of
# input, and answers --version and --help without starting.
set -u
engine=${1:?usage: startup.sh PATH/TO/talvin}
fail() { printf '%s\n' "$@"; exit 1; }

output=$(timeout 10 "$engine" < /dev/null) || fail "exit status $?"
[ "$output" = $'Talvin_v8.05_x64\n\nChoose mode: Type xboard or uci' ] || fail "unexpected output:" "$output"
version=$(timeout 10 "$engine" --version < /dev/null) || fail "--version failed"
[ "$version" = "Talvin_v8.05_x64 (Talvin 8.05)" ] || fail "unexpected --version:" "$version"
help=$(timeout 10 "$engine" --help < /dev/null) || fail "--help failed"
for word in xboard uci "talvin init.ini"; do
    grep -q "$word" <<< "$help" || fail "--help does not mention $word:" "$help"
done
echo "startup ok"
