#!/usr/bin/env bash
# Checks that the project's includes point one way: core < eval < search < the front ends
# (ui, the console; uci, the UCI program; analysis, the analysis tools), no front end includes
# another, and no two files include each other, directly or round a longer circle. The one
# allowed exception is the table of piece values, which the position and move code shares with
# the evaluation (core may include eval/values.h).
#   tools/check_layout.sh
# Prints every offending include and every circle; exit status 1 when there is one.
set -euo pipefail
cd "$(dirname "$0")/.."

files=$(git ls-files 'core/*.[ch]*' 'eval/*.[ch]*' 'search/*.[ch]*' 'ui/*.[ch]*' 'uci/*.[ch]*' \
    'analysis/*.[ch]*')

# One line per include: the including file and the included one.
edges=$(for f in $files; do
    sed -n 's|^#include "\([a-z]*/[A-Za-z0-9_]*\.h\)".*|\1|p' "$f" | sed "s|^|$f |"
done)

awk '
    function level(folder) {
        if (folder == "core") return 0
        if (folder == "eval") return 1
        if (folder == "search") return 2
        return 3
    }
    {
        from = $1; to = $2
        split(from, a, "/"); split(to, b, "/")
        if (level(b[1]) > level(a[1]) && !(a[1] == "core" && to == "eval/values.h")) {
            print "upward include: " from " includes " to; bad = 1
        } else if (level(a[1]) == 3 && level(b[1]) == 3 && a[1] != b[1]) {
            print "front end includes another: " from " includes " to; bad = 1
        }
        # The graph of files: a .cpp and its .h count as one unit.
        u = from; sub(/\.(cpp|h)$/, "", u); v = to; sub(/\.h$/, "", v)
        if (u != v && !((u, v) in seen)) { seen[u, v] = 1; next_[u] = next_[u] " " v; nodes[u]; nodes[v] }
    }
    function visit(n,    k, list, i) {
        state[n] = 1; stack[++depth] = n
        k = split(next_[n], list, " ")
        for (i = 1; i <= k; i++) {
            if (state[list[i]] == 1) {
                circle = list[i]
                for (j = depth; j >= 1 && stack[j] != list[i]; j--) circle = stack[j] " -> " circle
                print "include circle: " list[i] " -> " circle; bad = 1
            } else if (state[list[i]] == 0) {
                visit(list[i])
            }
        }
        depth--; state[n] = 2
    }
    END {
        for (n in nodes) state[n] = 0
        for (n in nodes) if (state[n] == 0) visit(n)
        exit bad
    }
' <<<"$edges"
