#!/usr/bin/env bash
# Plays an unattended engine match under Debian's xboard on a virtual X server
# and checks it from the first engine's side.
#   match.sh [options] FIRST_CMD FIRST_DIR SECOND_CMD SECOND_DIR [-- XBOARD_OPTION...]
#     -n GAMES     games to play, colours alternating (default 2)
#     -c "TC"      xboard time control options (default "-tc 0:10 -inc 0.1")
#     -u / -U      first / second engine speaks UCI (run through polyglot)
#     -p           pondering on for both engines (default off)
#     -o FILE      PGN output (default match.pgn; replaced)
#     -T SECONDS   hard limit for the whole run (default from games and TC)
#     -f / -s NAME first / second engine's PGN name (default the program's base name)
#     -d FILE      keep xboard's debug log, with everything the engines printed, as FILE
#     -B N         list each game's opening moves that the first engine played
#                  without thinking output (its book moves); fail with fewer than
#                  N of them in the whole match
#     -a W,D,L     wins, draws and losses of earlier parts of the same match, added
#                  into the Elo line (a long match played in several runs)
# Engines run in their own directories (put a settings file there to give an
# engine its own options, for example another weights file).
# Prints the first engine's result and its Elo difference with a 95% error bar.
# Exits non-zero when the first engine lost by illegal move, time forfeit,
# crash or disconnect, when a game is unfinished or missing, when the book
# moves asked for are missing, or when the run hangs; xboard's debug log is
# then kept as FILE.debug.
set -euo pipefail
export PATH=$PATH:/usr/games

games=2 tc="-tc 0:10 -inc 0.1" pgn=match.pgn limit="" ponder=false firstName="" secondName="" debugCopy="" bookMoves=0
firstUci=false secondUci=false earlier=0,0,0
usage() {
    sed -n '2,25p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
}
while getopts "n:c:uUpo:T:f:s:d:B:a:" opt; do
    case $opt in
        n) games=$OPTARG ;;
        c) tc=$OPTARG ;;
        u) firstUci=true ;;
        U) secondUci=true ;;
        p) ponder=true ;;
        o) pgn=$OPTARG ;;
        T) limit=$OPTARG ;;
        f) firstName=$OPTARG ;;
        s) secondName=$OPTARG ;;
        d) debugCopy=$OPTARG ;;
        B) bookMoves=$OPTARG ;;
        a) earlier=$OPTARG ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
