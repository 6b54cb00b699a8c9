#!/usr/bin/env bash
# Time to a fixed depth with one search process and with two (one slave),
# paired per position and interleaved: the order of the two runs alternates,
# the one-process run is pinned to one core (alternating between the two
# cores), the two-process run to two. Every run is a fresh engine with empty
# tables.
#   tools/parallel-speedup.sh [options] TALVIN EPD
#     -n COUNT     positions to take from the EPD file (default all)
#     -r ROUNDS    pairs per position (default 1)
#     -d DEPTH     search depth of every position; otherwise an "sd N;"
#                  opcode of the line, otherwise calibrated: the first depth
#                  from 7 up at which one process needs at least MIN_MS
#     -m MIN_MS    calibration threshold (default 500)
#     -p SLAVES    slaves in the parallel run (default 1)
#     -l LOCKFILE  run every pair under an exclusive flock of LOCKFILE
#     -o FILE      per-run figures (default: a temporary file)
# Prints one line per position (depth, both times in ms, both node counts,
# ratio) and the summary: median and mean time ratio (1 process / several),
# the node ratio (several / 1: the search overhead), both node rates and,
# from the parallel runs' statistics lines, the peak of split blocks in use,
# waits on the MT mutex per second, shares given up for want of a block and
# time-outs. Calibrated depths are printed as "sd N;" lines that can be fed
# back as the EPD file.
set -euo pipefail

count=100000 rounds=1 fixedDepth="" minMs=500 slaves=1 lock="" out=""
usage() {
    sed -n '2,22p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
}
while getopts "n:r:d:m:p:l:o:" opt; do
    case $opt in
        n) count=$OPTARG ;;
        r) rounds=$OPTARG ;;
        d) fixedDepth=$OPTARG ;;
        m) minMs=$OPTARG ;;
        p) slaves=$OPTARG ;;
        l) lock=$OPTARG ;;
        o) out=$OPTARG ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
(( $# == 2 )) || usage
engine=$(realpath "$1")
epd=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export work engine slaves
[[ -n $out ]] || out=$work/runs
: > "$out"

# One search to the given depth on the given cores: prints "milliseconds nodes
# peak-blocks MT-waits no-free-block time-outs" (the last four 0 alone).
search() {
    local fen=$1 depth=$2 processes=$3 cores=$4 line ms=0 nodes=0 stats="0 0 0 0"
    mkdir -p "$work/$processes"
    printf 'pref:MAXPROCESSES=%d\n' "$processes" > "$work/$processes/talvin init.ini"
    coproc ENGINE { cd "$work/$processes" && exec taskset -c "$cores" "$engine" 2>&1; }
    # sd N ends after the iteration printed as N + 1.
    printf 'xboard\nnopost\nforce\nsetboard %s\nst 100000\nsd %d\ngo\n' "$fen" $((depth - 1)) >&"${ENGINE[1]}"
    while read -r -t 900 line <&"${ENGINE[0]}"; do
        case $line in
            *"total time elapsed="*) ms=${line##*= } ;;
            Nodes=*) nodes=${line#Nodes=} ;;
            splits=*)
                stats=$(echo "$line" | sed 's/.*peak=\([0-9]*\) MT waits=\([0-9]*\).*block=\([0-9]*\) time-outs=\([0-9]*\).*/\1 \2 \3 \4/')
                ;;
            "move "*) break ;;
        esac
    done
    printf 'quit\n' >&"${ENGINE[1]}"
    wait "$ENGINE_PID" 2>/dev/null || true
    echo "$ms $nodes $stats"
}

# Runs a command or one of the functions here, under the lock when there is one.
locked() {
    if [[ -n $lock ]]; then flock -x "$lock" bash -c '"$@"' _ "$@"; else "$@"; fi
}

