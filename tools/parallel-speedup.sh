#!/bin/bash
# Time to a fixed depth with one search process and with one slave next to
# it, over the first positions of an EPD file.
#   tools/parallel-speedup.sh TALVIN EPD [DEPTH] [POSITIONS]
set -u
engine=$(realpath "$1")
epd=$2
depth=${3:-10}
count=${4:-20}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Prints "milliseconds nodes" of one search to the depth limit.
search() {
    local fen=$1 processes=$2 line ms=0 nodes=0
    printf 'pref:MAXPROCESSES=%d\n' "$processes" > "$work/talvin init.ini"
    coproc ENGINE { cd "$work" && exec "$engine" 2>&1; }
    printf 'xboard\nnopost\nforce\nsetboard %s\nst 1000\nsd %d\ngo\n' "$fen" $((depth - 1)) >&"${ENGINE[1]}"
    while read -r -t 600 line <&"${ENGINE[0]}"; do
        case $line in
            *"total time elapsed="*) ms=${line##*= } ;;
            Nodes=*) nodes=${line#Nodes=} ;;
            "move "*) break ;;
        esac
    done
    printf 'quit\n' >&"${ENGINE[1]}"
    wait "$ENGINE_PID" 2>/dev/null
    echo "$ms $nodes"
}

grep -v '^#' "$epd" | head -n "$count" | cut -d';' -f1 | awk '{print $1, $2, $3, $4}' > "$work/positions"
while read -r fen; do
    read -r t1 n1 < <(search "$fen" 0)
    read -r t2 n2 < <(search "$fen" 1)
    echo "$t1 $n1 $t2 $n2 $fen"
done < "$work/positions" | tee "$work/results"
awk '{print $1 / ($3 > 0 ? $3 : 1)}' "$work/results" | sort -g |
    awk '{a[NR] = $1} END {m = NR % 2 ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2; printf "median speed-up (time with 1 process / time with 2): %.2f\n", m}'
awk '{t1 += $1; n1 += $2; t2 += $3; n2 += $4} END {printf "nodes per second: 1 process %d, 2 processes %d\n", n1 / t1 * 1000, n2 / t2 * 1000}' "$work/results"
