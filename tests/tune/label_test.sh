#!/usr/bin/env bash
# The labelling tool scores EPD positions with stockfish and writes
# the tuner's reference file.
set -euo pipefail
label=$1
stockfish=/usr/games/stockfish
if [[ ! -x $stockfish ]]; then
    echo "SKIP: $stockfish is not installed"
    exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
fail() { echo "FAILED: $*"; cat ./*.txt 2>/dev/null; exit 1; }

cat > suite.epd <<'EPD'
1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - ; bm Qd1 + ; id BK.01
not a position at all
4k3/8/8/8/8/8/8/R3K3 b - - bm Kd7;
1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - 5 40; id "the first again"
6k1/5ppp/8/8/8/8/8/R5K1 w - - bm Ra8#;
EPD
"$label" --depth 4 suite.epd > out.log 2>&1 || fail "exit status $?"
grep -q "suite.epd:2: " out.log || fail "the bad line was not reported"
# BK.01 once (the repeat differs only in its clocks), the king move, not the
# position with a mate on the board.
[[ $(grep -c '^[+-][0-9]*$' '!finalResults.txt') == 2 ]] || fail "expected two scored positions"
[[ $(sed -n 1p '!finalResults.txt') == "1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - 0 1" ]] || fail "first FEN"
# Black to move a rook down: the score is the side to move's.
[[ $(sed -n 3p '!finalResults.txt') == "4k3/8/8/8/8/8/8/R3K3 b - - 0 1" ]] || fail "second FEN"
sed -n 4p '!finalResults.txt' | grep -q '^-[1-9]' || fail "black to move a rook down scores negative"

echo "label test passed"
