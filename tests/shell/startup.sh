#!/usr/bin/env bash
# The engine announces itself and the mode prompt, and leaves cleanly at end of input.
set -u
engine=${1:?usage: startup.sh PATH/TO/talvin}
expected=$'Talvin_v8.05_x64\n\nChoose mode: Type xboard or uci'
output=$(timeout 10 "$engine" < /dev/null)
status=$?
if [ "$status" -ne 0 ]; then echo "exit status $status"; exit 1; fi
if [ "$output" != "$expected" ]; then printf 'unexpected output:\n%s\n' "$output"; exit 1; fi
echo "startup ok"
