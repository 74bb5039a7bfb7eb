#!/usr/bin/env bash
# Speed of two commits side by side, in one sitting on one machine.
#   tools/speed_compare.sh [OLD] [NEW] [RUNS] [DEPTH]
# Builds kovrel-bench, kovrel-perft and kovrel-bench-eval of both commits (Release, in
# throw-away worktrees under ${SPEED_DIR:-/tmp/kovrel-speed}), then alternates them RUNS times
# (default 5): the bench at DEPTH (default 4), perft 6 from the start position and the
# evaluation benchmark. Prints every run, the medians and the ratios NEW / OLD, and Stockfish's
# `go perft 6` when a stockfish is installed. Defaults: OLD 9e0d97a, NEW HEAD. A bench whose
# node count changes from run to run is an error; a node count that differs between the two
# commits is shown, since a change of the search says so with its commit.
set -euo pipefail
cd "$(dirname "$0")/.."

old=${1:-9e0d97a}
new=${2:-HEAD}
runs=${3:-5}
depth=${4:-4}
work=${SPEED_DIR:-/tmp/kovrel-speed}
mkdir -p "$work"

build() { # commit -> folder with the three programs
    local sha folder
    sha=$(git rev-parse --short=10 "$1")
    folder="$work/$sha"
    if [[ ! -x $folder/build/kovrel-bench ]]; then
        rm -rf "$folder"
        git worktree prune
        git worktree add --detach "$folder" "$sha" >/dev/null 2>&1
        cmake -S "$folder" -B "$folder/build" -DCMAKE_BUILD_TYPE=Release -DKOVREL_TESTS=OFF \
            >/dev/null
        cmake --build "$folder/build" -j "$(nproc)" --target kovrel-bench kovrel-perft \
            kovrel-bench-eval >/dev/null
    fi
    echo "$folder/build"
}

median() { sort -n | awk '{v[NR]=$1} END {print (NR%2) ? v[(NR+1)/2] : (v[NR/2]+v[NR/2+1])/2}'; }

oldBuild=$(build "$old")
newBuild=$(build "$new")
echo "old $old: $oldBuild"
echo "new $new: $newBuild"

declare -A nps perft evalns nodes
for ((i = 1; i <= runs; i++)); do
    for which in old new; do
        dir=$oldBuild
        [[ $which == new ]] && dir=$newBuild
        line=$("$dir/kovrel-bench" "$depth" | awk '/^bench /')
        n=$(awk '{print $2}' <<<"$line")
        if [[ -n ${nodes[$which]:-} && ${nodes[$which]} != "$n" ]]; then
            echo "Error (node count changed between runs): $which $n" >&2
            exit 1
        fi
        nodes[$which]=$n
        nps[$which]+="$(awk '{print $6}' <<<"$line") "
        p=$("$dir/kovrel-perft" 6 | awk '/^nodes /{print $4}')
        perft[$which]+="$p "
        e=$("$dir/kovrel-bench-eval" --benchmark_filter=BM_EvaluateAll 2>/dev/null |
            awk '/BM_EvaluateAll/ {for (k = 1; k <= NF; k++) if ($k ~ /^ns_per_eval=/) {
                     v = substr($k, 13); if (v ~ /us$/) v = v * 1000; else v = v + 0; print v}}')
        evalns[$which]+="$e "
        echo "run $i $which: bench $line; perft 6 $p ms; evaluation $e ns"
    done
done

summary() { # label values-old values-new higher-is-better
    local o n
    o=$(tr ' ' '\n' <<<"$2" | grep . | median)
    n=$(tr ' ' '\n' <<<"$3" | grep . | median)
    awk -v l="$1" -v o="$o" -v n="$n" -v up="$4" 'BEGIN {
        r = up ? n / o : o / n
        printf "%-28s old %12.1f  new %12.1f  speed-up %.2f\n", l, o, n, r }'
}
echo
echo "medians of $runs runs"
echo "bench signature: old ${nodes[old]}, new ${nodes[new]}"
summary "bench nodes per second" "${nps[old]}" "${nps[new]}" 1
summary "perft 6 (ms)" "${perft[old]}" "${perft[new]}" 0
summary "evaluation (ns a position)" "${evalns[old]}" "${evalns[new]}" 0

if command -v stockfish >/dev/null || [[ -x /usr/games/stockfish ]]; then
    sf=$(command -v stockfish || echo /usr/games/stockfish)
    # Stockfish's perft prints no time: the run is timed whole, less a start-up alone.
    times=""
    for ((i = 1; i <= runs; i++)); do
        start=$(date +%s%N)
        printf 'quit\n' | "$sf" >/dev/null 2>&1
        middle=$(date +%s%N)
        printf 'position startpos\ngo perft 6\nquit\n' | "$sf" >/dev/null 2>&1
        end=$(date +%s%N)
        times+="$(((end - middle - (middle - start)) / 1000000)) "
    done
    sfMedian=$(tr ' ' '\n' <<<"$times" | grep . | median)
    kvMedian=$(tr ' ' '\n' <<<"${perft[new]}" | grep . | median)
    awk -v s="$sfMedian" -v k="$kvMedian" 'BEGIN {
        printf "stockfish go perft 6 (ms)   %.1f; new kovrel-perft 6 takes %.2f times as long\n",
               s, k / s }'
fi
