#!/usr/bin/env bash
# Two runs of kovrel-bench at the same depth must report the same node total.
#   bench_stable.sh KOVREL_BENCH DEPTH
set -euo pipefail
first=$("$1" "$2" | awk '/^bench /{print $2}')
second=$("$1" "$2" | awk '/^bench /{print $2}')
echo "bench $2: $first and $second nodes"
[[ -n $first && $first == "$second" ]]
