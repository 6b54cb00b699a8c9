#!/usr/bin/env bash
# Scores reference engines over UCI on an EPD suite, a fixed time per position,
# with the positions and best moves talvin-wac --convert gives.
#   wac-reference.sh TALVIN_WAC FILE.epd [MS] [ENGINE...]
# ENGINE is a UCI command line; the default is stockfish and gnuchess --uci.
# Prints "<engine> solved N/M" per engine; -v lists every position on stderr.
set -euo pipefail
export PATH=$PATH:/usr/games

verbose=0
if [[ ${1:-} == -v ]]; then verbose=1; shift; fi
if (( $# < 2 )); then
    echo "usage: $0 [-v] TALVIN_WAC FILE.epd [MS] [ENGINE...]" >&2
    exit 2
fi
wac=$1 epd=$2 ms=${3:-1000}
shift $(( $# < 3 ? $# : 3 ))
(( $# )) || set -- stockfish "gnuchess --uci"

positions=$(mktemp)
scratch=$(mktemp -d)
trap 'rm -rf "$positions" "$scratch"' EXIT
"$wac" --convert "$epd" > "$positions"
count=$(wc -l < "$positions")
# An engine that stops answering costs at most this much per reply.
patience=$(( ms / 1000 + 10 ))

send() { printf '%s\n' "$*" >&"${ENGINE[1]}"; }
# Reads engine lines until one starts with $1; the line is left in $reply.
await() {
    while IFS= read -r -t "$patience" reply <&"${ENGINE[0]}"; do
        [[ $reply == "$1"* ]] && return 0
    done
    echo "no '$1' from the engine" >&2
    return 1
}

score() {
    local name=${1%% *} solved=0 fen moves best hit command
    read -ra command <<< "$1"
    # The whole run is bounded too, should the engine ignore quit; gnuchess
    # --uci crashes on quit, hence the silenced stderr.
    coproc ENGINE { cd "$scratch" && timeout -k 5 $(( count * patience + 30 )) "${command[@]}"; } 2>/dev/null
    local pid=$ENGINE_PID
    send uci
    await uciok
    while IFS='|' read -r fen moves <&3; do
        send ucinewgame
        send isready
        await readyok
        send "position fen $fen"
        send "go movetime $ms"
        await bestmove
        best=$(awk '{print $2}' <<< "$reply")
        hit=no
        [[ " $moves " == *" $best "* ]] && hit=yes solved=$((solved + 1))
        if (( verbose )); then echo "$name $fen expected $moves found $best $hit" >&2; fi
    done 3< "$positions"
    send quit
    wait "$pid" || true
    echo "$name solved $solved/$count"
}

for engine in "$@"; do score "$engine"; done
