#!/usr/bin/env bash
# Talvin wins a rook and a pawn ending against fairymax under xboard, with
# the repository's Gaviota tables alone and with its Syzygy tables alone.
#   tablebaseMatch_test.sh TALVIN
here=$(dirname "$(realpath "$0")")
cd "$(mktemp -d)" || exit 1
trap 'rm -rf "$PWD"' EXIT
"$here/../../tools/endgame-matches.sh" -n 2 -c "-tc 0:10 -inc 0.1" -k "gaviota syzygy" "$1" \
    "$here/../data/tablebases/gaviota" "$here/../data/tablebases/syzygy" "$here/../data/endgames-won.fen"
