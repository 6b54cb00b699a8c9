#!/usr/bin/env bash
# Talvin wins a rook and a pawn ending against fairymax under xboard, with
# Debian's 3-piece Gaviota tables alone and with the repository's Syzygy
# tables alone.
#   tablebaseMatch_test.sh TALVIN
here=$(dirname "$(realpath "$0")")
cd "$(mktemp -d)" || exit 1
trap 'rm -rf "$PWD"' EXIT
"$here/../../tools/endgame-matches.sh" -n 2 -c "-tc 0:10 -inc 0.1" -k "gaviota syzygy" "$1" \
    /usr/share/gaviotatb/gtb4 "$here/../data/tablebases/syzygy" "$here/../data/endgames-won.fen"
