#!/usr/bin/env bash
# Talvin, stockfish and gnuchess on the same EPD suite at the same time per
# position, one after the other.
#   wac-all.sh [TALVIN_WAC [FILE.epd [MS]]]
# Talvin's per-position lines are kept in wac-talvin.log in the current directory.
set -euo pipefail
here=$(dirname "$0")
wac=${1:-$here/../build/tools/talvin-wac}
epd=${2:-$here/suites/wac-1-150.epd}
ms=${3:-1000}

count=$(grep -c . "$epd")
# The search's own output goes to stdout; the verdicts go to stderr.
timeout $(( count * (ms / 1000 + 5) + 60 )) "$wac" --time "$ms" "$epd" 2> wac-talvin.log > /dev/null
echo "talvin $(grep '^solved' wac-talvin.log)"
"$here/wac-reference.sh" "$wac" "$epd" "$ms"
