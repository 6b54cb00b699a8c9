#!/usr/bin/env bash
# Makes the data of the evaluation fit (talvin-fit) from nothing but Debian's
# packages gnuchess-book and stockfish: Talvin's games against itself from
# random walks through the Polyglot book (talvin-selfplay, two processes at
# a time), their quiet positions scored by stockfish at a fixed depth
# (talvin-label, two at a time).
#   make-fit-data.sh [-g GAMES] [-p PARTS] [-s SEED] [-d DEPTH] [-r PLIES] [-l LABEL_DEPTH] BUILD_DIR OUT_DIR
#     -g GAMES        games in all (default 7200); every 10th is a hold-out game
#     -p PARTS        talvin-selfplay runs that share the games (default 4);
#                     run k plays with the seed 2 * SEED + k
#     -s SEED         the same seed gives the same games (default 1)
#     -d DEPTH        Talvin's search depth in the games (default 4)
#     -r PLIES        random legal moves after the book walk (default 2); with 0
#                     many walks meet and replay a game, which gives no new positions
#     -l LABEL_DEPTH  stockfish's depth (default 8)
# Writes OUT_DIR/fit.txt and OUT_DIR/holdout.txt as FEN and score lines (the
# format of the tuner's reference file), no position in both and none twice,
# and beside them the positions with their games' results (fit.epd,
# holdout.epd, operation c9).
#   make-fit-data.sh -m OUT_DIR DIR...
# joins sets made earlier into one, with the same rules.
set -euo pipefail
export PATH=$PATH:/usr/games

games=7200 parts=4 seed=1 depth=4 randomPlies=2 labelDepth=8
usage() {
    sed -n '2,23p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
}

# A FEN line and its score line as one line, and back.
pairs() { awk 'NR % 2 == 1 {fen = $0; next} {print fen "\t" $0}' "$1"; }
# One copy of each position (the first four FEN fields tell them apart), and
# none of the hold-out positions in the fit set.
merge() {
    local out=$1 directory
    shift
    for directory; do pairs "$directory/holdout.txt"; done |
        awk -F'\t' '{split($1, f, " "); k = f[1] " " f[2] " " f[3] " " f[4]} !seen[k]++' >"$out/holdout.tsv"
    for directory; do pairs "$directory/fit.txt"; done |
        awk -F'\t' 'FNR == NR {split($1, f, " "); seen[f[1] " " f[2] " " f[3] " " f[4]] = 1; next}
                    {split($1, f, " "); k = f[1] " " f[2] " " f[3] " " f[4]} !seen[k]++' "$out/holdout.tsv" - >"$out/fit.tsv"
    tr '\t' '\n' <"$out/holdout.tsv" >"$out/holdout.txt"
    tr '\t' '\n' <"$out/fit.tsv" >"$out/fit.txt"
    rm "$out/holdout.tsv" "$out/fit.tsv"
    echo "$(($(wc -l <"$out/fit.txt") / 2)) fit and $(($(wc -l <"$out/holdout.txt") / 2)) hold-out positions"
}
if [[ ${1:-} == -m ]]; then
    (($# >= 3)) || usage
    mkdir -p "$2"
    merge "$2" "${@:3}"
    exit
fi
while getopts "g:p:s:d:r:l:" opt; do
    case $opt in
        g) games=$OPTARG ;;
        p) parts=$OPTARG ;;
        s) seed=$OPTARG ;;
        d) depth=$OPTARG ;;
        r) randomPlies=$OPTARG ;;
        l) labelDepth=$OPTARG ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
(($# == 2)) || usage
build=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
for program in "$build/tools/talvin-selfplay" "$build/tools/talvin-label"; do
    [[ -x $program ]] || { echo "missing $program: build the tools first" >&2; exit 2; }
done
command -v stockfish >/dev/null || { echo "stockfish not found (apt-get install stockfish)" >&2; exit 2; }
[[ -r /usr/share/games/gnuchess/book.bin ]] || { echo "no Polyglot book (apt-get install gnuchess-book)" >&2; exit 2; }

cd "$out"
echo "$(date -u +%T) playing $games games at depth $depth, seed $seed, $randomPlies random plies"
for ((part = 0; part < parts; part++)); do
    "$build/tools/talvin-selfplay" --games $((games / parts)) --seed $((2 * seed + part)) --depth "$depth" \
        --random-plies "$randomPlies" --output "games$part.epd" --holdout "holdout$part.epd" >/dev/null 2>"selfplay$part.log" &
    ((part % 2 == 0)) || wait
done
wait
tail -qn1 selfplay*.log

# The runs may meet the same position: one copy, and none of the
# hold-out positions in the fit set.
gameFiles=() holdOuts=()
for ((part = 0; part < parts; part++)); do gameFiles+=("games$part.epd") holdOuts+=("holdout$part.epd"); done
awk '{k = $1 " " $2 " " $3 " " $4} !seen[k]++' "${holdOuts[@]}" >holdout.epd
awk 'FNR == NR {seen[$1 " " $2 " " $3 " " $4] = 1; next} {k = $1 " " $2 " " $3 " " $4} !seen[k]++' \
    holdout.epd "${gameFiles[@]}" >fit.epd
rm -f "${gameFiles[@]}" "${holdOuts[@]}"
echo "$(date -u +%T) $(wc -l <fit.epd) fit and $(wc -l <holdout.epd) hold-out positions; scoring at depth $labelDepth"

split -n l/2 -d fit.epd fitPart
label() { "$build/tools/talvin-label" --depth "$labelDepth" --output "$2" "$1" 2>>label.log; }
(label fitPart00 fit0.txt && label holdout.epd holdout.txt) &
label fitPart01 fit1.txt &
wait
cat fit0.txt fit1.txt >fit.txt
rm -f fitPart00 fitPart01 fit0.txt fit1.txt
echo "$(date -u +%T) $(($(wc -l <fit.txt) / 2)) fit and $(($(wc -l <holdout.txt) / 2)) hold-out positions scored"
