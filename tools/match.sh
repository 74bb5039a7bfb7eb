#!/usr/bin/env bash
# Plays Kovrel against another engine inside the real XBoard program, under a virtual X
# display, one XBoard per game so that a crash ends only its own game (XBoard gives up the whole
# match when a program dies). Colours alternate. Every fault is charged to the side that made
# it: a flag that fell, an illegal move, a crash. A game that an opponent's crash ended is
# reported as the opponent's crash and left out of the score.
#
#   tools/match.sh [PROGRAM] [GAMES] [OPPONENT] [BASE] [INCREMENT] [PARALLEL] [WORKDIR]
#
# PROGRAM: kovrel-uci (XBoard talks to it through polyglot, as to any UCI engine; it finds its
# book beside itself) or kovrel (protocol 1, xboard mode, started in a folder with its book).
# BASE is XBoard's time control: minutes, or m:ss (0:10 is ten seconds); INCREMENT in seconds.
# Defaults: kovrel-uci, 10 games against fairymax at 0:10 + 0.1, two games at a time, in
# build/match-PROGRAM-OPPONENT. Needs the Debian packages xboard, polyglot, xvfb and the
# opponent; installs them when run as root. The games are kept in WORKDIR/gameN/ (games.pgn,
# XBoard's debug log); WORKDIR/results.txt has one line per game, and the summary is printed at
# the end. The exit status is 1 when Kovrel made a fault or a game ended without a result that
# is not an opponent's crash.
set -uo pipefail
program=${1:-kovrel-uci}
games=${2:-10}
opponent=${3:-fairymax}
base=${4:-0:10}
increment=${5:-0.1}
parallel=${6:-2}
root=$(cd "$(dirname "$0")/.." && pwd)
work=${7:-$root/build/match-$program-$(basename "$opponent")}
[[ $program == kovrel || $program == kovrel-uci ]] || { echo "Error (program is kovrel or kovrel-uci): match" && exit 1; }