# Both runs of one pair, the one-process run first when first is 1.
pair() {
    local fen=$1 depth=$2 first=$3 core=$4 t1 n1 t2 n2 stats
    if (( first )); then
        read -r t1 n1 _ < <(search "$fen" "$depth" 0 "$core")
        read -r t2 n2 stats < <(search "$fen" "$depth" "$slaves" 0,1)
    else
        read -r t2 n2 stats < <(search "$fen" "$depth" "$slaves" 0,1)
        read -r t1 n1 _ < <(search "$fen" "$depth" 0 "$core")
    fi
    echo "$t1 $n1 $t2 $n2 $stats"
}

export -f search pair

calibrate() {
    local fen=$1 depth=7 t n
    while :; do
        read -r t n < <(locked search "$fen" "$depth" 0 0)
        (( t >= minMs || depth >= 30 )) && break
        depth=$((depth + 1))
    done
    echo "$depth"
}

grep -v '^#' "$epd" | grep -v '^[[:space:]]*$' | head -n "$count" > "$work/positions"
index=0
while IFS= read -r entry; do
    fen=$(echo "$entry" | cut -d';' -f1 | awk '{print $1, $2, $3, $4}')
    depth=$fixedDepth
    [[ -n $depth ]] || depth=$(echo "$entry" | sed -n 's/.*sd \([0-9]*\);.*/\1/p')
    if [[ -z $depth ]]; then
        depth=$(calibrate "$fen")
        echo "$fen ; sd $depth;" >> "$work/calibrated"
    fi
    echo "$fen" > "$work/fen.$index"
    echo "$index $depth" >> "$work/depths"
    index=$((index + 1))
done < "$work/positions"

for ((round = 0; round < rounds; round++)); do
    while read -r i depth; do
        fen=$(cat "$work/fen.$i")
        first=$(( (round + i) % 2 ))
        core=$(( (round / 2 + i) % 2 ))
        read -r t1 n1 t2 n2 stats < <(locked pair "$fen" "$depth" "$first" "$core")
        echo "$i $depth $t1 $n1 $t2 $n2 $stats" >> "$out"
        printf '%3d d%-2d %6d ms %10d nodes | %6d ms %10d nodes | %.2f  %s\n' \
            "$i" "$depth" "$t1" "$n1" "$t2" "$n2" "$(awk -v a="$t1" -v b="$t2" 'BEGIN {print (b > 0 ? a / b : 0)}')" "$fen"
    done < "$work/depths"
done

[[ -f $work/calibrated ]] && { echo "calibrated depths:"; cat "$work/calibrated"; }
# Per position: the summed times and nodes of its rounds.
awk '{t1[$1] += $3; n1[$1] += $4; t2[$1] += $5; n2[$1] += $6}
     END {for (i in t1) print t1[i], n1[i], t2[i], n2[i]}' "$out" > "$work/sums"
awk '{print $1 / ($3 > 0 ? $3 : 1)}' "$work/sums" | sort -g | awk -v p=$((slaves + 1)) '
    {a[NR] = $1; sum += $1}
    END {
        m = NR % 2 ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2
        printf "positions %d, rounds %d\n", NR, '"$rounds"'
        printf "median speed-up (time with 1 process / time with %d): %.2f\n", p, m
        printf "mean speed-up: %.2f\n", sum / NR
    }'
awk -v p=$((slaves + 1)) '{t1 += $1; n1 += $2; t2 += $3; n2 += $4}
     END {
        printf "node ratio (nodes with %d / nodes with 1): %.2f\n", p, n2 / n1
        printf "nodes per second: 1 process %d, %d processes %d\n", n1 / t1 * 1000, p, n2 / t2 * 1000
     }' "$work/sums"
awk '{t += $5; if ($7 > peak) peak = $7; waits += $8; noBlock += $9; timeouts += $10}
     END {
        printf "split blocks in use at most %d; MT mutex waits %.1f per second; no free block %d; time-outs %d\n",
            peak, waits / (t > 0 ? t : 1) * 1000, noBlock, timeouts
     }' "$out"
