#!/usr/bin/env bash
# Soak: many games of Kovrel in xboard mode against other engines inside XBoard, several
# matches at a time, cycling through the opponents; reports results, illegal moves, time
# forfeits and crashes over all games, telling Kovrel's from the opponents'.
#   tools/soak.sh [GAMES] [PARALLEL] [MINUTES] [INCREMENT]
# Defaults: 100 games, 2 matches at a time, 1 minute plus 1 second a move. Each match plays 2
# games (one with each colour) in build/soak/matchN/.
set -uo pipefail
games=${1:-100}
parallel=${2:-2}
minutes=${3:-1}
increment=${4:-1}
root=$(cd "$(dirname "$0")/.." && pwd)
opponents=(fairymax phalanx hoichess)
make -C "$root" all >/dev/null
rm -rf "$root/build/soak"
mkdir -p "$root/build/soak"
matches=$(((games + 1) / 2))
for ((m = 0; m < matches; m++)); do
    opponent=${opponents[m % ${#opponents[@]}]}
    bash "$root/tools/xboard_match.sh" 2 "$opponent" "$minutes" "$increment" \
        "$root/build/soak/match$m" >"$root/build/soak/match$m.log" 2>&1 &
    while (($(jobs -rp | wc -l) >= parallel)); do sleep 5; done
done
wait
all=$(cat "$root"/build/soak/match*/games.pgn 2>/dev/null)
played=$(grep -c '^\[Result' <<<"$all")
decided=$(grep -c '^\[Result "\(1-0\|0-1\|1/2-1/2\)"\]' <<<"$all")
# Each game's last comment is XBoard's reason for ending it. A flag that fell belongs to the side
# that did not win on time; an illegal move or a crash to the side that lost the game (to Kovrel
# when the result does not say). The opponents' own complaints about protocol words they do not
# know stay in the debug logs and are not counted.
read -r wins draws kovrel_illegal kovrel_flags kovrel_crashes other_illegal other_flags \
    other_crashes < <(awk '
    function finish() {
        if (result == "") return
        kovrel_colour = white ~ /kovrel/ ? "White" : "Black"
        loser = result == "1-0" ? "White" : result == "0-1" ? "Black" : kovrel_colour
        if ((result == "1-0" && kovrel_colour == "White") || (result == "0-1" && kovrel_colour == "Black")) wins++
        if (result == "1/2-1/2") draws++
        if (reason ~ /wins on time/) {
            flagged = reason ~ /White wins on time/ ? "Black" : "White"
            if (flagged == kovrel_colour) kflags++; else oflags++
        } else if (tolower(reason) ~ /illegal|invalid/) {
            if (loser == kovrel_colour) killegal++; else oillegal++
        } else if (tolower(reason) ~ /exited unexpectedly|crash|terminated/) {
            if (loser == kovrel_colour) kcrashes++; else ocrashes++
        }
        result = ""; reason = ""
    }
    /^\[Event / { finish() }
    /^\[White / { white = $0 }
    /^\[Result / { result = $2; gsub(/"|\]/, "", result) }
    /^\[/ { next }
    { text = text " " $0 }
    /(1-0|0-1|1\/2-1\/2|\*)[ \t]*$/ {
        n = split(text, pieces, "{")
        reason = pieces[n]; sub(/}.*/, "", reason); text = ""
    }
    END { finish(); print wins + 0, draws + 0, killegal + 0, kflags + 0, kcrashes + 0,
          oillegal + 0, oflags + 0, ocrashes + 0 }' <<<"$all")
echo "games $played, with a result $decided; Kovrel won $wins, drew $draws"
echo "Kovrel: illegal moves $kovrel_illegal, time forfeits $kovrel_flags, crashes $kovrel_crashes"
echo "opponents: illegal moves $other_illegal, time forfeits $other_flags, crashes $other_crashes"
((decided == played && played >= games && kovrel_illegal + kovrel_flags + kovrel_crashes == 0))