export PATH=$PATH:/usr/games
missing=()
for tool in xboard polyglot Xvfb "$opponent"; do command -v "$tool" >/dev/null || missing+=("$tool"); done
if ((${#missing[@]} > 0)); then
    if [[ $(id -u) == 0 ]]; then
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq xboard polyglot xvfb "$opponent" >/dev/null
    else
        echo "Error (missing ${missing[*]}): match" && exit 1
    fi
fi
make -C "$root" all >/dev/null || exit 1
rm -rf "$work"
mkdir -p "$work/engine"
# The match plays a copy of the program and its book (found beside it), so that a rebuild
# meanwhile changes nothing.
cp "$root/build/$program" "$root/build/openings.dat" "$work/engine/"
engine=$work/engine/$program

# Seconds a game may last at most: both clocks, the increments of 200 moves, and a margin.
seconds_of() { awk -v t="$1" 'BEGIN { n = split(t, p, ":"); print n == 2 ? p[1] * 60 + p[2] : t * 60 }'; }
limit=$(awk -v b="$(seconds_of "$base")" -v i="$increment" 'BEGIN { print int(2 * b + 400 * i + 120) }')

# play_game N: game N in WORKDIR/gameN, kovrel-uci White in even games.
play_game() {
    local n=$1 dir=$work/game$1 first second first_dir second_dir
    mkdir -p "$dir"
    # Kovrel's side: through polyglot, or protocol 1 in the folder of its book.
    local kovrel=$engine kovrel_dir=$dir side=first protocol
    [[ $program == kovrel ]] && kovrel="$engine -xboard" kovrel_dir=$work/engine
    if ((n % 2 == 0)); then
        first=$kovrel second=$opponent first_dir=$kovrel_dir second_dir=$dir
    else
        first=$opponent second=$kovrel first_dir=$dir second_dir=$kovrel_dir side=second
    fi
    if [[ $program == kovrel-uci ]]; then
        protocol=(-${side:0:1}UCI)
    else
        protocol=(-${side}ProtocolVersion 1)
    fi
    Xvfb -displayfd 3 -screen 0 1024x768x24 3>"$dir/display" >"$dir/xvfb.log" 2>&1 &
    local xvfb=$!
    for ((wait = 0; wait < 100; wait++)); do [[ -s $dir/display ]] && break || sleep 0.1; done
    # No animation: the referee does as little as it can between the moves.
    DISPLAY=:$(head -n1 "$dir/display") timeout "$limit" xboard \
        -fcp "$first" -fd "$first_dir" -scp "$second" -sd "$second_dir" "${protocol[@]}" \
        -matchMode true -matchGames 1 -timeControl "$base" -timeIncrement "$increment" \
        -saveGameFile "$dir/games.pgn" -autoCallFlag true -testClaims true \
        -popupExitMessage false -ponderNextMove false -animateMoving false \
        -debugMode true -nameOfDebugFile "$dir/xboard.debug" >"$dir/xboard.log" 2>&1
    echo $? >"$dir/status"
    kill "$xvfb" 2>/dev/null
    wait "$xvfb" 2>/dev/null
}

for ((n = 0; n < games; n++)); do
    play_game "$n" &
    while (($(jobs -rp | wc -l) >= parallel)); do sleep 1; done
done
wait

# One line per game: number, kovrel's colour, result, outcome for kovrel (win, draw, loss,
# excluded), the fault and whose it was, XBoard's reason. Crashes are read from XBoard's own
# messages about its first and second program; flags from its "wins on time" comments.
for ((n = 0; n < games; n++)); do
    dir=$work/game$n
    colour=$( ((n % 2 == 0)) && echo White || echo Black)
    kovrel_program=$( ((n % 2 == 0)) && echo first || echo second)
    [[ -f $dir/games.pgn ]] || touch "$dir/games.pgn"
    result=$(sed -n 's/^\[Result "\(.*\)"\]/\1/p' "$dir/games.pgn" | tail -n1)
    reason=$(tr '\n' ' ' <"$dir/games.pgn" 2>/dev/null | grep -oE '\{[^{}]*\} *(1-0|0-1|1/2-1/2|\*) *$' |
        sed -E 's/^\{//; s/\} *[^ ]+ *$//')
    crashed=$(grep -ohE '(first|second) chess program' "$dir/xboard.log" "$dir/xboard.debug" 2>/dev/null |
        head -n1 | cut -d' ' -f1)
    fault=none who=-
    if [[ -n $crashed ]]; then
        fault=crash who=$([[ $crashed == "$kovrel_program" ]] && echo kovrel || echo opponent)
    elif [[ $reason =~ (White|Black)\ wins\ on\ time ]]; then
        flagged=$([[ ${BASH_REMATCH[1]} == White ]] && echo Black || echo White)
        fault=flag who=$([[ $flagged == "$colour" ]] && echo kovrel || echo opponent)
    elif [[ ${reason,,} =~ illegal|invalid ]]; then
        loser=$([[ $result == 1-0 ]] && echo Black || echo White)
        fault=illegal who=$([[ $loser == "$colour" ]] && echo kovrel || echo opponent)
    fi
    if [[ $fault == crash && $who == opponent ]]; then
        outcome=excluded
    elif [[ $result == 1/2-1/2 ]]; then
        outcome=draw
    elif [[ ($result == 1-0 && $colour == White) || ($result == 0-1 && $colour == Black) ]]; then
        outcome=win
    elif [[ $result == 1-0 || $result == 0-1 ]]; then
        outcome=loss
    else
        outcome=noresult
    fi
    echo "$n $colour ${result:-none} $outcome $fault $who ${reason:-}"
done >"$work/results.txt"

# Time use: Kovrel's thinking times from XBoard's move comments ("{+0.28/7 0.5}"), as a share
# of what its clock offered over the game (the base plus an increment per move).
awk -v base="$(seconds_of "$base")" -v inc="$increment" -v games="$games" -v dir="$work" '
    function gamefile(n) { return dir "/game" n "/games.pgn" }
    BEGIN {
        for (n = 0; n < games; n++) {
            white = n % 2 == 0; text = ""
            while ((getline line < gamefile(n)) > 0) if (line !~ /^\[/) text = text " " line
            close(gamefile(n))
            gsub(/\{[^}]*[a-zA-Z][^}]*\}/, "", text)  # XBoard'"'"'s closing comment
            used = 0; moves = 0; ply = 0
            while (match(text, /[0-9]+\.|\{[^}]*\}/)) {
                piece = substr(text, RSTART, RLENGTH); text = substr(text, RSTART + RLENGTH)
                if (piece ~ /^[0-9]+\.$/) { ply = 0; continue }
                ply++
                if ((ply == 1) == white) { split(piece, f, " "); sub(/\}/, "", f[2]); used += f[2]; moves++ }
            }
            if (moves > 0) { share = used / (base + inc * moves); total += share; counted++
                             if (share > most) most = share }
        }
        if (counted > 0)
            printf "time use: Kovrel spent on average %.0f%% of its clock (at most %.0f%%)\n",
                   100 * total / counted, 100 * most
    }' >"$work/timeuse.txt"

awk -v opponent="$opponent" -v program="$program" '
    { n++; outcome[$4]++; if ($5 != "none") fault[$6 " " $5]++ }
    END {
        scored = outcome["win"] + outcome["draw"] + outcome["loss"]
        points = outcome["win"] + outcome["draw"] / 2
        printf "%d games of %s against %s: won %d, drew %d, lost %d", n, program, opponent,
               outcome["win"], outcome["draw"], outcome["loss"]
        if (scored > 0) printf " (%.1f%% of %d scored games)", 100 * points / scored, scored
        printf "\n"
        printf "%s: illegal moves %d, time forfeits %d, crashes %d\n", program,
               fault["kovrel illegal"], fault["kovrel flag"], fault["kovrel crash"]
        printf "%s: illegal moves %d, time forfeits %d, crashes %d (games left out: %d)\n", opponent,
               fault["opponent illegal"], fault["opponent flag"], fault["opponent crash"],
               outcome["excluded"]
        if (outcome["noresult"] > 0) printf "games without a result: %d\n", outcome["noresult"]
        exit fault["kovrel illegal"] + fault["kovrel flag"] + fault["kovrel crash"] + outcome["noresult"] > 0
    }' "$work/results.txt" | tee "$work/summary.txt"
status=${PIPESTATUS[0]}
cat "$work/timeuse.txt"
exit "$status"