(( $# >= 4 )) || usage
firstCmd=$1 firstDir=$2 secondCmd=$3 secondDir=$4
shift 4
[[ ${1:-} == -- ]] && shift

# Engines start in their own directories, so relative programs need a full path.
absolute() {
    local program=${1%% *}
    if [[ $program == */* && $program != /* ]]; then echo "$PWD/$1"; else echo "$1"; fi
}
firstCmd=$(absolute "$firstCmd") secondCmd=$(absolute "$secondCmd")
mkdir -p "$firstDir" "$secondDir"
firstDir=$(cd "$firstDir" && pwd) secondDir=$(cd "$secondDir" && pwd)
firstName=${firstName:-$(basename "${firstCmd%% *}")} secondName=${secondName:-$(basename "${secondCmd%% *}")}
[[ $secondName == "$firstName" ]] && secondName="$secondName-2"

if [[ -z $limit ]]; then
    # Both clocks of a 200-move game, with room for starting and stopping.
    limit=$(awk -v tc=" $tc " -v games="$games" 'BEGIN {
        base = 300; inc = 0
        if (match(tc, / -tc [0-9:.]+ /)) {
            n = split(substr(tc, RSTART + 5, RLENGTH - 6), part, ":")
            base = n == 2 ? part[1] * 60 + part[2] : part[1] * 60
        }
        if (match(tc, / -inc [0-9.]+ /)) inc = substr(tc, RSTART + 6, RLENGTH - 7)
        printf "%d", games * (2 * (base + 200 * inc) + 30) + 30 }')
fi

scratch=$(mktemp -d)
runner=""
leftovers() {
    ps -eo pgid=,stat=,pid=,comm= | awk -v g="$runner" '$1 == g && $2 !~ /^Z/ {print $3, $4}'
}
cleanup() {
    # timeout leads its own process group: xvfb-run, Xvfb, xboard, polyglot,
    # engines. xvfb-run does not wait for Xvfb to go, hence the grace period.
    if [[ -n $runner ]]; then
        for _ in 1 2 3 4 5; do
            [[ -z $(leftovers) ]] && break
            sleep 1
        done
        if [[ -n $(leftovers) ]]; then
            echo "match.sh: killing what is left of the run: $(leftovers | tr '\n' ' ')" >&2
            kill -KILL -- "-$runner" 2>/dev/null || true
        fi
    fi
    rm -rf "$scratch"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

rm -f "$pgn" "$pgn.debug"
# A scratch HOME keeps xboard's and polyglot's settings files out of the user's.
mkdir "$scratch/home"
read -ra tcOptions <<< "$tc"
options=(-fcp "$firstCmd" -fd "$firstDir" -fn "$firstName"
         -scp "$secondCmd" -sd "$secondDir" -sn "$secondName"
         -firstIsUCI "$firstUci" -secondIsUCI "$secondUci"
         -adapterCommand 'polyglot -noini -ec "%fcp" -ed "%fd"'
         -mg "$games" "${tcOptions[@]}" -ponderNextMove "$ponder" -sgf "$pgn"
         -autoCallFlag true -popupExitMessage false -saveSettingsOnExit false
         -soundProgram "" -noGUI -debug -nameOfDebugFile "$scratch/xboard.debug" "$@")
status=0
HOME=$scratch/home timeout -k 10 "$limit" xvfb-run -a xboard "${options[@]}" \
    > "$scratch/xboard.out" 2>&1 &
runner=$!
wait "$runner" || status=$?

failures=()
(( status == 124 || status == 137 )) && failures+=("the match did not finish within $limit s")
(( status != 0 && status != 124 && status != 137 )) && failures+=("xboard exited with status $status")
while IFS= read -r line; do failures+=("xboard: $line"); done < <(
    grep -E "first (chess program|machine)|exited unexpectedly" "$scratch/xboard.out" | sed 's/^xboard: //' | sort -u)

# One line per game: result for the first engine (w/d/l/*), the closing
# comment, and the first engine's opening moves that came without thinking
# output (a comment after the move), which are its book moves.
[[ -f $pgn ]] || touch "$pgn"
verdicts=$(awk -v me="$firstName" '
    function bookLine(text, mine,    rest, token, ply, line, pending) {
        rest = text
        while (rest != "") {
            if (sub(/^[ \t]+/, "", rest)) continue
            if (rest ~ /^\{/) {
                if (pending != "") return line
                sub(/^\{[^}]*\}?/, "", rest)
                continue
            }
            match(rest, /^[^ \t{]+/)
            token = substr(rest, 1, RLENGTH)
            rest = substr(rest, RLENGTH + 1)
            sub(/^[0-9]+\.+/, "", token)
            if (token == "") continue
            if (token ~ /^(1-0|0-1|1\/2-1\/2|\*)$/) break
            if (pending != "") line = line (line == "" ? "" : " ") pending
            pending = ply % 2 == mine ? token : ""
            ply++
        }
        return line (pending == "" || line == "" ? "" : " ") pending
    }
    function finish() {
        if (white == "") return
        if (white == me) side = "1-0"; else if (black == me) side = "0-1"; else side = ""
        outcome = result == "*" ? "*" : result == "1/2-1/2" ? "d" : side == "" ? "?" : result == side ? "w" : "l"
        comment = match(text, /\{[^}]*\} *(1-0|0-1|1\/2-1\/2|\*) *$/) ? substr(text, RSTART, RLENGTH) : text
        print outcome "\t" comment "\t" bookLine(text, white == me ? 0 : 1)
        white = black = result = text = ""
    }
    /^\[Event / { finish() }
    /^\[White / { white = $0; sub(/^\[White "/, "", white); sub(/"\]$/, "", white) }
    /^\[Black / { black = $0; sub(/^\[Black "/, "", black); sub(/"\]$/, "", black) }
    /^\[Result / { result = $0; sub(/^\[Result "/, "", result); sub(/"\]$/, "", result) }
    !/^\[/ { text = text " " $0 }
    END { finish() }' "$pgn")

wins=0 draws=0 losses=0 played=0 bookTotal=0
while IFS=$'\t' read -r outcome comment book; do
    [[ -z $outcome ]] && continue
    played=$((played + 1))
    if (( bookMoves > 0 )); then
        read -ra line <<< "$book"
        bookTotal=$((bookTotal + ${#line[@]}))
        echo "game $played: $firstName's book moves: ${book:-none}"
    fi
    case $outcome in
        w) wins=$((wins + 1)) ;;
        d) draws=$((draws + 1)) ;;
        l) losses=$((losses + 1))
           if grep -qiE "on time|illegal|invalid|forfeit|crash|exit|disconnect|unexpected|error" <<< "$comment"; then
               failures+=("PGN game $played lost by $firstName: $comment")
           fi ;;
        \*) failures+=("PGN game $played unfinished: $comment") ;;
        *) failures+=("PGN game $played: $firstName is neither White nor Black") ;;
    esac
done <<< "$verdicts"
(( played < games )) && failures+=("only $played of $games games in $pgn")
(( bookTotal < bookMoves )) && failures+=("$firstName played $bookTotal book moves, fewer than $bookMoves")

echo "$firstName vs $secondName: +$wins =$draws -$losses ($played games)"
[[ -n $debugCopy ]] && cp "$scratch/xboard.debug" "$debugCopy"
# Score s of n games gives 400 log10(s / (1 - s)) Elo; the bar is 1.96 standard
# errors of the mean game result, carried through the same curve.
IFS=, read -r w0 d0 l0 <<< "$earlier"
awk -v w=$((wins + w0)) -v d=$((draws + d0)) -v l=$((losses + l0)) 'function elo(s) { return 400 * log(s / (1 - s)) / log(10) }
    BEGIN {
        n = w + d + l
        if (n == 0) exit
        s = (w + d / 2) / n
        v = (w * (1 - s) ^ 2 + d * (0.5 - s) ^ 2 + l * s ^ 2) / n
        e = 1.96 * sqrt(v / n)
        if (s <= 0 || s >= 1) { printf "score %.3f of %d games: Elo difference unbounded\n", s, n; exit }
        lo = s - e < 0.001 ? 0.001 : s - e; hi = s + e > 0.999 ? 0.999 : s + e
        printf "score %.3f of %d games: Elo difference %+.0f +- %.0f (95%%)\n", s, n, elo(s), (elo(hi) - elo(lo)) / 2
    }'
if (( ${#failures[@]} )); then
    cp "$scratch/xboard.debug" "$pgn.debug" 2>/dev/null || true
    printf 'FAILED: %s\n' "${failures[@]}" >&2
    exit 1
fi
