#!/usr/bin/env bash
# Deep perft counts of the six standard positions, with the speed of each run.
# Usage: tools/perft-deep.sh PATH/TO/talvin-perft
set -u
perft=${1:?usage: perft-deep.sh PATH/TO/talvin-perft}
failed=0
while IFS='|' read -r depth expected fen; do
    line=$("$perft" "$depth" "$fen" | tail -n 1)
    nodes=${line#nodes=}; nodes=${nodes%% *}
    if [ "$nodes" = "$expected" ]; then echo "ok   d$depth $line  $fen"; else echo "FAIL d$depth $line (expected $expected)  $fen"; failed=1; fi
done <<'LIST'
6|119060324|rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1
5|193690690|r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1
6|11030083|8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1
5|15833292|r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1
4|2103487|rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8
4|3894594|r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10
LIST
exit $failed
