#!/usr/bin/env bash
# The labelling tool scores EPD and PGN positions with stockfish and writes
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
cat > games.pgn <<'PGN'
[Event "two"]
[FEN "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1"]
[SetUp "1"]

1. e4 Kd7 2. Zz9 Kd6 1-0

[Event "one"]
[White "a"]
[Black "b"]
[Result "*"]

1. e4 {book} e5 2. Nf3 (2. f4 exf4) Nc6 $1 3. Bb5 a6 4. Ba4 *

PGN
"$label" --depth 4 suite.epd > out.log 2>&1 || fail "exit status $?"
grep -q "suite.epd:2: " out.log || fail "the bad line was not reported"
# BK.01 once (the repeat differs only in its clocks), the king move, not the
# position with a mate on the board.
[[ $(grep -c '^[+-][0-9]*$' '!finalResults.txt') == 2 ]] || fail "expected two scored positions"
[[ $(sed -n 1p '!finalResults.txt') == "1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - 0 1" ]] || fail "first FEN"
# Black to move a rook down: the score is the side to move's.
[[ $(sed -n 3p '!finalResults.txt') == "4k3/8/8/8/8/8/8/R3K3 b - - 0 1" ]] || fail "second FEN"
sed -n 4p '!finalResults.txt' | grep -q '^-[1-9]' || fail "black to move a rook down scores negative"

"$label" --depth 2 --skip-plies 2 --max 4 --output games.txt games.pgn > out.log 2>&1 || fail "exit status $?"
grep -q "game 1: cannot read move Zz9" out.log || fail "the bad move was not reported"
# Plies 3..6 of the first game (its variation left out); the limit stops there.
[[ $(grep -c '^[+-]' games.txt) == 4 ]] || fail "expected four positions from the games"
grep -qx 'r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3' games.txt || fail "position after 2...Nc6"
echo "label test passed"
