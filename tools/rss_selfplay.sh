#!/usr/bin/env bash
# Plays the engine against itself for MINUTES minutes (new games one after another, three plies
# deep, no time control, the book on) and compares the program's resident size a few seconds
# after the start with the size at the end: nothing is allocated after start-up, so the two must
# differ by less than 1 MB.
#   tools/rss_selfplay.sh [MINUTES] [KOVREL]
set -uo pipefail
minutes=${1:-30}
root=$(cd "$(dirname "$0")/.." && pwd)
kovrel=$(realpath "${2:-$root/build/kovrel}")
scratch=$(mktemp -d)
cp "$root/openings.txt" "$scratch/"
cd "$scratch"
words() {
    echo "level 0 0 0"
    echo "set 3 6"
    while true; do
        echo new
        for _ in $(seq 420); do echo go; done
    done
}
words | "$kovrel" -crbk >/dev/null &
sleep 1
pid=$(pgrep -n -f "$kovrel -crbk")
rss() { awk '/^VmRSS/{print $2}' "/proc/$pid/status"; }
sleep 10
start=$(rss)
sleep $((minutes * 60 - 10))
end=$(rss)
games=$(ls /proc/"$pid" >/dev/null 2>&1 && echo running || echo ended)
kill "$pid" 2>/dev/null
wait 2>/dev/null
rm -rf "$scratch"
echo "resident size: $start kB after 10 s, $end kB after $minutes min (program $games)"
((end - start < 1024))
